// SPDX-License-Identifier: Apache-2.0
// The rules as they would be with what is collected: found, added, changed, moved by hand, taken away.
import {say} from './announce.js';
import {basket} from './basket.js';
import {drafted} from './draft.js';
import {fill, h} from './dom.js';
import {text} from './field.js';
import {Grid} from './grid.js';
import {editRule} from './rule_form.js';
import {session} from './session.js';
import {rowsOf} from './table_rows.js';
import {Table} from './tables.js';

const COLUMNS = [
  {name: 'position', title: 'No.', number: true}, {name: 'family', title: 'IP'}, {name: 'source', title: 'Source'},
  {name: 'destination', title: 'Destination'}, {name: 'protocol', title: 'Prot.'}, {name: 'sourcePorts', title: 'From port'},
  {name: 'destinationPorts', title: 'To port'}, {name: 'target', title: 'Target'}, {name: 'priority', title: 'Class', number: true},
  {name: 'kbit/s', title: 'kbit/s', kind: 'kbits', number: true}, {name: 'acceleration', title: 'Accel.'}, {name: 'status', title: 'Status'},
];

export const describe = (row) => [row.source, '→', row.destination, row.protocol === 'any' ? '' : row.protocol,
  row.destinationPorts === 'any' ? '' : 'port ' + row.destinationPorts, row.target].filter(Boolean).join(' ');

const MOST_KEYS = [['↑ ↓', 'go'], ['Alt ↑ ↓', 'move'], ['Enter', 'change'], ['Del', 'take away'], ['Home End', 'first, last']];

export class RulesView {
  constructor(body, tools) {
    this.every = 5;
    this.table = new Table('/rules');
    this.shown = [];
    this.list = [];
    this.grid = new Grid('Rules', COLUMNS, this.source(), this.acts());
    this.search = text('search', '', {type: 'search', placeholder: 'Find an address, a port, a target', 'aria-label': 'Find rules', oninput: () => this.filter()});
    this.words = h('p', {class: 'soft', role: 'status', id: 'rules-count'});
    fill(tools, [this.button('Add a rule', () => this.add(), 'push', 'rule-add'), this.button('Change', () => this.open(this.grid.current), 'plain', 'rule-change'),
                 this.button('Take away', () => this.remove(this.grid.current), 'plain', 'rule-remove')]);
    fill(body, [h('div', {class: 'filters'}, h('div', {class: 'field wide'}, this.search), this.words), this.grid.element, this.keys()]);
    this.heard = () => this.redraft();
    basket.addEventListener('change', this.heard);
  }

  close() {
    basket.removeEventListener('change', this.heard);
    this.grid.close();
  }

  button(words, act, kind, id) {
    return h('button', {type: 'button', class: kind, id, onclick: act, disabled: !session.changes}, words);
  }

  keys() {
    return h('p', {class: 'keys'}, MOST_KEYS.map(([key, words]) => h('span', {}, h('kbd', {}, key), ' ' + words)));
  }

  acts() {
    const may = session.changes;
    return {open: (i) => this.open(i), remove: (i) => may && this.remove(i), move: may ? (from, before) => this.move(from, before) : null};
  }

  source() {
    const view = this;
    return {
      get count() { return view.shown.length; },
      get fixed() { return view.filtered ? view.shown.length : 1; },
      cells: (i) => ({...view.shown[i].row, position: view.shown[i].at}),
      kinds: (i) => view.kinds(view.shown[i]),
      label: (i) => `${view.shown[i].at}: ${describe(view.shown[i].row)}${view.isLast(i) ? ', the default rule' : ''}${view.shown[i].entry ? ', collected' : ''}`,
    };
  }

  isLast(i) { return this.shown[i].at === this.list.length - 1; }

  kinds(one) {
    return [one.entry ? 'touched' : '', one.entry && basket.problems.has(one.entry) ? 'wrong' : '',
            one.at === this.list.length - 1 ? 'fixed' : ''].filter(Boolean);
  }

  async refresh(background) {
    if (!(await this.table.load(background))) return;
    this.base = rowsOf('rules', this.table.rows);
    this.redraft();
  }

  redraft() {
    if (!this.base) return;
    this.list = drafted(this.base, basket.of('rules'), 1).list;
    this.list.forEach((one, i) => { one.at = i; });
    this.filter();
  }

  filter() {
    const wanted = this.search.value.trim().toLowerCase();
    this.filtered = wanted !== '';
    this.shown = this.filtered ? this.list.filter((one) => Object.values(one.row).join(' ').toLowerCase().includes(wanted)) : this.list;
    this.words.textContent = this.filtered ? `${this.shown.length} of ${this.list.length} rules` : `${this.list.length} rules, the last one is the default rule`;
    this.grid.renew();
  }

  // Changing what is only collected changes the entry itself.
  entryOf(one, deed) {
    const own = basket.find(one.entry);
    if (own && own.deed === 'add' && deed === 'change') return own;
    return own && own.deed === deed && deed === 'change' ? own : null;
  }

  add() {
    const before = this.shown[this.grid.current] ?? this.list.at(-1);
    editRule(null, {position: before?.at ?? 0}, (row, position) => {
      const at = Math.min(position, this.list.length - 1);
      basket.put({id: basket.freshId('rules'), kind: 'rules', deed: 'add', row, at, before: this.list[at]?.id ?? null,
                  words: `Rule added at ${at}: ${describe(row)}`});
    });
  }

  open(i) {
    const one = this.shown[i];
    if (!one) return;
    const last = this.isLast(i);
    editRule(one.row, {position: one.at, fixed: last, readOnly: !session.changes || last, problem: basket.problems.get(one.entry)},
             (row, position) => this.changed(one, row, position));
  }

  changed(one, row, position) {
    const own = this.entryOf(one, 'change');
    const same = Object.keys(row).every((name) => String(row[name]) === String(one.row[name] ?? ''));
    if (!same) {
      basket.put({...(own ?? {id: basket.freshId('rules'), kind: 'rules', deed: 'change', target: one.id}), row: {...one.row, ...row},
                  words: `${own?.deed === 'add' ? 'Rule added' : 'Rule'} ${own?.deed === 'add' ? 'at ' : ''}${one.at}${own?.deed === 'add' ? '' : ' changed'}: ${describe(row)}`});
    }
    if (position !== one.at) this.moveTo(one.at, position);
  }

  moveTo(at, position) {
    const to = Math.min(Math.max(position, 0), this.list.length - 2);
    this.moveRow(at, to > at ? to + 1 : to);
  }

  move(from, before) {
    if (!this.filtered) this.moveRow(from, before);
  }

  // In front of a row of the list; one move of a row is one entry, however often it was pushed.
  moveRow(from, before) {
    const one = this.list[from];
    const front = this.list[before];
    const to = before > from ? before - 1 : before;
    const former = basket.entries.at(-1);
    const again = former?.kind === 'rules' && former.deed === 'move' && former.target === one.id;
    const start = again ? former.from : from;
    if (again) basket.drop(former.id);
    if (start !== to || !again) {
      basket.put({id: basket.freshId('rules'), kind: 'rules', deed: 'move', target: one.id, from: start, at: to,
                  before: front && front.at < this.list.length ? front.id : null, words: `Rule ${start} moved to ${to}: ${describe(one.row)}`});
    }
    say(`Moved to ${to}.`);
  }

  remove(i) {
    const one = this.shown[i];
    if (!one || this.isLast(i)) return;
    const own = basket.find(one.entry);
    if (own?.deed === 'add') return basket.drop(own.id);
    basket.put({id: basket.freshId('rules'), kind: 'rules', deed: 'remove', target: one.id, words: `Rule ${one.at} taken away: ${describe(one.row)}`});
  }
}
