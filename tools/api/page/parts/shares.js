// SPDX-License-Identifier: Apache-2.0
// What the rules have of the WAN. The engine counts by the class that a rule gives: where a class has one rule, the
// share is that rule's; where it has more they are named beside it.
import {fill, h} from './dom.js';
import {counted, short} from './format.js';
import {describe} from './rules.js';

const HEADS = ['Class', 'Given by', 'Share', 'Percent', 'Now', 'Sessions', 'Dropped'];
const NAMED = 2;

function rulesOf(rules) {
  const named = rules.slice(0, NAMED).map((rule) => h('li', {}, `${rule.position}: ${describe(rule)}`));
  const more = rules.length - NAMED;
  return rules.length ? h('ul', {}, named, more > 0 ? h('li', {class: 'soft'}, `and ${counted(more, 'rule')} more`) : null)
    : h('span', {class: 'soft'}, 'no rule');
}

const figure = (words) => h('td', {class: 'number'}, words);

function line(row, number, rules, all) {
  const percent = all ? Math.round((100 * row.bytes) / all) : 0;
  const meter = h('meter', {min: 0, max: 100, value: percent, 'aria-label': `share of class ${number}`}, `${percent} %`);
  return h('tr', {}, h('th', {scope: 'row'}, String(number)), h('td', {class: 'given'}, rulesOf(rules)), h('td', {class: 'meter'}, meter),
           figure(`${percent} %`), figure(short(row.current, 'bit/s')), figure(String(row.sessions)), figure(String(row.drops)));
}

export class Shares {
  constructor() {
    this.element = h('section', {class: 'chart wide', 'aria-label': 'Share of the rules'});
  }

  show(qos, rules) {
    const classes = qos.filter((row) => /^WAN \d$/.test(row.class));
    const all = classes.reduce((sum, row) => sum + row.bytes, 0);
    const byClass = (number) => rules.filter((rule) => rule.priority === number);
    const lines = classes.map((row) => [row, Number(row.class.slice(4))]).map(([row, number]) => line(row, number, byClass(number), all));
    fill(this.element, [h('div', {class: 'chart-head'}, h('h2', {}, 'Share of the rules, by the class that they give'),
      h('p', {class: 'now'}, all ? `${short(all, 'B')} sent to the WAN` : 'nothing sent to the WAN yet')),
      h('table', {class: 'shares', role: 'table'}, h('caption', {class: 'unseen'}, 'Share of the rules'), h('thead', {}, h('tr', {}, HEADS.map((name, i) =>
        h('th', {scope: 'col', class: i > 2 ? 'number' : ['', 'given', 'meter'][i]}, name)))), h('tbody', {}, lines))]);
  }
}
