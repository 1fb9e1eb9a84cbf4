// SPDX-License-Identifier: Apache-2.0
// What is collected and not made yet. It outlives a reload, except for what has a password in it.
const PLACE = 'kestrove-basket';
const OWNER = 'kestrove-basket-user';

class Basket extends EventTarget {
  constructor() {
    super();
    this.entries = [];
    this.problems = new Map();
    this.numbers = 0;
    this.load();
  }

  load() {
    try {
      const kept = JSON.parse(sessionStorage.getItem(PLACE) ?? '[]');
      this.entries = kept;
      this.numbers = kept.reduce((most, entry) => Math.max(most, entry.number), 0);
    } catch { /* a basket of another version is none */ }
  }

  tell() {
    sessionStorage.setItem(PLACE, JSON.stringify(this.entries.filter((entry) => !entry.secret)));
    this.dispatchEvent(new Event('change'));
  }

  // An entry of the same id takes the place of the former. Its words are what people read.
  put(entry) {
    const at = this.entries.findIndex((one) => one.id === entry.id);
    entry.number = at === -1 ? ++this.numbers : this.entries[at].number;
    if (at === -1) this.entries.push(entry);
    else this.entries[at] = entry;
    this.problems.delete(entry.id);
    this.tell();
  }

  drop(id) {
    this.entries = this.entries.filter((entry) => entry.id !== id);
    this.problems.delete(id);
    this.tell();
  }

  // What somebody else collected is not his to apply.
  belongTo(user) {
    if ((sessionStorage.getItem(OWNER) ?? user) !== user) this.clear();
    sessionStorage.setItem(OWNER, user);
  }

  clear() {
    this.entries = [];
    this.problems.clear();
    this.tell();
  }

  // Those that the appliance complained of.
  complain(problems) {
    this.problems = problems;
    this.dispatchEvent(new Event('change'));
  }

  find(id) { return this.entries.find((entry) => entry.id === id); }
  of(kind) { return this.entries.filter((entry) => entry.kind === kind); }
  freshId(kind) { return `${kind}:${this.numbers + 1}-${Date.now()}`; }
  get size() { return this.entries.length; }
}

export const basket = new Basket();
