// SPDX-License-Identifier: Apache-2.0
// A rule in a form. What it may say is the appliance's to decide: the basket tells.
import {openDialog} from './dialog.js';
import {h} from './dom.js';
import {choice, field, text} from './field.js';

const NEW = {family: 'IPv4', source: '', destination: '', protocol: 'tcp', sourcePorts: '', destinationPorts: '',
             target: 'accelerate', priority: 8, 'kbit/s': '', acceleration: 'on', status: 'active'};

const shown = (value) => (value === 'any' || value === undefined ? '' : String(value));

function controls(row) {
  return {
    family: choice('family', row.family, ['IPv4', 'IPv6', 'any']),
    source: text('source', shown(row.source), {placeholder: 'any'}),
    destination: text('destination', shown(row.destination), {placeholder: 'any'}),
    protocol: text('protocol', shown(row.protocol), {placeholder: 'any', list: 'protocols'}),
    sourcePorts: text('sourcePorts', shown(row.sourcePorts), {placeholder: 'any'}),
    destinationPorts: text('destinationPorts', shown(row.destinationPorts), {placeholder: 'any'}),
    target: choice('target', row.target, ['accelerate', 'bridge', 'drop']),
    priority: choice('priority', row.priority, [1, 2, 3, 4, 5, 6, 7, 8].map(String)),
    'kbit/s': text('kbit/s', shown(row['kbit/s']), {inputmode: 'numeric', placeholder: 'least'}),
    acceleration: choice('acceleration', row.acceleration, ['on', 'off']),
    status: choice('status', row.status, ['active', 'nis', 'invalid']),
  };
}

const FIELDS = [['family', 'Address family'], ['protocol', 'Protocol', 'any, tcp, udp or a number'], ['source', 'Source', 'ADDRESS/LENGTH'],
  ['destination', 'Destination', 'ADDRESS/LENGTH'], ['sourcePorts', 'Source ports', 'PORT or PORT-PORT'],
  ['destinationPorts', 'Destination ports', 'PORT or PORT-PORT'], ['target', 'Target'], ['priority', 'Class'],
  ['kbit/s', 'Rate limit (kbit/s)'], ['acceleration', 'Acceleration'], ['status', 'Status']];

function valuesOf(fields) {
  return Object.fromEntries(Object.entries(fields).map(([name, control]) => {
    const value = control.value.trim();
    if (name === 'priority') return [name, Number(value)];
    if (name === 'kbit/s') return [name, /^\d+$/.test(value) ? Number(value) : value];
    return [name, value === '' ? 'any' : value];
  }));
}

// take(row, position) where somebody keeps it.
export function editRule(row, {position, fixed, readOnly, problem}, take) {
  const fields = controls({...NEW, ...row});
  const place = text('position', String(position), {inputmode: 'numeric'});
  const title = fixed ? 'The default rule' : row ? `Rule ${position}` : 'A new rule';
  const form = h('form', {novalidate: true, id: 'rule-form'}, problem ? h('p', {class: 'note wrong'}, problem) : null,
    fixed ? h('p', {class: 'note'}, 'It decides about what no other rule matches, and nobody changes it.') : null,
    h('div', {class: 'pair'}, FIELDS.map(([name, label, hint]) => field(label, fields[name], {hint})),
      fixed ? null : field('Position', place, {hint: '0 is the first'})),
    h('datalist', {id: 'protocols'}, ['any', 'tcp', 'udp', 'icmp'].map((value) => h('option', {value}))),
    h('div', {class: 'ends'}, h('button', {type: 'button', class: 'plain', onclick: () => dialog.close()}, readOnly ? 'Close' : 'Leave it'),
      readOnly ? null : h('button', {type: 'submit', class: 'push', id: 'rule-keep'}, 'Collect')));
  for (const control of form.querySelectorAll('input, select')) control.disabled = Boolean(readOnly);
  const dialog = openDialog(title, form);
  form.addEventListener('submit', (event) => {
    event.preventDefault();
    take(valuesOf(fields), Number.parseInt(place.value, 10) || 0);
    dialog.close();
  });
}
