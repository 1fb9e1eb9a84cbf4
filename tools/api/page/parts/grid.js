// SPDX-License-Identifier: Apache-2.0
// A grid of thousands of rows, of which only those exist that are seen. Moved by hand at its grips, and by keys.
import {fill, freshId, h} from './dom.js';

const BEYOND = 10;
const EDGE = 36;

export class Grid {
  // columns: {name, title}; source: {count, fixed, cells(i), kinds(i), label(i)}; acts: {open, move, remove}
  constructor(label, columns, source, acts) {
    Object.assign(this, {columns, source, acts, current: 0, stem: freshId('grid')});
    this.place = h('div', {class: 'grid-place', hidden: true});
    this.rows = h('div', {class: 'grid-space', role: 'rowgroup'});
    this.scroll = h('div', {class: 'grid-scroll', role: 'presentation'}, this.rows);
    this.element = h('div', {class: 'grid', role: 'grid', tabindex: '0', 'aria-label': label, 'aria-colcount': columns.length + 1},
                     this.head(), this.scroll);
    this.listen();
  }

  head() {
    return h('div', {role: 'rowgroup'}, h('div', {class: 'grid-head', role: 'row', 'aria-rowindex': 1}, h('span', {role: 'columnheader'}, h('span', {class: 'unseen'}, 'Grip')),
      this.columns.map((column) => h('span', {role: 'columnheader', class: column.number ? 'number' : ''}, column.title))));
  }

  listen() {
    this.scroll.addEventListener('scroll', () => this.draw(), {passive: true});
    this.element.addEventListener('keydown', (event) => this.key(event));
    this.rows.addEventListener('pointerdown', (event) => this.grab(event));
    this.rows.addEventListener('click', (event) => this.pick(event));
    this.rows.addEventListener('dblclick', (event) => this.at(event) !== null && this.acts.open(this.at(event)));
    this.watch = new ResizeObserver(() => this.draw());
    this.watch.observe(this.scroll);
  }

  close() { this.watch.disconnect(); }

  get height() { return parseFloat(getComputedStyle(this.element).getPropertyValue('--row')) || 30; }
  get page() { return Math.max(1, Math.floor(this.scroll.clientHeight / this.height) - 1); }

  // The source has changed.
  renew() {
    this.current = Math.min(this.current, Math.max(0, this.source.count - 1));
    this.element.setAttribute('aria-rowcount', String(this.source.count + 1));
    this.draw();
  }

  draw() {
    const height = this.height;
    const first = Math.max(0, Math.floor(this.scroll.scrollTop / height) - BEYOND);
    const last = Math.min(this.source.count, first + Math.ceil(this.scroll.clientHeight / height) + 2 * BEYOND);
    this.rows.style.height = `${this.source.count * height}px`;
    this.element.style.setProperty('--gutter', `${this.scroll.offsetWidth - this.scroll.clientWidth}px`);
    const seen = [];
    for (let i = first; i < last; ++i) seen.push(this.row(i, height));
    fill(this.rows, [seen, this.place]);
    this.element.setAttribute('aria-activedescendant', `${this.stem}-${this.current}`);
  }

  row(i, height) {
    const kinds = ['grid-row', ...this.source.kinds(i), i === this.current ? 'current' : ''].join(' ').trim();
    const cells = this.source.cells(i);
    const row = h('div', {class: kinds, role: 'row', id: `${this.stem}-${i}`, 'aria-rowindex': i + 2, 'data-at': i,
                          'aria-selected': String(i === this.current), 'aria-label': this.source.label(i)},
      h('span', {class: 'grip', role: 'gridcell', 'aria-hidden': 'true'}, this.mayMove(i) ? '⠿' : ''),
      this.columns.map((column) => h('span', {role: 'gridcell', title: String(cells[column.name]), class:
        `c-${column.kind ?? column.name}${column.number ? ' number' : ''}${cells[column.name] === 'any' ? ' any' : ''}`}, String(cells[column.name]))));
    row.style.transform = `translateY(${i * height}px)`;
    return row;
  }

  mayMove(i) { return Boolean(this.acts.move) && i < this.source.count - this.source.fixed; }

  at(event) {
    const row = event.target.closest('.grid-row');
    return row ? Number(row.dataset.at) : null;
  }

  pick(event) {
    const at = this.at(event);
    if (at === null) return;
    this.go(at);
    this.element.focus({preventScroll: true});
  }

  go(at) {
    this.current = Math.min(Math.max(at, 0), this.source.count - 1);
    const height = this.height;
    const top = this.current * height;
    const {scrollTop, clientHeight} = this.scroll;
    if (top < scrollTop) this.scroll.scrollTop = top;
    else if (top + height > scrollTop + clientHeight) this.scroll.scrollTop = top + height - clientHeight;
    this.draw();
  }

  steps(event) {
    return {ArrowUp: this.current - 1, ArrowDown: this.current + 1, PageUp: this.current - this.page,
            PageDown: this.current + this.page, Home: 0, End: this.source.count - 1}[event.key];
  }

  key(event) {
    if (event.altKey && (event.key === 'ArrowUp' || event.key === 'ArrowDown')) return this.shift(event);
    const step = this.steps(event);
    const act = {Enter: this.acts.open, Delete: this.acts.remove, Backspace: this.acts.remove}[event.key];
    if (step === undefined && !act) return;
    event.preventDefault();
    if (step !== undefined) this.go(step);
    else act(this.current);
  }

  shift(event) {
    event.preventDefault();
    const down = event.key === 'ArrowDown';
    const before = down ? this.current + 2 : this.current - 1;
    if (!this.mayMove(this.current) || before < 0 || before > this.source.count - this.source.fixed) return;
    this.acts.move(this.current, before);
    this.go(this.current + (down ? 1 : -1));
  }

  // A grip is held: the row goes in front of where it is let go.
  grab(event) {
    const from = this.at(event);
    if (!event.target.closest('.grip') || from === null || !this.mayMove(from)) return;
    event.preventDefault();
    this.held = {from, before: from, y: event.clientY, frame: 0};
    const move = (later) => { this.held.y = later.clientY; };
    const end = (later) => this.letGo(later, stop);
    const escape = (later) => { if (later.key === 'Escape') this.letGo(null, stop); };
    const stop = () => {
      removeEventListener('pointermove', move);
      removeEventListener('pointerup', end);
      removeEventListener('pointercancel', escape);
      removeEventListener('keydown', escape, true);
    };
    addEventListener('pointermove', move);
    addEventListener('pointerup', end);
    addEventListener('keydown', escape, true);
    this.carry();
  }

  // Near an edge the grid runs on by itself.
  carry() {
    if (!this.held) return;
    const frame = this.scroll.getBoundingClientRect();
    const y = this.held.y - frame.top;
    if (y < EDGE) this.scroll.scrollTop -= (EDGE - y) / 3;
    if (y > frame.height - EDGE) this.scroll.scrollTop += (y - frame.height + EDGE) / 3;
    const place = Math.round((this.scroll.scrollTop + y) / this.height);
    this.held.before = Math.min(Math.max(place, 0), this.source.count - this.source.fixed);
    this.place.hidden = false;
    this.place.style.transform = `translateY(${this.held.before * this.height - 2}px)`;
    requestAnimationFrame(() => this.carry());
  }

  letGo(event, stop) {
    stop();
    const held = this.held;
    this.held = null;
    this.place.hidden = true;
    if (!event || !held || held.before === held.from || held.before === held.from + 1) return;
    this.acts.move(held.from, held.before);
    this.go(held.before > held.from ? held.before - 1 : held.before);
  }
}
