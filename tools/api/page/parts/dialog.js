// SPDX-License-Identifier: Apache-2.0
// Dialogs: the browser keeps the focus inside and gives it back.
import {freshId, h} from './dom.js';
import {alike} from './redraw.js';

export function openDialog(title, content, {kind = ''} = {}) {
  const id = freshId('dialog');
  const dialog = h('dialog', {class: kind, 'aria-labelledby': id}, h('div', {class: 'inside'}, h('h2', {id}, title), content));
  const before = document.activeElement;
  dialog.addEventListener('close', () => {
    dialog.remove();
    const there = before?.isConnected ? before : before && alike(before);
    (there && there !== document.body ? there : document.querySelector('h1'))?.focus({preventScroll: true});
  });
  document.body.append(dialog);
  dialog.showModal();
  return dialog;
}

// A question whose answer does something at once; what is refused is told in it.
export function ask(title, words, verb, act) {
  const problem = h('p', {class: 'problem', role: 'alert'});
  const yes = h('button', {type: 'button', class: 'grave'}, verb);
  const no = h('button', {type: 'button', class: 'plain', autofocus: true}, 'Leave it');
  const dialog = openDialog(title, [h('p', {}, words), problem, h('div', {class: 'ends'}, no, yes)]);
  no.addEventListener('click', () => dialog.close());
  yes.addEventListener('click', async () => {
    yes.disabled = true;
    try {
      await act();
      dialog.close();
    } catch (refused) {
      problem.textContent = refused.message;
      yes.disabled = false;
    }
  });
  return dialog;
}
