// SPDX-License-Identifier: Apache-2.0
// Requests to /api/1. Everything that fails is a Refused with the words of the appliance.
const BASE = '/api/1';
let word = '';
let whenEnded = () => {};

export class Refused extends Error {
  constructor(status, facts) {
    super(sentence(status, facts));
    this.status = status;
    this.facts = facts ?? {};
    this.complaints = this.facts.complaints ?? [];
    this.code = this.facts.error?.code;
  }
}

// The message as kestrovectl has it, with the library's code behind it.
function sentence(status, facts) {
  const error = facts?.error;
  if (!error) return status === 0 ? 'The appliance does not answer.' : `The appliance answered ${status}.`;
  const code = error.code === undefined ? '' : ` (code ${error.code})`;
  const system = error.errno?.name ? ` (${error.errno.name})` : '';
  return error.message + code + system;
}

export function keepWord(csrf) { word = csrf ?? ''; }
export function onSessionEnd(call) { whenEnded = call; }

function queryOf(query) {
  const pairs = Object.entries(query ?? {}).filter(([, value]) => value !== '' && value !== null && value !== undefined);
  return pairs.length ? '?' + new URLSearchParams(pairs) : '';
}

function headersOf(method, {body, background, ifMatch, ifNoneMatch}) {
  const headers = {};
  if (body !== undefined) headers['Content-Type'] = 'application/json';
  if (method !== 'GET' && word) headers['X-CSRF-Token'] = word;
  if (background) headers['X-Kestrove-Background'] = '1';
  if (ifMatch) headers['If-Match'] = ifMatch;
  if (ifNoneMatch) headers['If-None-Match'] = ifNoneMatch;
  return headers;
}

async function sent(method, path, more) {
  const body = more.body === undefined ? undefined : JSON.stringify(more.body);
  const url = BASE + path + queryOf(more.query);
  try {
    return await fetch(url, {method, body, headers: headersOf(method, more), cache: 'no-store', credentials: 'same-origin'});
  } catch {
    throw new Refused(0);
  }
}

async function factsOf(reply) {
  if (reply.status === 304 || reply.status === 204) return null;
  try {
    return await reply.json();
  } catch {
    return null;
  }
}

async function ask(method, path, more = {}) {
  const reply = await sent(method, path, more);
  const facts = await factsOf(reply);
  if (reply.status === 401 && !more.atTheDoor) whenEnded();
  if (!reply.ok && reply.status !== 304) throw new Refused(reply.status, facts);
  return {status: reply.status, facts, tag: reply.headers.get('ETag')};
}

// The lines of a reply that goes on, as they come; ends with it.
export async function follow(path, signal, call) {
  const reply = await fetch(BASE + path, {signal, cache: 'no-store', credentials: 'same-origin', headers: {'X-Kestrove-Background': '1'}});
  if (reply.status === 401) whenEnded();
  if (!reply.ok) throw new Refused(reply.status, await factsOf(reply));
  const reader = reply.body.pipeThrough(new TextDecoderStream()).getReader();
  let left = '';
  for (let part = await reader.read(); !part.done; part = await reader.read()) {
    const lines = (left + part.value).split('\n');
    left = lines.pop();
    for (const line of lines) await call(line);
  }
}

export const look = (path, more) => ask('GET', path, more);
export const get = async (path, more) => (await ask('GET', path, more)).facts;
export const post = async (path, body, more) => (await ask('POST', path, {body: body ?? {}, ...more})).facts;
export const put = async (path, body, more) => (await ask('PUT', path, {body, ...more})).facts;
export const remove = async (path, more) => (await ask('DELETE', path, more)).facts;
// One whose method is known only when it is made: of the basket.
export const request = async ({method, path, body}, more) => (await ask(method, path, {body, ...more})).facts;
