// SPDX-License-Identifier: Apache-2.0
// The accounts. Passwords are in the basket only while the page is open, and nowhere else.
import {basket} from './basket.js';
import {openDialog} from './dialog.js';
import {fill, h} from './dom.js';
import {redraw} from './redraw.js';
import {field, text, tellProblem} from './field.js';
import {moment} from './format.js';
import {session} from './session.js';
import {act, smallTable} from './small_table.js';
import {Table} from './tables.js';

const RULE = '8 to 31 characters: a small letter, a capital, a digit and a sign among them';
const COLUMNS = [
  {title: 'Name', of: (row) => row.name, word: true},
  {title: 'May', of: (row) => (row.administrator ? 'change everything' : 'only read')},
  {title: 'Last log-in', of: (row) => moment(row.lastLogin)},
  {title: 'Password changed', of: (row) => moment(row.lastPasswordChange)},
  {title: '', of: (row) => (row.passwordLine === false ? h('span', {class: 'mark bad'}, 'no password line') : row.collected ? h('span', {class: 'mark'}, 'collected') : '')},
];

const secret = (name) => h('input', {type: 'password', name, autocomplete: 'new-password', maxlength: 31});

export class UsersView {
  constructor(body, tools) {
    this.every = 5;
    this.table = new Table('/users');
    this.place = h('section', {class: 'sheet', 'aria-label': 'Users'});
    fill(tools, [act('Add a user', () => this.add(), {kind: 'push', id: 'users-add', disabled: !session.changes})]);
    fill(body, [this.place]);
    this.heard = () => this.draw();
    basket.addEventListener('change', this.heard);
  }

  close() { basket.removeEventListener('change', this.heard); }

  async refresh(background) {
    if (await this.table.load(background)) this.draw();
  }

  entryOf(name) { return basket.of('users').find((entry) => entry.name === name); }

  draw() {
    if (!this.table.tag) return;
    const fresh = basket.of('users').filter((entry) => entry.deed === 'add').map((entry) => ({...entry.row, collected: true}));
    const rows = [...this.table.rows, ...fresh];
    redraw(this.place, [smallTable('Users', COLUMNS, rows, {
      kinds: (row) => { const entry = this.entryOf(row.name); return [entry ? 'touched' : '', entry?.deed === 'remove' ? 'gone' : ''].join(' ').trim(); },
      problem: (row) => basket.problems.get(this.entryOf(row.name)?.id),
      acts: session.changes ? (row) => this.actsOf(row) : null,
    })]);
  }

  actsOf(row) {
    const entry = this.entryOf(row.name);
    if (entry) return [act('Leave it', () => basket.drop(entry.id), {label: `Leave ${row.name} as it is`})];
    return [act('Password', () => this.password(row), {label: 'Change the password of ' + row.name}),
            act('Take away', () => this.remove(row), {label: 'Take away ' + row.name})];
  }

  put(name, deed, words, request, more = {}) {
    basket.put({id: `users:${name}`, kind: 'users', deed, name, words, request, ...more});
  }

  remove(row) {
    this.put(row.name, 'remove', `User ${row.name} taken away`, {method: 'DELETE', path: '/users/' + encodeURIComponent(row.name)});
  }

  // Twice the same, or it is not taken.
  form(id, fields, take) {
    const form = h('form', {novalidate: true, id}, fields, h('div', {class: 'ends'},
      h('button', {type: 'button', class: 'plain', onclick: () => form.closest('dialog').close()}, 'Leave it'),
      h('button', {type: 'submit', class: 'push', id: id + '-keep'}, 'Collect')));
    form.addEventListener('submit', (event) => {
      event.preventDefault();
      const {password, again} = form.elements;
      if (password.value !== again.value) return tellProblem(again, 'The two are not the same.');
      take(form.elements);
      form.closest('dialog').close();
    });
    return form;
  }

  add() {
    const admin = h('input', {type: 'checkbox', id: 'user-admin', name: 'administrator'});
    openDialog('A new user', this.form('user-form', [
      h('div', {class: 'pair'}, field('Name', text('name', '', {maxlength: 31}), {hint: '5 to 31 letters and digits'}), h('p', {class: 'tick'}, admin, h('label', {for: 'user-admin'}, 'May change everything'))),
      h('div', {class: 'pair'}, field('Password', secret('password'), {hint: RULE}), field('Again', secret('again')))],
      ({name, password}) => this.take(name.value.trim(), password.value, admin.checked)));
  }

  take(name, password, administrator) {
    this.put(name, 'add', `User ${name} added, who may ${administrator ? 'change everything' : 'only read'}`,
             {method: 'POST', path: '/users', body: {name, password, administrator}},
             {secret: true, row: {name, administrator, lastLogin: null, lastPasswordChange: null}});
  }

  password(row) {
    openDialog('Password of ' + row.name, this.form('password-form', [
      field('Present password', secret('old')), h('div', {class: 'pair'}, field('New password', secret('password'), {hint: RULE}), field('Again', secret('again')))],
      ({old, password}) => this.put(row.name, 'password', `User ${row.name} given another password`,
        {method: 'PUT', path: `/users/${encodeURIComponent(row.name)}/password`, body: {oldPassword: old.value, newPassword: password.value}, forGood: true}, {secret: true})));
  }
}
