// SPDX-License-Identifier: Apache-2.0
// What the counters did over time, whatever is looked at. The page keeps an hour of it, also over a reload.
import {get} from './api.js';

const PLACE = 'kestrove-series';
const EVERY = 2000;
const KEPT = 3600000 / EVERY;
const WRITTEN = 15; // samples

const zero = {bytesSent: 0, bytesReceived: 0, dropsSent: 0, dropsReceived: 0};
const portOf = (statistics, name) => statistics.interfaces.find((port) => port.interface === name) ?? zero;

// Counters that went backwards were reset: no rate until they are counted again.
const rate = (now, before, seconds) => (now < before || seconds <= 0 ? null : (now - before) / seconds);

function totals(statistics) {
  const lan = portOf(statistics, 'LAN');
  const wan = portOf(statistics, 'WAN');
  return {
    lanIn: lan.bytesReceived * 8, lanOut: lan.bytesSent * 8, wanIn: wan.bytesReceived * 8, wanOut: wan.bytesSent * 8,
    lanDrops: lan.dropsSent + lan.dropsReceived, wanDrops: wan.dropsSent + wan.dropsReceived,
  };
}

// The engine's own rate of a queue, while it reports.
const SILENT = 90000;
const best = (one, other) => (one === null && !other ? one : Math.max(one ?? 0, other));

// "sample" is what it dispatches.
export class Series extends EventTarget {
  constructor() {
    super();
    this.samples = [];
    this.moved = {};
    this.written = 0;
    addEventListener('pagehide', () => this.keep());
    try {
      const newest = Date.now() - KEPT * EVERY;
      this.samples = JSON.parse(sessionStorage.getItem(PLACE) ?? '[]').filter((one) => one.at > newest);
    } catch { /* none are kept */ }
  }

  start() {
    this.timer = setInterval(() => this.ask(), EVERY);
    return this.ask();
  }

  stop() {
    clearInterval(this.timer);
    this.moved = {};
  }

  // A reply that takes long is no reason for a second question.
  async ask() {
    if (this.asking) return;
    this.asking = true;
    try {
      this.statistics = await get('/statistics', {background: true});
      this.add(this.statistics);
      this.dispatchEvent(new Event('sample'));
    } catch { /* a gap */ } finally {
      this.asking = false;
    }
  }

  get latest() { return this.samples.at(-1); }

  add(statistics, at = Date.now()) {
    if (statistics.accumulatedIntervals !== this.reports) Object.assign(this, {reports: statistics.accumulatedIntervals, heard: at});
    const reporting = statistics.accumulatedIntervals > 0 && at - this.heard < SILENT;
    const sample = {at, ratio: statistics.compressionRatio};
    for (const [name, value] of Object.entries(totals(statistics))) sample[name] = this.rateOf(name, value, at, reporting);
    for (const [row, side] of [['WAN', 'wan'], ['LAN', 'lan']]) this.addQueue(sample, statistics, row, side, reporting);
    this.samples.push(sample);
    if (this.samples.length > KEPT) this.samples.shift();
    if (++this.written % WRITTEN === 1) this.keep();
    return sample;
  }

  // While the engine reports, a counter moves once a report: until the next it keeps its rate. What moves first may have
  // been counted since long before it was looked at.
  rateOf(name, value, at, reporting) {
    const last = this.moved[name];
    if (reporting && last?.value === value && last.reports === this.reports) return last.rate;
    const now = {value, reports: this.reports, at: last || !reporting ? at : null, rate: null};
    if (last?.at) now.rate = rate(value, last.value, (at - last.at) / 1000);
    this.moved[name] = now;
    return now.rate;
  }

  addQueue(sample, statistics, name, side, reporting) {
    const row = statistics.qos.find((one) => one.class === name);
    if (!row) return;
    sample[side + 'Sessions'] = row.sessions;
    sample[side + 'Out'] = best(sample[side + 'Out'], reporting ? row.current : 0);
  }

  keep() {
    try {
      sessionStorage.setItem(PLACE, JSON.stringify(this.samples));
    } catch { /* a full place keeps nothing */ }
  }
}

export const series = new Series();
