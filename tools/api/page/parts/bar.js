// SPDX-License-Identifier: Apache-2.0
// The bar: what is not saved and what waits for its confirmation, whoever changed it and from where.
import {say, warn} from './announce.js';
import {get, post, remove} from './api.js';
import {byId, fill, h} from './dom.js';
import {diffView} from './diff_view.js';
import {openDialog} from './dialog.js';
import {counted, countdown} from './format.js';
import {released} from './pointer.js';
import {session} from './session.js';

const CONFIRM = 2;
const UNSAVED = 6;

export class Bar {
  constructor(place) {
    this.place = place;
    this.forget();
    addEventListener('kestrove-made', () => this.look(true));
  }

  start() {
    this.beat = 0;
    this.pending = {pending: false};
    this.unsaved = [];
    this.state = '';
    this.problem = '';
    this.timer = setInterval(() => this.tick(), 1000);
    this.look(true);
  }

  stop() {
    clearInterval(this.timer);
    this.place.hidden = true;
    this.forget();
  }

  forget() {
    this.rows = [0, 1, 2].map(() => ({key: 'null', element: null}));
    fill(this.place, []);
  }

  tick() {
    this.beat += 1;
    this.count();
    if (!document.hidden && this.beat % CONFIRM === 0) this.look(this.beat % UNSAVED === 0);
  }

  async look(whole) {
    if (this.looking || !session.user) return;
    this.looking = true;
    try {
      await this.ask(whole);
      await released();
      this.draw();
    } catch { /* the view says that the appliance does not answer */ } finally {
      this.looking = false;
    }
  }

  async ask(whole) {
    const background = {background: true};
    this.pending = await get('/confirm', background);
    this.until = Date.now() + 1000 * (this.pending.secondsLeft ?? 0);
    if (!whole) return;
    this.state = (await get('/status', background)).stateName;
    const {changes} = await get('/diff', {...background, query: {from: 'saved', to: 'running'}});
    this.unsaved = changes;
  }

  draw() {
    this.chip();
    const {pending, time} = this.pending;
    const fresh = [this.row(0, pending && time, () => this.waiting()), this.row(1, this.unsaved.length > 0 && this.unsaved, () => this.notSaved()),
                   this.row(2, this.problem, () => this.refusal())];
    if (!fresh.some(Boolean)) return;
    const rows = this.rows.filter((row) => row.element).map((row) => row.element);
    this.place.hidden = rows.length === 0;
    this.arrange(rows);
    if (rows.length) say(rows.map((row) => row.querySelector('p').textContent).join(' '));
    this.count();
  }

  // Nothing that stays is moved; where what had the focus goes, the subject has it.
  arrange(rows) {
    const gone = [...this.place.children].filter((row) => !rows.includes(row));
    const bereft = gone.some((row) => row.contains(document.activeElement));
    for (const row of gone) row.remove();
    for (const [i, row] of rows.entries()) if (this.place.children[i] !== row) this.place.insertBefore(row, this.place.children[i] ?? null);
    if (bereft) document.querySelector('h1')?.focus({preventScroll: true});
  }

  // Whether it is another one now. A row that says the same stays the same element, with the focus that it may have.
  row(i, facts, make) {
    const key = JSON.stringify(facts || null);
    if (this.rows[i].key === key) return false;
    this.rows[i] = {key, element: facts ? make() : null};
    return true;
  }

  chip() {
    const chip = byId('unit-state');
    chip.hidden = !this.state || this.state === 'Operational';
    chip.textContent = this.state;
  }

  count() {
    const place = this.place.querySelector('.left');
    if (place) place.textContent = countdown((this.until - Date.now()) / 1000);
  }

  button(words, act, kind = 'plain') {
    return h('button', {type: 'button', class: kind + ' small', disabled: !session.changes, onclick: () => this.act(act)}, words);
  }

  waiting() {
    const {user, command, comment} = this.pending;
    return h('div', {class: 'bar-row pressing', id: 'bar-waiting'},
      h('p', {}, `A change of ${user} (${comment || command}) goes back unless it is confirmed.`),
      h('span', {class: 'left', 'aria-hidden': 'true'}),
      this.button('Keep it', () => post('/confirm')),
      this.button('Take it back', () => remove('/confirm'), 'grave'));
  }

  notSaved() {
    return h('div', {class: 'bar-row', id: 'bar-unsaved'},
      h('p', {}, `${counted(this.unsaved.length, 'setting')} of the running appliance ${this.unsaved.length === 1 ? 'is' : 'are'} not in the configuration file.`),
      h('button', {type: 'button', class: 'plain small', onclick: () => this.showUnsaved()}, 'Show'),
      this.button('Save now', () => post('/save')));
  }

  showUnsaved() {
    openDialog('Not in the configuration file', [diffView(this.unsaved, 'What the next start would not have'),
      h('div', {class: 'ends'}, h('button', {type: 'button', class: 'plain', onclick: (event) => event.target.closest('dialog').close()}, 'Close'))]);
  }

  async act(act) {
    this.problem = '';
    try {
      await act();
    } catch (refused) {
      this.problem = refused.message;
      warn(this.problem);
    }
    this.draw();
    this.look(true);
  }

  refusal() {
    return h('div', {class: 'bar-row pressing', id: 'bar-problem'}, h('p', {class: 'problem'}, this.problem),
      h('button', {type: 'button', class: 'plain small', onclick: () => { this.problem = ''; this.draw(); }}, 'Close'));
  }
}
