// SPDX-License-Identifier: Apache-2.0
// Who is logged in, and what may be done.
import {get, keepWord, post, remove} from './api.js';

export const session = {user: '', changes: false};

function take(facts) {
  session.user = facts.user;
  session.changes = facts.role === 'admin';
  keepWord(facts.csrf);
}

// Whether the browser still has a session.
export async function resume() {
  try {
    take(await get('/session', {atTheDoor: true}));
    return true;
  } catch (refused) {
    if (refused.status === 401) return false;
    throw refused;
  }
}

export async function logIn(user, password) {
  take(await post('/session', {user, password}, {atTheDoor: true}));
}

export async function logOut() {
  await remove('/session', {atTheDoor: true});
  keepWord('');
}
