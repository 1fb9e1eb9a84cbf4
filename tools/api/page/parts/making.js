// SPDX-License-Identifier: Apache-2.0
// The basket tried out and made: one script, checked by the appliance on a copy first, then what no script holds.
import {post, request, Refused} from './api.js';
import {basket} from './basket.js';
import {compose} from './script.js';

// What the appliance complains of, by entry; what belongs to none is general.
function problemsOf(refused, script) {
  const problems = new Map();
  let general = '';
  for (const {line, message: text, code} of refused.complaints) {
    const owner = script.owners[line - 1];
    const message = code === undefined || code < 0 ? text : `${text} (code ${code})`;
    if (owner) problems.set(owner, message);
    else general ||= message;
  }
  if (!refused.complaints.length) general = refused.message;
  return {problems, general};
}

function lostOf(script) {
  return new Map(script.lost.map((entry) => [entry.id, 'What this belongs to is no longer there: it was changed meanwhile.']));
}

const bodyOf = (script, more) => ({script: script.text, ...(script.replace ? {replace: true} : {}), ...more});

// {changes, problems, general, script}: what would be made different.
export async function tryOut() {
  const script = await compose(basket);
  const outcome = {script, changes: [], problems: lostOf(script), general: '', requests: script.requests};
  if (script.lost.length || !script.lines.length) return outcome;
  try {
    outcome.changes = (await post('/apply', bodyOf(script, {check: true}))).changes;
  } catch (refused) {
    if (!(refused instanceof Refused)) throw refused;
    Object.assign(outcome, problemsOf(refused, script));
  }
  return outcome;
}

const queryOf = ({minutes, comment}) => ({confirm: minutes || '', comment});

function finished(script) {
  const owned = new Set(script.requests.map(({owner}) => owner));
  for (const entry of [...basket.entries]) {
    if (!owned.has(entry.id)) basket.drop(entry.id);
  }
}

function partsOf(result) {
  return (result.failed ?? []).map(({line, reason}) => `${line}: ${reason}`).join('\n');
}

async function makeScript(script, settle) {
  if (!script.lines.length) return '';
  const result = await post('/apply', bodyOf(script), {query: queryOf(settle), ifMatch: script.tag});
  finished(script);
  return partsOf(result) || (result.saved === false ? `Applied, and not saved: ${result.reason ?? result.error?.message ?? ''}` : '');
}

// The timer is the first change's: what follows goes back with it.
async function makeRequests(script, settle) {
  let minutes = script.lines.length ? '' : settle.minutes;
  for (const {owner, ...one} of script.requests) {
    try {
      await request(one, {query: queryOf({...settle, minutes: one.forGood ? '' : minutes})});
    } catch (refused) {
      throw Object.assign(refused, {owner});
    }
    if (!one.forGood) minutes = '';
    basket.drop(owner);
  }
}

// Words about what went less than well; throws what the appliance refused.
export async function make(script, settle) {
  try {
    const words = await makeScript(script, settle);
    await makeRequests(script, settle);
    return words;
  } catch (refused) {
    if (refused.owner) basket.complain(new Map([[refused.owner, refused.message]]));
    else if (refused instanceof Refused) Object.assign(refused, problemsOf(refused, script));
    throw refused;
  }
}
