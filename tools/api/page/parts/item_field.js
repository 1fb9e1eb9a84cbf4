// SPDX-License-Identifier: Apache-2.0
// The control that fits what an item accepts: "on, off", "1 (auto), 20, 40", "576..1500", or words.
import {h} from './dom.js';
import {either, text} from './field.js';
import {short} from './format.js';

const RANGE = /^(\d+)\.\.(\d+)$/;

// [["1", "1 (auto)"], ["20", "20"]], or null for what is no list.
function choicesOf(accepts) {
  const words = accepts.split(', ');
  if (!words.every((word) => /^\d+( \(\w+\))?$/.test(word))) return null;
  return words.map((word) => [word.split(' ')[0], word]);
}

function selectOf(row, choices, more) {
  const known = choices.some(([value]) => value === String(row.value));
  const shown = known ? choices : [[String(row.value), `${row.value} (present)`], ...choices];
  return h('select', {name: row.item, ...more}, shown.map(([value, label]) =>
    h('option', {value, selected: value === String(row.value)}, label)));
}

function inputOf(row, more) {
  const number = RANGE.test(row.accepts);
  const control = text(row.item, String(row.value), {...more, inputmode: number ? 'numeric' : 'text', maxlength: number ? 16 : 256});
  return row.unit ? h('span', {class: 'with-unit'}, control, h('span', {}, row.unit)) : control;
}

// The latest session is the appliance's to note.
const isSet = (row) => row.accepts && row.item !== 'httpEncryptedId';

export function controlOf(row, mayChange) {
  const more = {disabled: !mayChange, 'data-item': row.item};
  if (!isSet(row)) return h('output', {'data-item': row.item}, row.unit ? `${row.value} ${row.unit}` : String(row.value || '–'));
  if (row.accepts === 'on, off') return either(row.item, row.value, ['on', 'off'], {...more, 'aria-label': row.label});
  const choices = choicesOf(row.accepts);
  return choices ? selectOf(row, choices, more) : inputOf(row, more);
}

// "10 kbit/s to 100 Mbit/s" of what a rate accepts; otherwise what the appliance says.
export function hintOf(row) {
  if (!isSet(row)) return 'read only';
  if (row.accepts === 'on, off') return row.value === 'unset' ? 'not set yet' : '';
  const range = RANGE.exec(row.accepts);
  if (!range) return choicesOf(row.accepts) ? '' : row.accepts;
  if (row.unit !== 'bit/s') return `${range[1]} to ${range[2]}`;
  return `${short(Number(range[1]), row.unit)} to ${short(Number(range[2]), row.unit)}`;
}
