// SPDX-License-Identifier: Apache-2.0
// A small table: headings, rows, and what can be done with each. Where there is no width a row is a block.
import {h} from './dom.js';

// columns: {title, of(row), number, word}; more: {kinds(row), acts(row), problem(row)}
export function smallTable(caption, columns, rows, more = {}) {
  const heads = columns.map((column) => h('th', {scope: 'col', class: column.number ? 'number' : ''}, column.title));
  if (more.acts) heads.push(h('th', {scope: 'col'}, h('span', {class: 'unseen'}, 'What can be done')));
  return h('table', {class: 'folds'}, h('caption', {class: 'unseen'}, caption), h('thead', {}, h('tr', {}, heads)),
           h('tbody', {}, rows.map((row) => bodyRow(columns, row, more))));
}

function bodyRow(columns, row, {kinds, acts, problem}) {
  const cells = columns.map((column, i) => h('td', {class: [column.number ? 'number' : '', column.word ? 'line' : ''].join(' ').trim(), 'data-name': column.title},
    h('span', {}, column.of(row), i === 0 && problem?.(row) ? h('span', {class: 'problem'}, problem(row)) : null)));
  if (acts) cells.push(h('td', {class: 'acts'}, acts(row)));
  return h('tr', {class: kinds?.(row) ?? ''}, cells);
}

export const act = (words, call, {kind = 'plain', label, id, disabled} = {}) =>
  h('button', {type: 'button', class: kind + ' small', onclick: call, 'aria-label': label, id, disabled}, words);
