// SPDX-License-Identifier: Apache-2.0
// What a screen reader is told beside what is shown.
import {byId, h} from './dom.js';

const KEPT = 5;

// A line of its own: what came just before is told, too, and the same words twice are told twice.
function tell(id, words) {
  const region = byId(id);
  region.append(h('p', {}, words));
  while (region.children.length > KEPT) region.firstChild.remove();
}

export const say = (words) => tell('polite', words);
export const warn = (words) => tell('urgent', words);
