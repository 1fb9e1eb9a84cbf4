// SPDX-License-Identifier: Apache-2.0
// Two texts, line by line: what goes, what comes, and what stays around it.
const MOST = 600;

const linesOf = (text) => (text ? text.replace(/\n$/, '').split('\n') : []);

// How long the longest common run of lines is from each pair of places on.
function lengths(before, after) {
  const table = Array.from({length: before.length + 1}, () => new Uint16Array(after.length + 1));
  for (let i = before.length - 1; i >= 0; --i) {
    for (let j = after.length - 1; j >= 0; --j) {
      table[i][j] = before[i] === after[j] ? table[i + 1][j + 1] + 1 : Math.max(table[i + 1][j], table[i][j + 1]);
    }
  }
  return table;
}

// [{sign: '-' | '+' | ' ', text}]
export function textDiff(former, later) {
  const before = linesOf(former).slice(0, MOST);
  const after = linesOf(later).slice(0, MOST);
  const table = lengths(before, after);
  const found = [];
  let i = 0;
  let j = 0;
  while (i < before.length || j < after.length) {
    if (i < before.length && j < after.length && before[i] === after[j]) {
      found.push({sign: ' ', text: before[i++]});
      j += 1;
    } else if (j < after.length && (i === before.length || table[i][j + 1] > table[i + 1][j])) {
      found.push({sign: '+', text: after[j++]});
    } else {
      found.push({sign: '-', text: before[i++]});
    }
  }
  return found;
}

// What stays is left out but for the lines beside a change.
export function nearChanges(lines, around = 1) {
  return lines.filter((_, at) => lines.slice(Math.max(0, at - around), at + around + 1).some((line) => line.sign !== ' '));
}
