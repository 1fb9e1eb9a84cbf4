// SPDX-License-Identifier: Apache-2.0
// What is drawn anew under a button of the mouse that is down loses the click, and a row that is being dragged stands
// for another one: whoever draws of its own accord waits until the hand is off.
let held = false;
let waiting = [];

// The click comes right behind the release: what waited comes behind the click.
function release() {
  if (!held) return;
  held = false;
  const calls = waiting;
  waiting = [];
  setTimeout(() => calls.forEach((call) => call()));
}

addEventListener('pointerdown', ({isPrimary, button}) => { held ||= isPrimary && button === 0; }, true);
for (const kind of ['pointerup', 'pointercancel']) addEventListener(kind, release, true);
addEventListener('blur', release);
// A release outside of the window, or in a list of the browser's own, is seen at the next move.
addEventListener('pointermove', ({buttons}) => { if (buttons === 0) release(); }, true);

export const released = () => (held ? new Promise((resolve) => { waiting.push(resolve); }) : Promise.resolve());
