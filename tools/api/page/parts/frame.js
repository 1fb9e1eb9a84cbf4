// SPDX-License-Identifier: Apache-2.0
// The frame around the views: subjects at the side, one view at a time, asked again while it is looked at.
import {say} from './announce.js';
import {look} from './api.js';
import {byId, fill, h} from './dom.js';
import {session} from './session.js';
import {VIEWS} from './views.js';

const AGAIN = 1000;

export class Frame {
  constructor(main) {
    this.main = main;
    this.view = null;
    addEventListener('kestrove-made', () => this.made());
    addEventListener('hashchange', () => this.shown && this.show());
    this.measure(byId('foot'));
    byId('menu').addEventListener('click', () => this.menu(byId('menu').getAttribute('aria-expanded') !== 'true'));
  }

  // What lies under the foot is scrolled to above it.
  measure(foot) {
    const tell = () => document.documentElement.style.setProperty('--taken', `${foot.offsetHeight}px`);
    new ResizeObserver(tell).observe(foot);
  }

  open() {
    this.shown = true;
    for (const id of ['top', 'nav']) byId(id).hidden = false;
    byId('user-name').textContent = session.user + (session.changes ? '' : ' (may only read)');
    fill(byId('nav'), [h('ul', {}, VIEWS.map((view) => this.entry(view)))]);
    this.name();
    this.show();
    this.timer = setInterval(() => this.again(), AGAIN);
  }

  close() {
    this.shown = false;
    clearInterval(this.timer);
    this.leaveView();
    for (const id of ['top', 'nav', 'tray', 'bar']) byId(id).hidden = true;
  }

  entry(view) {
    return h('li', {}, view.apart ? h('div', {class: 'between'}) : null,
             h('a', {href: '#' + view.name, 'data-view': view.name}, view.title));
  }

  menu(open) {
    byId('menu').setAttribute('aria-expanded', String(open));
    byId('nav').classList.toggle('open', open);
  }

  async name() {
    try {
      const {facts} = await look('/items/sysName');
      if (facts.value) byId('unit-name').textContent = facts.value;
    } catch { /* the name is no reason to show nothing */ }
  }

  leaveView() {
    this.view?.close?.();
    this.view = null;
  }

  show() {
    const wanted = location.hash.slice(1);
    if (wanted === 'main') return;
    const row = VIEWS.find((view) => view.name === wanted) ?? VIEWS[0];
    this.leaveView();
    this.menu(false);
    for (const link of byId('nav').querySelectorAll('a')) this.mark(link, row);
    const heading = h('h1', {tabindex: '-1'}, row.title);
    const body = h('div', {class: 'view', 'data-view': row.name});
    const tools = h('div', {class: 'tools'});
    fill(this.main, [h('div', {class: 'page-head'}, heading, tools), body]);
    document.title = `${row.title} · ${byId('unit-name').textContent}`;
    this.start(row, body, tools, heading);
  }

  mark(link, row) {
    if (link.dataset.view === row.name) link.setAttribute('aria-current', 'page');
    else link.removeAttribute('aria-current');
  }

  start(row, body, tools, heading) {
    if (this.started) heading.focus({preventScroll: true});
    this.started = true;
    scrollTo(0, 0);
    this.view = new row.View(body, tools);
    this.asked = Date.now();
    this.refresh(false);
  }

  again() {
    if (document.hidden || !this.view || this.busy) return;
    if (Date.now() - this.asked < this.view.every * 1000) return;
    this.refresh(true);
  }

  // What was made shows at once, and where it came during a look, at the next second.
  made() {
    this.asked = 0;
    this.again();
  }

  async refresh(background) {
    const view = this.view;
    this.busy = true;
    this.asked = Date.now();
    try {
      await view.refresh(background);
      view.trouble?.remove();
      view.trouble = null;
    } catch (error) {
      if (view === this.view) this.tell(view, error);
    } finally {
      this.busy = false;
    }
  }

  tell(view, error) {
    if (!view.trouble) {
      view.trouble = h('p', {class: 'note wrong'});
      this.main.querySelector('.page-head')?.after(view.trouble);
      say(error.message);
    }
    view.trouble.textContent = error.message;
  }
}
