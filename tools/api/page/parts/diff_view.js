// SPDX-License-Identifier: Apache-2.0
// Settings that differ: what goes and what comes, by section.
import {h} from './dom.js';
import {nearChanges, textDiff} from './text_diff.js';

const SECTIONS = {items: 'Items', interfaces: 'Interfaces and mode', users: 'Users', addresses: 'Addresses',
                  addresses6: "The bridge's own addresses", routes: 'Routes IPv4', routes6: 'Routes IPv6', rules: 'Rules'};
const MOST = 400;

function lines(text, sign, kind, words) {
  return text === null || text === undefined ? null
    : h('p', {class: 'line ' + kind}, h('span', {class: 'unseen'}, words), `${sign} ${text}`);
}

export function diffView(changes, label = 'What would be different') {
  const shown = changes.slice(0, MOST);
  const groups = Map.groupBy ? Map.groupBy(shown, (one) => one.section) : grouped(shown);
  const parts = [...groups].map(([section, rows]) => [
    h('p', {class: 'section'}, SECTIONS[section] ?? section),
    rows.map((one) => [lines(one.before, '−', 'del', 'taken away: '), lines(one.after, '+', 'add', 'added: ')]),
  ]);
  const more = changes.length > MOST ? h('p', {class: 'section'}, `and ${changes.length - MOST} more`) : null;
  return h('div', {class: 'diff', tabindex: '0', role: 'region', 'aria-label': label},
           changes.length ? [parts, more] : h('p', {}, 'Nothing differs.'));
}

function grouped(rows) {
  const groups = new Map();
  for (const row of rows) groups.set(row.section, [...(groups.get(row.section) ?? []), row]);
  return groups;
}

const KINDS = {'+': ['add', '+', 'added: '], '-': ['del', '−', 'taken away: '], ' ': ['', ' ', '']};

function textLines({before, after}) {
  return nearChanges(textDiff(before, after)).map(({sign, text}) => {
    const [kind, mark, words] = KINDS[sign];
    return h('p', {class: 'line ' + kind}, h('span', {class: 'unseen'}, words), `${mark} ${text}`);
  });
}

// Files and the kernel's state: texts with a name each.
export function textsView(texts, label) {
  return h('div', {class: 'diff', tabindex: '0', role: 'region', 'aria-label': label},
           texts.length ? texts.map((one) => [h('p', {class: 'section'}, one.path ?? one.section), textLines(one)]) : h('p', {}, 'Nothing differs.'));
}
