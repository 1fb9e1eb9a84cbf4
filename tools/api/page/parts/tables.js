// SPDX-License-Identifier: Apache-2.0
// A table of the appliance with the mark of its state, asked for again only where it has changed.
import {look} from './api.js';
import {released} from './pointer.js';

export class Table {
  constructor(path) {
    this.path = path;
    this.rows = [];
    this.tag = null;
  }

  // Whether there is something new.
  async load(background = false) {
    const reply = await look(this.path, {background, ifNoneMatch: this.tag});
    if (reply.status === 304) return false;
    await released();
    this.rows = reply.facts;
    this.tag = reply.tag;
    return true;
  }
}
