// SPDX-License-Identifier: Apache-2.0
// The page's beginning: the door, then the frame with its views.
import {get, onSessionEnd} from './api.js';
import {Bar} from './bar.js';
import {basket} from './basket.js';
import {byId, h} from './dom.js';
import {showDoor} from './door.js';
import {Frame} from './frame.js';
import {logOut, resume, session} from './session.js';
import {series} from './series.js';
import {showTray} from './tray.js';

const main = byId('main');
const frame = new Frame(main);
const bar = new Bar(byId('bar'));
showTray(byId('tray'));

function outside(reason) {
  series.stop();
  bar.stop();
  frame.close();
  document.body.className = 'outside';
  showDoor(main, inside, reason);
}

function inside() {
  basket.belongTo(session.user);
  document.body.className = '';
  frame.open();
  bar.start();
  series.start();
}

async function leave() {
  try {
    await logOut();
  } catch { /* nobody is logged in any more */ }
  basket.clear();
  outside();
}

async function begin() {
  const about = await get('', {atTheDoor: true});
  if (!about.enabled) throw new Error('The web interface of this appliance is switched off (httpOperState).');
  if (await resume()) inside();
  else outside();
}

onSessionEnd(() => {
  if (document.body.className !== 'outside') outside('The session has ended. What was collected is still here.');
});
byId('log-out').addEventListener('click', leave);
begin().catch((error) => {
  document.body.className = 'outside';
  main.replaceChildren(h('div', {class: 'door'}, h('p', {class: 'note wrong', role: 'alert'}, error.message)));
});
