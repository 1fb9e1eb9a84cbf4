// SPDX-License-Identifier: Apache-2.0
// The tables whose rows are collected one by one: where they are asked for, and what a row is known by.
import {named} from './draft.js';
import {lengthOf} from './lines.js';

const ruleWords = (row) => {
  const {position, notes, ...rest} = row;
  return Object.values(rest).join(' ');
};

export const RULES = {path: '/rules', words: ruleWords};
export const ROUTES = {
  4: {path: '/routes', words: (row) => row.key, prepare: (row) => ({...row, key: `${row.destination}/${lengthOf(row.mask)}`})},
  6: {path: '/routes6', words: (row) => row.destination},
};
export const ADDRESSES = {
  path: '/addresses', words: (row) => row.address,
  takes: (row) => row.status !== "bridge's own",
};

const KINDS = {rules: RULES, routes: ROUTES[4], routes6: ROUTES[6], addresses: ADDRESSES};

export function rowsOf(kind, facts) {
  const {words, prepare = (row) => row, takes = () => true} = KINDS[kind];
  return named(facts.filter(takes).map(prepare), words);
}
