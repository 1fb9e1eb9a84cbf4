// SPDX-License-Identifier: Apache-2.0
// The log-in.
import {h} from './dom.js';
import {warn} from './announce.js';
import {logIn} from './session.js';

function fieldOf(id, label, type, complete) {
  return h('div', {class: 'field'}, h('label', {for: id}, label),
           h('input', {id, name: id, type, autocomplete: complete, required: true, maxlength: 255, 'aria-describedby': 'door-problem'}));
}

function wordsOf(refused) {
  if (refused.status === 401) return 'The name or the password is wrong.';
  if (refused.status === 429) return 'A log-in failed just now. Wait a moment, then try again.';
  return refused.message;
}

async function enter(form, problem, entered) {
  const button = form.querySelector('button');
  if (!form.elements.user.value || !form.elements.password.value) {
    problem.textContent = 'A name and a password are needed.';
    return;
  }
  button.disabled = true;
  problem.textContent = '';
  try {
    await logIn(form.elements.user.value, form.elements.password.value);
    form.elements.password.value = '';
    entered();
  } catch (refused) {
    problem.textContent = wordsOf(refused);
    warn(problem.textContent);
    form.elements.password.value = '';
    form.elements.password.focus();
  } finally {
    button.disabled = false;
  }
}

// Shows it in the main part; calls entered() once somebody is in.
export function showDoor(main, entered, reason) {
  const problem = h('p', {class: 'problem', id: 'door-problem'}, reason ?? '');
  const form = h('form', {novalidate: true}, fieldOf('user', 'User', 'text', 'username'),
                 fieldOf('password', 'Password', 'password', 'current-password'), problem,
                 h('div', {class: 'ends'}, h('button', {class: 'push', type: 'submit'}, 'Log in')));
  form.addEventListener('submit', (event) => {
    event.preventDefault();
    enter(form, problem, entered);
  });
  main.replaceChildren(h('div', {class: 'door'}, h('div', {class: 'door-sheet'},
    h('h1', {}, h('img', {src: 'icon.svg', alt: '', width: 28, height: 28}), 'Kestrove'), form)));
  form.elements.user.focus();
}
