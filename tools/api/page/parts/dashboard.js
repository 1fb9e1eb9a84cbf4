// SPDX-License-Identifier: Apache-2.0
// What the appliance does now and did in the last hour.
import {get} from './api.js';
import {Chart} from './chart.js';
import {fill, h} from './dom.js';
import {short, span} from './format.js';
import {factsOf, linkOf, PortsDrawing} from './ports.js';
import {series} from './series.js';
import {Table} from './tables.js';

const SELDOM = 10;
const PORTS = ['lan', 'wan', 'management'];

const CHARTS = [
  ['Rates', [{name: 'lanOut', label: 'LAN out', colour: '--lan'}, {name: 'lanIn', label: 'LAN in', colour: '--lan', dashed: true},
             {name: 'wanOut', label: 'WAN out', colour: '--wan'}, {name: 'wanIn', label: 'WAN in', colour: '--wan', dashed: true}],
   {unit: 'bit/s', least: 1000}],
  ['Sessions', [{name: 'lanSessions', label: 'LAN', colour: '--lan'}, {name: 'wanSessions', label: 'WAN', colour: '--wan'}], {least: 10}],
  ['Size behind compression', [{name: 'ratio', label: 'what is left', colour: '--deep'}], {unit: '%', most: 100}],
  ['Dropped packets', [{name: 'lanDrops', label: 'LAN', colour: '--lan'}, {name: 'wanDrops', label: 'WAN', colour: '--wan'}],
   {unit: '/s', least: 1}],
];

function engineWords(engine) {
  if (engine.enabled !== 'on') return 'engine switched off';
  return {alive: 'engine running', dead: 'engine died', none: 'engine not running'}[engine.process] ?? 'engine ' + engine.process;
}

export class DashboardView {
  constructor(body) {
    this.every = 2;
    this.beat = 0;
    this.ports = new PortsDrawing();
    this.facts = h('dl', {class: 'facts'});
    this.charts = CHARTS.map((row) => new Chart(...row));
    this.shares = h('section', {class: 'chart wide', 'aria-label': 'Share of the classes'});
    this.rules = new Table('/rules');
    this.links = {};
    fill(body, [this.ports.element, this.facts, h('div', {class: 'charts'}, this.charts.map((chart) => chart.element), this.shares)]);
  }

  close() {
    this.ports.close();
    for (const chart of this.charts) chart.close();
  }

  async refresh() {
    const background = {background: true};
    const statistics = await get('/statistics', background);
    if (!this.around || ++this.beat % SELDOM === 0) await this.lookRound(background);
    const sample = series.add(statistics);
    this.ports.show(factsOf({...this.around, links: this.links, engine: engineWords(this.around.engine)}), sample);
    for (const chart of this.charts) chart.show(series.samples);
    this.showFacts(statistics);
    this.showShares(statistics.qos);
  }

  async lookRound(background) {
    const [interfaces, mode, engine] = await Promise.all([get('/interfaces', background), get('/mode', background), get('/engine', background)]);
    this.around = {interfaces, mode, engine};
    await this.rules.load(true);
    PORTS.forEach((port) => this.lookAtLink(port));
  }

  async lookAtLink(port) {
    try {
      this.links[port] = linkOf(await get(`/interfaces/${port}/link`, {background: true}));
    } catch {
      this.links[port] = '';
    }
  }

  showFacts(statistics) {
    const {engine} = this.around;
    const pending = engine.pendingChanges.length ? engine.pendingChanges.join(', ') : 'none';
    const rows = [['Up', span(statistics.uptimeHundredths / 100)], ['Engine', engineWords(engine).replace('engine ', ''), engine.process !== 'alive'],
      ['Engine restarts', engine.restarts], ['Changes it has not fetched', pending],
      ['Sessions refused', statistics.totalTcpSessionRequestsFailed], ['Sessions timed out', statistics.totalTcpSessionsTimedOut],
      ['Bad checksums', statistics.totalTcpSegmentsBadChecksum], ['Saved by compression', savedOf(statistics)]];
    fill(this.facts, rows.map(([name, value, bad]) => h('div', {}, h('dt', {}, name), h('dd', {class: bad ? 'bad' : ''}, String(value)))));
  }

  showShares(qos) {
    const classes = qos.filter((row) => /^WAN \d$/.test(row.class));
    const all = classes.reduce((sum, row) => sum + row.bytes, 0);
    const rows = classes.map((row) => this.share(row, all));
    fill(this.shares, [h('div', {class: 'chart-head'}, h('h2', {}, 'Share of the rules, by the class that they give'),
      h('p', {class: 'now'}, all ? `${short(all, 'B')} sent to the WAN` : 'nothing sent to the WAN yet')),
      h('table', {class: 'shares'}, h('thead', {}, h('tr', {}, ['Class', 'Rules', 'Share', '', 'Now', 'Sessions', 'Dropped'].map((name, i) =>
        h('th', {scope: 'col', class: i === 1 || i > 2 ? 'number' : ''}, name)))), h('tbody', {}, rows))]);
  }

  share(row, all) {
    const number = Number(row.class.slice(4));
    const rules = this.rules.rows.filter((rule) => rule.priority === number).length;
    const percent = all ? Math.round((100 * row.bytes) / all) : 0;
    return h('tr', {}, h('th', {scope: 'row'}, String(number)), h('td', {class: 'number'}, String(rules)),
      h('td', {class: 'meter'}, h('meter', {min: 0, max: 100, value: percent, 'aria-label': `share of class ${number}`}, `${percent} %`)),
      h('td', {class: 'number'}, `${percent} %`), h('td', {class: 'number'}, short(row.current, 'bit/s')),
      h('td', {class: 'number'}, String(row.sessions)), h('td', {class: 'number'}, String(row.drops)));
  }
}

function savedOf(statistics) {
  const saved = statistics.totalUncompressedDataSize - statistics.totalCompressedDataSize;
  return saved > 0 ? `${short(saved, 'B')}` : '0 B';
}
