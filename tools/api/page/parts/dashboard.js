// SPDX-License-Identifier: Apache-2.0
// What the appliance does now and did in the last hour.
import {get} from './api.js';
import {Chart} from './chart.js';
import {fill, h} from './dom.js';
import {short, span} from './format.js';
import {factsOf, linkOf, PortsDrawing} from './ports.js';
import {series} from './series.js';
import {Shares} from './shares.js';
import {Table} from './tables.js';

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
    this.every = 10;
    this.ports = new PortsDrawing();
    this.facts = h('dl', {class: 'facts'});
    this.charts = CHARTS.map((row) => new Chart(...row));
    this.shares = new Shares();
    this.rules = new Table('/rules');
    this.links = {};
    fill(body, [this.ports.element, this.facts, h('div', {class: 'charts'}, this.charts.map((chart) => chart.element), this.shares.element)]);
    this.heard = () => this.draw();
    series.addEventListener('sample', this.heard);
  }

  close() {
    series.removeEventListener('sample', this.heard);
    this.ports.close();
    for (const chart of this.charts) chart.close();
  }

  async refresh() {
    await this.lookRound({background: true});
    this.draw();
  }

  draw() {
    for (const chart of this.charts) chart.show(series.samples);
    const {statistics} = series;
    if (!statistics || !this.around) return;
    this.ports.show(factsOf({...this.around, links: this.links, engine: engineWords(this.around.engine)}), series.latest);
    this.showFacts(statistics);
    this.shares.show(statistics.qos, this.rules.rows);
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
}

function savedOf(statistics) {
  const saved = statistics.totalUncompressedDataSize - statistics.totalCompressedDataSize;
  return saved > 0 ? `${short(saved, 'B')}` : '0 B';
}
