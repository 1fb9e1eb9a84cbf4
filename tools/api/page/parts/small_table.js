// SPDX-License-Identifier: Apache-2.0
// A small table: headings, rows, and what can be done with each. Where there is no width a row is a block, and what is no
// table by its look keeps its roles only where they are told.
import {h} from './dom.js';

// columns: {title, of(row), number, word}; more: {kinds(row), acts(row), problem(row)}
export function smallTable(caption, columns, rows, more = {}) {
  const heads = columns.map((column) => h('th', {scope: 'col', role: 'columnheader', class: column.number ? 'number' : ''}, column.title));
  if (more.acts) heads.push(h('th', {scope: 'col', role: 'columnheader'}, h('span', {class: 'unseen'}, 'What can be done')));
  return h('table', {class: 'folds', role: 'table'}, h('caption', {class: 'unseen'}, caption), h('thead', {role: 'rowgroup'}, h('tr', {role: 'row'}, heads)),
           h('tbody', {role: 'rowgroup'}, rows.map((row) => bodyRow(columns, row, more))));
}

function bodyRow(columns, row, {kinds, acts, problem}) {
  const cells = columns.map((column, i) => h('td', {role: 'cell', class: [column.number ? 'number' : '', column.word ? 'line' : ''].join(' ').trim(), 'data-name': column.title},
    h('span', {}, column.of(row), i === 0 && problem?.(row) ? h('span', {class: 'problem'}, problem(row)) : null)));
  if (acts) cells.push(h('td', {role: 'cell', class: 'acts'}, acts(row)));
  return h('tr', {role: 'row', class: kinds?.(row) ?? ''}, cells);
}

export const act = (words, call, {kind = 'plain', label, id, disabled} = {}) =>
  h('button', {type: 'button', class: kind + ' small', onclick: call, 'aria-label': label, id, disabled}, words);
