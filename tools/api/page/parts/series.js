// SPDX-License-Identifier: Apache-2.0
// What the counters did over time. The page keeps an hour of it, also over a reload.
const PLACE = 'kestrove-series';
const KEPT = 1800;

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

export class Series {
  constructor() {
    this.samples = [];
    try {
      const newest = Date.now() - KEPT * 2000;
      this.samples = JSON.parse(sessionStorage.getItem(PLACE) ?? '[]').filter((one) => one.at > newest);
    } catch { /* none are kept */ }
  }

  add(statistics, at = Date.now()) {
    const now = totals(statistics);
    const sample = {at, ratio: statistics.compressionRatio};
    const seconds = this.last ? (at - this.last.at) / 1000 : 0;
    for (const [name, value] of Object.entries(now)) sample[name] = this.last ? rate(value, this.last.now[name], seconds) : null;
    for (const [row, side] of [['WAN', 'wan'], ['LAN', 'lan']]) this.addQueue(sample, statistics, row, side);
    this.last = {at, now};
    this.samples.push(sample);
    if (this.samples.length > KEPT) this.samples.shift();
    this.keep();
    return sample;
  }

  addQueue(sample, statistics, name, side) {
    const row = statistics.qos.find((one) => one.class === name);
    if (!row) return;
    if (statistics.accumulatedIntervals !== this.reports) Object.assign(this, {reports: statistics.accumulatedIntervals, heard: sample.at});
    const reports = statistics.accumulatedIntervals > 0 && sample.at - this.heard < SILENT;
    sample[side + 'Sessions'] = row.sessions;
    sample[side + 'Out'] = best(sample[side + 'Out'], reports ? row.current : 0);
  }

  keep() {
    try {
      sessionStorage.setItem(PLACE, JSON.stringify(this.samples.slice(-600)));
    } catch { /* a full place keeps nothing */ }
  }
}

export const series = new Series();
