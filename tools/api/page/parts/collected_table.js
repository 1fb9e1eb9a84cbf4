// SPDX-License-Identifier: Apache-2.0
// A small table whose rows are collected one by one: what routes and addresses have in common.
import {basket} from './basket.js';
import {drafted} from './draft.js';
import {fill, h} from './dom.js';
import {redraw} from './redraw.js';
import {session} from './session.js';
import {act, smallTable} from './small_table.js';
import {Table} from './tables.js';

export class CollectedTable {
  // kind of its entries; path; columns; namedRows(facts); words: {caption, one, none}; nameOf(row)
  constructor(body, tools, options) {
    Object.assign(this, options);
    this.every = 5;
    this.table = new Table(this.path);
    this.place = h('section', {class: 'sheet', 'aria-label': this.words.caption});
    fill(tools, [act(this.words.add, () => this.edit(null), {kind: 'push', id: `${this.kind}-add`, disabled: !session.changes})]);
    fill(body, [this.place]);
    this.heard = () => this.draw();
    basket.addEventListener('change', this.heard);
  }

  close() { basket.removeEventListener('change', this.heard); }

  async refresh(background) {
    if (await this.table.load(background)) this.draw();
  }

  get entries() { return basket.of(this.kind); }

  draw() {
    if (!this.table.tag) return;
    const {list} = drafted(this.namedRows(this.table.rows), this.entries.map((entry) => ({...entry, keepsPlace: true})));
    const table = smallTable(this.words.caption, this.columns.map((column) => ({...column, of: (one) => column.of(one.row)})), list, {
      kinds: (one) => [one.entry ? 'touched' : '', one.gone ? 'gone' : ''].join(' ').trim(),
      problem: (one) => basket.problems.get(one.entry),
      acts: session.changes ? (one) => this.actsOf(one) : null,
    });
    redraw(this.place, [list.length ? table : h('p', {class: 'empty'}, this.words.none)]);
  }

  actsOf(one) {
    const name = this.nameOf(one.row);
    if (one.gone) return [act('Leave it', () => basket.drop(one.entry), {label: `Leave ${name} as it is`})];
    return [this.mayChange(one.row) ? act('Change', () => this.edit(one), {label: 'Change ' + name}) : null,
            act('Take away', () => this.remove(one), {label: 'Take away ' + name})];
  }

  mayChange() { return true; }

  collect(entry) { basket.put({kind: this.kind, id: basket.freshId(this.kind), before: null, ...entry}); }

  // A row that is only collected is changed where it is collected.
  keep(one, row) {
    const own = one && basket.find(one.entry);
    const words = `${this.words.one} ${one && own?.deed !== 'add' ? 'changed' : 'added'}: ${this.saying(row)}`;
    if (own) basket.put({...own, row, words});
    else this.collect({deed: one ? 'change' : 'add', target: one?.id, row, words});
  }

  remove(one) {
    const own = basket.find(one.entry);
    if (own) basket.drop(own.id);
    if (own?.deed === 'add') return;
    this.collect({deed: 'remove', target: one.id, row: one.row, words: `${this.words.one} taken away: ${this.saying(one.row)}`});
  }
}
