// SPDX-License-Identifier: Apache-2.0
// The items by subject. A changed field goes into the basket, and what the appliance says of it stands beside it.
import {basket} from './basket.js';
import {h} from './dom.js';
import {controlOf, hintOf} from './item_field.js';
import {bySubject} from './item_table.js';
import {session} from './session.js';
import {Table} from './tables.js';

const idOf = (item) => 'item:' + item;

function inputsOf(control) {
  return control.matches('input, select') ? [control] : [...control.querySelectorAll('input, select')];
}

function valueOf(control) {
  const inputs = inputsOf(control);
  const chosen = inputs[0]?.type === 'radio' ? inputs.find((input) => input.checked) : inputs[0];
  return chosen?.value ?? '';
}

function show(control, value) {
  for (const input of inputsOf(control)) {
    if (input.type === 'radio') input.checked = input.value === value;
    else input.value = value;
  }
}

export class ItemsView {
  constructor(body) {
    this.every = 5;
    this.body = body;
    this.table = new Table('/items');
    this.heard = () => this.mark();
    basket.addEventListener('change', this.heard);
  }

  close() { basket.removeEventListener('change', this.heard); }

  async refresh(background) {
    if (await this.table.load(background)) this.draw();
  }

  // Not under the hands of somebody who types.
  draw() {
    if (this.body.contains(document.activeElement) && this.fields) return this.renew();
    this.fields = new Map();
    const groups = bySubject(this.table.rows);
    const jumps = groups.map(([subject], i) => h('a', {href: '#items', onclick: (event) => this.jump(event, i)}, subject));
    this.sheets = groups.map(([subject, rows]) => this.sheet(subject, rows));
    this.body.replaceChildren(h('nav', {class: 'jump', 'aria-label': 'Subjects of the items'}, jumps), ...this.sheets);
    this.mark();
  }

  jump(event, i) {
    event.preventDefault();
    this.sheets[i].scrollIntoView();
    this.sheets[i].querySelector('h2').focus({preventScroll: true});
  }

  sheet(subject, rows) {
    return h('section', {class: 'sheet', 'aria-label': subject}, h('h2', {tabindex: '-1'}, subject), rows.map((row) => this.line(row)));
  }

  line(row) {
    const control = controlOf(row, session.changes);
    const [first] = inputsOf(control);
    const id = 'field-' + row.item;
    if (first) first.setAttribute('aria-describedby', `${id}-problem ${id}-hint`);
    if (first && first.type !== 'radio') first.id = id;
    const label = first && first.type !== 'radio' ? h('label', {for: id}, row.label) : h('span', {class: 'label'}, row.label);
    const problem = h('p', {class: 'problem', id: id + '-problem'});
    const line = h('div', {class: 'item'}, h('div', {class: 'name'}, label, h('span', {class: 'word'}, row.item)),
                   control, h('p', {class: 'hint', id: id + '-hint'}, hintOf(row)), problem);
    this.fields.set(row.item, {row, control, line, problem, first});
    control.addEventListener('change', () => this.collect(row.item));
    return line;
  }

  renew() {
    for (const row of this.table.rows) {
      const field = this.fields.get(row.item);
      if (!field) continue;
      field.row = {...field.row, value: row.value};
      if (field.control.matches('output')) field.control.textContent = String(row.value || '–');
    }
    this.mark();
  }

  collect(item) {
    const {row, control} = this.fields.get(item);
    const after = valueOf(control).trim();
    if (after === String(row.value)) return basket.drop(idOf(item));
    basket.put({id: idOf(item), kind: 'item', item, after, words: `${row.label}: ${row.value === '' ? 'empty' : row.value} → ${after === '' ? 'empty' : after}${row.unit ? ' ' + row.unit : ''}`});
  }

  // The fields as the basket has them.
  mark() {
    for (const [item, field] of this.fields ?? []) {
      const entry = basket.find(idOf(item));
      const shown = entry ? String(entry.after) : String(field.row.value);
      if (!field.control.contains(document.activeElement) && !field.control.matches('output')) show(field.control, shown);
      field.line.classList.toggle('touched', Boolean(entry));
      field.problem.textContent = basket.problems.get(idOf(item)) ?? '';
      for (const input of inputsOf(field.control)) input.toggleAttribute('aria-invalid', false);
      if (basket.problems.has(idOf(item))) field.first?.setAttribute('aria-invalid', 'true');
    }
  }
}
