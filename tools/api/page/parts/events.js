// SPDX-License-Identifier: Apache-2.0
// Events as they come, with filters.
import {say} from './announce.js';
import {remove} from './api.js';
import {ask} from './dialog.js';
import {fill, h} from './dom.js';
import {EventStream} from './event_stream.js';
import {choice, field, text} from './field.js';
import {moment} from './format.js';
import {session} from './session.js';
import {act, smallTable} from './small_table.js';

const MARKS = {Error: 'bad', Critical: 'bad', Warning: 'warn'};
const SHOWN = 500;
const COLUMNS = [
  {title: 'Time', of: (row) => moment(row.time)},
  {title: 'Kind', of: (row) => h('span', {class: `mark ${MARKS[row.type] ?? ''}`}, row.type)},
  {title: 'From', of: (row) => row.source},
  {title: 'User', of: (row) => row.user, word: true},
  {title: 'Event', of: (row) => row.description},
];
const STATES = {live: ['live', 'good'], broken: ['interrupted, trying again', 'bad'], held: ['held', 'warn']};

export class EventsView {
  constructor(body, tools) {
    this.every = 3600;
    this.kind = choice('kind', '', [['', 'all']]);
    this.from = choice('from', '', [['', 'all']]);
    this.words = text('words', '', {type: 'search', placeholder: 'a user, a word'});
    this.mark = h('span', {class: 'mark', id: 'events-state', role: 'status'}, 'connecting');
    this.count = h('p', {class: 'soft', id: 'events-count'});
    this.hold = act('Hold', () => this.toggle(), {id: 'events-hold'});
    this.hold.setAttribute('aria-pressed', 'false');
    this.place = h('div', {class: 'sheet events-list', tabindex: '0', role: 'region', 'aria-label': 'Events, newest first'});
    fill(tools, [this.mark, this.hold, act('Empty the log', () => this.empty(), {kind: 'grave', disabled: !session.changes})]);
    fill(body, [h('div', {class: 'filters'}, field('Kind', this.kind), field('From', this.from), field('Containing', this.words), this.count), this.place]);
    for (const control of [this.kind, this.from, this.words]) control.addEventListener('input', () => this.draw());
    this.stream = new EventStream((event) => this.came(event), (state) => this.tell(state));
  }

  close() { this.stream.stop(); }

  async refresh() {
    if (this.started) return this.stream.load();
    this.started = true;
    await this.stream.start();
  }

  tell(state) {
    const [words, kind] = STATES[state];
    this.mark.className = `mark ${kind}`;
    this.mark.textContent = words;
  }

  toggle() {
    const held = this.hold.getAttribute('aria-pressed') !== 'true';
    this.hold.setAttribute('aria-pressed', String(held));
    this.tell(held ? 'held' : 'live');
    if (!held) this.draw();
  }

  came(event) {
    if (this.hold.getAttribute('aria-pressed') === 'true') return;
    this.draw();
    if (event && this.passes(event)) say(`${event.type} from ${event.source}: ${event.description}`);
  }

  passes(event) {
    const words = this.words.value.trim().toLowerCase();
    return (!this.kind.value || event.type === this.kind.value) && (!this.from.value || event.source === this.from.value) &&
      (!words || `${event.user} ${event.description}`.toLowerCase().includes(words));
  }

  // The choices are what the log has.
  renewChoice(select, name) {
    const values = [...new Set(this.stream.events.map((event) => event[name]))].sort();
    if (select.options.length === values.length + 1) return;
    const chosen = select.value;
    fill(select, [h('option', {value: ''}, 'all'), values.map((value) => h('option', {value, selected: value === chosen}, value))]);
  }

  draw() {
    this.renewChoice(this.kind, 'type');
    this.renewChoice(this.from, 'source');
    const rows = this.stream.events.filter((event) => this.passes(event)).reverse();
    this.count.textContent = `${rows.length} of ${this.stream.events.length} events`;
    fill(this.place, [rows.length ? smallTable('Events, newest first', COLUMNS, rows.slice(0, SHOWN), {kinds: (row) => (row.fresh ? 'fresh' : '')})
      : h('p', {class: 'empty'}, 'No event is like that.')]);
  }

  empty() {
    ask('Empty the event log?', 'All events are forgotten, and nothing brings them back.', 'Empty it', async () => {
      await remove('/events');
      this.stream.events = [];
      await this.stream.load();
    });
  }
}
