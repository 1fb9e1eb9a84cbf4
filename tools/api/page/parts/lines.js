// SPDX-License-Identifier: Apache-2.0
// Settings as the lines that make them.

// A word of a line, in quotes where it needs them.
export function quoted(text) {
  const plain = /^[A-Za-z0-9_./:@+,%-]+$/.test(text) && !text.startsWith('-');
  if (plain) return text;
  const inside = [...text].map((letter) => {
    if (letter === '"' || letter === '\\') return '\\' + letter;
    const code = letter.codePointAt(0);
    return code < 32 || code === 127 ? '\\x' + code.toString(16).padStart(2, '0') : letter;
  });
  return `"${inside.join('')}"`;
}

const isAny = (value) => value === undefined || value === null || value === '' || value === 'any';

const WORDS = [
  ['--from', 'source'], ['--to', 'destination'], ['--proto', 'protocol'], ['--sport', 'sourcePorts'],
  ['--dport', 'destinationPorts'], ['--target', 'target'], ['--priority', 'priority'], ['--kbps', 'kbit/s'],
  ['--accel', 'acceleration'], ['--status', 'status'],
];

function ends(row) {
  const neither = isAny(row.source) && isAny(row.destination);
  if (row.family === 'any') return '--any';
  return row.family === 'IPv6' && neither ? '--from ::/0' : '';
}

function matchesAll(row) {
  return ['source', 'destination', 'protocol', 'sourcePorts', 'destinationPorts'].every((name) => isAny(row[name]));
}

export function ruleLine(row, position = 'last') {
  const words = ['rule add', String(position), ends(row)];
  for (const [option, name] of WORDS) {
    if (!isAny(row[name])) words.push(option, quoted(String(row[name])));
  }
  if (matchesAll(row)) words.push('--match-all');
  return words.filter(Boolean).join(' ');
}

export function routeLine(six, row) {
  const words = [six ? 'route6 add' : 'route add', quoted(row.destination), quoted(row.gateway)];
  return words.join(' ') + (row.status === 'disabled' ? ' --disabled' : '');
}

export const addressLine = (row) => `address add ${quoted(row.address)} --interface ${row.interface}`;

// "255.255.0.0" as 16; a mask with holes stays what it is.
export function lengthOf(mask) {
  const bits = mask.split('.').map((part) => Number(part).toString(2).padStart(8, '0')).join('');
  return /^1*0*$/.test(bits) ? String(bits.indexOf('0') === -1 ? 32 : bits.indexOf('0')) : mask;
}
