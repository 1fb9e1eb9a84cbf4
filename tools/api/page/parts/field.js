// SPDX-License-Identifier: Apache-2.0
// Fields of forms: a label, a control, a hint and the place for what the appliance says of the value.
import {freshId, h} from './dom.js';

export function field(label, control, {hint = '', narrow = false} = {}) {
  const id = control.id || freshId('field');
  control.id = id;
  const problem = h('p', {class: 'problem', id: id + '-problem'});
  const help = hint ? h('p', {class: 'hint', id: id + '-hint'}, hint) : null;
  control.setAttribute('aria-describedby', `${id}-problem${hint ? ` ${id}-hint` : ''}`);
  return h('div', {class: narrow ? 'field narrow' : 'field'}, h('label', {for: id}, label), control, help, problem);
}

export function tellProblem(control, words) {
  const place = document.getElementById(control.id + '-problem');
  if (place) place.textContent = words ?? '';
  if (words) control.setAttribute('aria-invalid', 'true');
  else control.removeAttribute('aria-invalid');
}

export const text = (name, value = '', more = {}) =>
  h('input', {type: 'text', name, value, autocomplete: 'off', spellcheck: 'false', ...more});

export function choice(name, value, words) {
  return h('select', {name}, words.map((word) => {
    const [key, label] = Array.isArray(word) ? word : [word, word];
    return h('option', {value: key, selected: key === String(value)}, label);
  }));
}

// Two or three words of which one holds: a group of radio buttons.
export function either(name, value, words, more = {}) {
  return h('span', {class: 'either', role: 'radiogroup', ...more}, words.map((word) =>
    h('label', {}, h('input', {type: 'radio', name, value: word, checked: word === value, disabled: more.disabled}), word)));
}
