// SPDX-License-Identifier: Apache-2.0
// Elements made of words: h('p', {class: 'note'}, 'text'). What comes from the appliance is only ever text.
const PROPERTIES = new Set(['value', 'checked', 'disabled', 'selected', 'hidden', 'indeterminate']);

function give(element, name, value) {
  if (value === null || value === undefined) return;
  if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
  else if (PROPERTIES.has(name)) element[name] = value;
  else if (value === true) element.setAttribute(name, '');
  else if (value !== false) element.setAttribute(name, value);
}

export function h(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  fill(element, children);
  for (const [name, value] of Object.entries(attributes)) give(element, name, value);
  return element;
}

const SVG = 'http://www.w3.org/2000/svg';
export function svg(tag, attributes = {}, ...children) {
  const element = document.createElementNS(SVG, tag);
  fill(element, children);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  return element;
}

export function fill(element, children) {
  element.replaceChildren(...children.flat(9).filter((child) => child !== null && child !== undefined && child !== false));
  return element;
}

export const byId = (id) => document.getElementById(id);

let numbers = 0;
export const freshId = (stem) => `${stem}-${++numbers}`;
