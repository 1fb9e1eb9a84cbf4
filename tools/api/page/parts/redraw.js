// SPDX-License-Identifier: Apache-2.0
// Drawn anew without losing who is at work there: the focus goes to the control of the same name, or else to what stands
// at the same place now.
import {fill} from './dom.js';

const CONTROLS = 'button:not([disabled]), input:not([disabled]), select:not([disabled]), a[href]';
const nameOf = (control) => control.id || control.getAttribute('aria-label') || control.textContent;
const rowsOf = (place) => [...place.querySelectorAll('tr, li')];

// The control that has the place of one that is gone.
export function alike(gone, place = document) {
  return [...place.querySelectorAll(CONTROLS)].find((one) => nameOf(one) === nameOf(gone));
}

// Where nothing is left of it.
function home() {
  const dialog = document.querySelector('dialog[open]');
  return dialog ? dialog.querySelector(CONTROLS) : document.querySelector('h1');
}

export function redraw(place, children) {
  const focused = place.contains(document.activeElement) && place !== document.activeElement ? document.activeElement : null;
  const at = focused ? rowsOf(place).indexOf(focused.closest('tr, li')) : -1;
  fill(place, children);
  if (!focused || focused.isConnected) return;
  const rows = rowsOf(place);
  const near = rows[Math.min(at, rows.length - 1)]?.querySelector(CONTROLS);
  (alike(focused, place) ?? near ?? home())?.focus({preventScroll: true});
}
