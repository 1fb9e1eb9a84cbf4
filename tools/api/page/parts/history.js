// SPDX-License-Identifier: Apache-2.0
// The changes made, each with what it changed and a way back.
import {get, post} from './api.js';
import {diffView} from './diff_view.js';
import {openDialog} from './dialog.js';
import {fill, h} from './dom.js';
import {field, text} from './field.js';
import {moment} from './format.js';
import {released} from './pointer.js';
import {redraw} from './redraw.js';
import {session} from './session.js';
import {act, smallTable} from './small_table.js';

const COLUMNS = [
  {title: 'No.', of: (row) => String(row.revision), number: true},
  {title: 'Time', of: (row) => moment(row.time)},
  {title: 'By', of: (row) => row.user || '–', word: true},
  {title: 'From', of: (row) => row.source},
  {title: 'What', of: (row) => row.comment || row.command || '–'},
];

export class HistoryView {
  constructor(body) {
    this.every = 5;
    this.shown = '';
    this.place = h('section', {class: 'sheet', 'aria-label': 'Changes made'});
    fill(body, [this.place]);
  }

  async refresh(background) {
    this.rows = await get('/history', {background});
    const shown = JSON.stringify(this.rows);
    if (shown === this.shown) return;
    this.shown = shown;
    await released();
    redraw(this.place, [this.rows.length ? smallTable('Changes made, newest first', COLUMNS, this.rows, {acts: (row) => this.actsOf(row)})
      : h('p', {class: 'empty'}, 'Nothing was changed yet through the page or kestrovectl.')]);
  }

  actsOf(row) {
    return [act('Show', () => this.open(row), {label: `Show revision ${row.revision}`}),
            act('Go back to it', () => this.back(row), {label: `Go back to revision ${row.revision}`, disabled: !session.changes})];
  }

  async open(row) {
    const place = h('div', {}, h('p', {class: 'soft'}, 'Asking …'));
    const dialog = openDialog(`Revision ${row.revision}`, [place, h('div', {class: 'ends'},
      h('button', {type: 'button', class: 'plain', onclick: () => dialog.close()}, 'Close'))], {kind: 'review'});
    try {
      const {changes} = await get(`/history/${row.revision}`);
      fill(place, [h('p', {class: 'soft'}, `${moment(row.time)}, ${row.user || 'unknown'} (${row.source})`), diffView(changes, 'What it changed')]);
    } catch (refused) {
      fill(place, [h('p', {class: 'note wrong', role: 'alert'}, refused.message)]);
    }
  }

  // What would be different is shown before.
  async back(row) {
    const problem = h('p', {class: 'problem', role: 'alert', id: 'back-problem'});
    const place = h('div', {'aria-live': 'polite'}, h('p', {class: 'soft'}, 'Asking …'));
    const minutes = text('minutes', '', {inputmode: 'decimal', id: 'back-minutes', placeholder: 'none'});
    const yes = h('button', {type: 'button', class: 'push', id: 'back-make', onclick: () => this.make(row, minutes, yes, problem, dialog)}, 'Go back');
    const dialog = openDialog(`Go back to revision ${row.revision}`, [place, problem, field('Take back unless confirmed', minutes, {hint: 'minutes; empty: stays at once'}),
      h('div', {class: 'ends'}, h('button', {type: 'button', class: 'plain', onclick: () => dialog.close()}, 'Leave it'), yes)], {kind: 'review'});
    try {
      const {changes} = await get('/diff', {query: {from: 'running', to: `rev:${row.revision}`}});
      fill(place, [diffView(changes)]);
    } catch (refused) {
      problem.textContent = refused.message;
    }
  }

  async make(row, minutes, button, problem, dialog) {
    button.disabled = true;
    try {
      const result = await post(`/history/${row.revision}/rollback`, {}, {query: {confirm: minutes.value.trim()}});
      dialog.close();
      if (result.notes?.length) openDialog('Gone back', [h('p', {class: 'note wait'}, result.notes.join(' '))]);
      await this.refresh(true);
    } catch (refused) {
      problem.textContent = refused.message;
      button.disabled = false;
    }
    dispatchEvent(new Event('kestrove-made'));
  }
}
