// SPDX-License-Identifier: Apache-2.0
// Whole states that are saved: what is there, another one, and the way back into one.
import {say} from './announce.js';
import {get, post} from './api.js';
import {ask} from './dialog.js';
import {fill, h} from './dom.js';
import {redraw} from './redraw.js';
import {session} from './session.js';
import {act, smallTable} from './small_table.js';

const COLUMNS = [
  {title: 'Kind', of: (row) => ({archive: 'archive of files', script: 'script of settings'})[row.kind] ?? row.kind},
  {title: 'File', of: (row) => row.file, word: true},
  {title: 'Holds', of: (row) => (row.members.length ? row.members.join(', ') : '–')},
];

export class StatesView {
  constructor(body, tools) {
    this.every = 5;
    this.problem = h('p', {class: 'problem', role: 'alert', id: 'states-problem'});
    this.place = h('section', {class: 'sheet', 'aria-label': 'Saved states'});
    const off = {disabled: !session.changes};
    this.save = act('Save the state', () => this.keep(), {kind: 'push', id: 'states-save', ...off});
    fill(tools, [act('Restore …', () => this.load(), {kind: 'grave', id: 'states-load', ...off}), this.save]);
    fill(body, [this.problem, this.place, h('section', {class: 'sheet', id: 'lost', 'aria-label': 'What a script cannot hold'})]);
    this.lost = body.querySelector('#lost');
  }

  async refresh(background) {
    this.draw(await get('/state', {background}));
    if (!this.asked) await this.showLost();
  }

  draw(rows) {
    const key = JSON.stringify(rows);
    if (key === this.shown) return;
    this.shown = key;
    redraw(this.place, [rows.length ? smallTable('Saved states', COLUMNS, rows) : h('p', {class: 'empty'}, 'No state is saved.')]);
  }

  async showLost() {
    const {lost} = await get('/lost', {background: true});
    this.asked = true;
    const columns = [{title: 'Setting', of: (row) => row.setting ?? row.key, word: true}, {title: 'Comes back as', of: (row) => row.becomes ?? '–', word: true}, {title: 'Why', of: (row) => row.reason}];
    fill(this.lost, [h('h2', {}, 'What the script of a state cannot hold'), lost.length ? smallTable('What a script cannot hold', columns, lost) : h('p', {class: 'empty'}, 'It holds everything.')]);
  }

  async keep() {
    this.problem.textContent = '';
    this.save.disabled = true;
    try {
      await post('/state');
      say('The state is saved.');
      await this.refresh(true);
    } catch (refused) {
      this.problem.textContent = refused.message;
    } finally {
      this.save.disabled = false;
    }
  }

  load() {
    ask('Restore the saved state?', 'The store is built anew from the saved files at once, and the engine is restarted. What was changed since is lost, and the sessions of this page may end.',
        'Restore it', async () => {
          await post('/state/load', {now: true});
          say('The state is restored.');
          await this.refresh(true);
        });
  }
}
