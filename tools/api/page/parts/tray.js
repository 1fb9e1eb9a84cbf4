// SPDX-License-Identifier: Apache-2.0
// The line at the foot that says how much is collected.
import {say} from './announce.js';
import {basket} from './basket.js';
import {fill, h} from './dom.js';
import {counted} from './format.js';
import {review} from './review.js';
import {session} from './session.js';
import {ask} from './dialog.js';

function forget() {
  ask('Drop everything that is collected?', `${counted(basket.size, 'change')} would be forgotten; the appliance stays as it is.`, 'Drop all',
      () => { basket.clear(); say('The collected changes are dropped.'); });
}

// The buttons stay the same ones: who leaves a field by pressing one presses it while the field is collected.
class Tray {
  constructor(place) {
    this.place = place;
    this.count = h('b', {});
    this.words = h('span', {});
    this.apply = h('button', {type: 'button', class: 'push', id: 'tray-review', onclick: () => review()}, 'Review and apply');
    fill(place, [h('div', {class: 'tray-row'}, this.count, this.words, h('span', {class: 'spread'},
      h('button', {type: 'button', class: 'plain', id: 'tray-clear', onclick: forget}, 'Drop all'), this.apply))]);
  }

  draw() {
    const wrong = basket.problems.size;
    this.place.hidden = basket.size === 0 || document.body.className === 'outside';
    this.count.textContent = counted(basket.size, 'change') + ' collected';
    this.words.className = wrong ? 'problem' : 'soft';
    this.words.textContent = wrong ? `${counted(wrong, 'of them is', 'of them are')} refused` : 'nothing is made before you apply it';
    this.apply.disabled = !session.changes;
  }
}

export function showTray(place) {
  const tray = new Tray(place);
  let known = basket.size;
  basket.addEventListener('change', () => {
    tray.draw();
    if (basket.size > known) say(`${counted(basket.size, 'change')} collected.`);
    known = basket.size;
  });
  new MutationObserver(() => tray.draw()).observe(document.body, {attributes: true, attributeFilter: ['class']});
  tray.draw();
}
