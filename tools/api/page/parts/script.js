// SPDX-License-Identifier: Apache-2.0
// The basket as one script that is applied as a whole, and the few requests that no script can hold.
import {drafted} from './draft.js';
import {addressLine, quoted, routeLine, ruleLine} from './lines.js';
import {look} from './api.js';
import {ROUTES, RULES, ADDRESSES, rowsOf} from './table_rows.js';

class Script {
  constructor() {
    this.lines = [];
    this.owners = [];
    this.requests = [];
    this.lost = [];
  }

  add(line, owner = null) {
    this.lines.push(line);
    this.owners.push(owner);
  }

  get text() { return this.lines.map((line) => line + '\n').join(''); }
}

const TABLES = ['addresses', 'routes', 'routes6', 'rules'];
const takesAway = (entry) => TABLES.includes(entry.kind) &&
  (entry.deed === 'remove' || entry.deed === 'move' || (entry.deed === 'change' && entry.kind !== 'routes' && entry.kind !== 'routes6'));

// The lines of the present settings, by section.
function sections(settings) {
  const found = Object.fromEntries([...TABLES, 'interfaces'].map((name) => [name, []]));
  for (const {section, key, line} of settings) found[section]?.push({key, line});
  return found;
}

function addSingle(script, basket) {
  for (const entry of basket.of('item')) script.add(`set ${entry.item} ${quoted(String(entry.after))}`, entry.id);
  for (const entry of basket.of('mode')) script.add(entry.line, entry.id);
}

// What is only added needs no more than its own lines.
function addAlone(script, kind, entries, list) {
  for (const entry of entries) {
    const at = list.findIndex((one) => one.entry === entry.id);
    script.add(LINE[kind](entry.row, kind === 'rules' ? at : undefined), entry.id);
  }
}

const LINE = {
  rules: (row, at) => ruleLine(row, at),
  routes: (row) => routeLine(false, row),
  routes6: (row) => routeLine(true, row),
  addresses: (row) => addressLine(row),
};

// The whole table: what nobody touched in the appliance's own words.
function addWhole(script, kind, list, lines) {
  const words = new Map(lines.map(({key, line}) => [key, line]));
  for (const one of list) {
    if (one.gone) continue;
    const own = one.was && !one.changed ? words.get(KEY[kind](one.was)) : null;
    script.add(own ?? LINE[kind](one.row), one.entry ?? null);
  }
}

const KEY = {
  rules: (row) => String(row.position),
  routes: (row) => row.key,
  routes6: (row) => row.destination,
  addresses: (row) => row.address,
};

const ROWS = {rules: RULES, routes: ROUTES[4], routes6: ROUTES[6], addresses: ADDRESSES};

async function draftOf(kind, basket) {
  const {facts} = await look(ROWS[kind].path);
  const rows = rowsOf(kind, facts);
  const fixed = kind === 'rules' ? 1 : 0;
  const {list, lost} = drafted(rows, basket.of(kind), fixed);
  return {list: fixed ? list.slice(0, -1) : list, lost};
}

async function addTables(script, basket, replace, lines) {
  for (const kind of TABLES) {
    const entries = basket.of(kind);
    if (!replace && !entries.length) continue;
    const {list, lost} = await draftOf(kind, basket);
    script.lost.push(...lost);
    if (replace) addWhole(script, kind, list, lines[kind]);
    else addAlone(script, kind, entries, list);
  }
}

// Replacing by nothing at all is refused: the mode as it is says nothing new.
function keepFromEmpty(script, lines) {
  const mode = lines.interfaces.find(({key}) => key === 'mode');
  if (script.lines.length === 0 && mode) script.add(mode.line);
}

export async function compose(basket) {
  const {facts, tag} = await look('/settings', {query: {state: 'running'}});
  const lines = sections(facts);
  const script = new Script();
  script.tag = tag;
  script.replace = basket.entries.some(takesAway);
  addSingle(script, basket);
  await addTables(script, basket, script.replace, lines);
  if (script.replace) keepFromEmpty(script, lines);
  script.requests = basket.entries.filter((entry) => entry.request).map((entry) => ({...entry.request, owner: entry.id}));
  return script;
}
