// SPDX-License-Identifier: Apache-2.0
// The event log, live: what was logged before, then what comes. Server-sent events are read as they are, since what
// comes is whole only behind their first line, which an EventSource does not show.
import {follow, get} from './api.js';

const KEPT = 2000;
const AGAIN = 2000;
const key = (event) => [event.time, event.type, event.source, event.user, event.description].join('\n');

export class EventStream {
  // call(event): something came. state(words): the way there.
  constructor(call, state) {
    Object.assign(this, {call, state, events: [], ended: new AbortController()});
  }

  start() {
    this.run();
    return this.load();
  }

  // Until it is stopped; after an interruption again.
  async run() {
    while (!this.ended.signal.aborted) {
      try {
        await follow('/events/stream', this.ended.signal, (line) => this.hear(line));
      } catch { /* tried again */ }
      if (this.ended.signal.aborted) return;
      this.state('broken');
      await new Promise((resolve) => { setTimeout(resolve, AGAIN); });
    }
  }

  async hear(line) {
    if (line.startsWith('retry:')) {
      await this.load();
      this.state('live');
    }
    if (line.startsWith('data:')) this.take(JSON.parse(line.slice(5)));
  }

  async load() {
    const {events} = await get('/events', {background: true});
    const known = new Set(events.map(key));
    const later = this.events.filter((event) => event.fresh && !known.has(key(event)));
    this.events = [...events, ...later].slice(-KEPT);
    this.call();
  }

  take(event) {
    if (!event.type || this.events.some((one) => key(one) === key(event))) return;
    this.events.push({...event, fresh: true});
    if (this.events.length > KEPT) this.events.shift();
    this.call(event);
  }

  stop() { this.ended.abort(); }
}
