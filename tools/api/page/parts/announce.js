// SPDX-License-Identifier: Apache-2.0
// What a screen reader is told beside what is shown.
import {byId} from './dom.js';

// The same words twice are told twice.
function tell(id, words) {
  const region = byId(id);
  region.textContent = '';
  requestAnimationFrame(() => { region.textContent = words; });
}

export const say = (words) => tell('polite', words);
export const warn = (words) => tell('urgent', words);
