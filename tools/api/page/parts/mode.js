// SPDX-License-Identifier: Apache-2.0
// The operating mode: the present one, and another looked at before it is collected.
import {get, post} from './api.js';
import {basket} from './basket.js';
import {diffView, textsView} from './diff_view.js';
import {fill, h} from './dom.js';
import {field, text} from './field.js';
import {factsOf, MODES, PortsDrawing} from './ports.js';
import {session} from './session.js';

const CHOICES = ['OPMODE_DUAL_IF', 'OPMODE_SINGLIF_ONLY', 'OPMODE_SINGLIF_PBR'];
const CONFIRMED = 'mode';

export class ModeView {
  constructor(body) {
    this.every = 5;
    this.present = new PortsDrawing();
    this.coming = new PortsDrawing();
    this.system = h('div', {id: 'mode-system'});
    this.preview = h('div', {'aria-live': 'polite'});
    this.problem = h('p', {class: 'problem', id: 'mode-problem', role: 'alert'});
    this.form = h('form', {novalidate: true});
    fill(body, [h('h2', {}, 'At present'), this.present.element, h('section', {class: 'sheet', 'aria-label': 'Another mode'}, h('h2', {}, 'Another mode'), h('div', {class: 'sheet-body'}, this.form)),
                this.preview]);
    this.heard = () => this.mark();
    basket.addEventListener('change', this.heard);
  }

  close() {
    this.present.close();
    this.coming.close();
    basket.removeEventListener('change', this.heard);
  }

  async refresh() {
    const [mode, interfaces] = await Promise.all([get('/mode', {background: true}), get('/interfaces', {background: true})]);
    const first = !this.mode;
    Object.assign(this, {mode, interfaces});
    this.present.show(factsOf({interfaces, mode}));
    if (first) this.drawForm();
  }

  drawForm() {
    this.lan = text('lan', this.mode.lanVlan || '', {inputmode: 'numeric'});
    this.wan = text('wan', this.mode.wanVlan || '', {inputmode: 'numeric'});
    this.vlans = h('div', {class: 'row'}, field('LAN as VLAN', this.lan, {narrow: true, hint: '1 to 4094'}), field('WAN as VLAN', this.wan, {narrow: true, hint: '1 to 4094'}));
    const kinds = h('div', {class: 'modes', role: 'radiogroup', 'aria-label': 'Mode'}, CHOICES.map((name) => this.choice(name)));
    this.form.addEventListener('input', () => this.chosen());
    this.form.addEventListener('submit', (event) => { event.preventDefault(); this.look(); });
    fill(this.form, [kinds, this.vlans, this.problem, h('div', {class: 'ends'},
      h('button', {type: 'submit', class: 'plain', id: 'mode-look'}, 'Preview'),
      h('button', {type: 'button', class: 'push', id: 'mode-keep', onclick: () => this.collect()}, 'Collect'))]);
    for (const control of this.form.querySelectorAll('input, button')) control.disabled = !session.changes;
    this.chosen();
    this.mark();
  }

  choice(name) {
    const [title, words] = MODES[name];
    return h('label', {}, h('input', {type: 'radio', name: 'mode', value: name, checked: name === this.mode.mode}),
             h('span', {}, h('b', {}, title)), h('span', {class: 'soft'}, words));
  }

  get wanted() { return this.form.elements.mode?.value; }

  chosen() {
    this.vlans.hidden = this.wanted === 'OPMODE_DUAL_IF';
    fill(this.preview, []);
  }

  // Policy routing is one interface with the switch for it.
  get lines() {
    const single = `mode single ${this.lan.value.trim() || 0} ${this.wan.value.trim() || 0}`;
    return {OPMODE_DUAL_IF: ['mode double'], OPMODE_SINGLIF_ONLY: [single, 'mode pbr off'], OPMODE_SINGLIF_PBR: [single, 'mode pbr on']}[this.wanted];
  }

  wouldBe() {
    const double = this.wanted === 'OPMODE_DUAL_IF';
    return {mode: this.wanted, singleInterface: double ? 'off' : 'on', lanVlan: this.lan.value, wanVlan: this.wan.value};
  }

  async look() {
    this.problem.textContent = '';
    fill(this.preview, [h('p', {class: 'soft'}, 'The appliance tries it on a copy of itself …')]);
    try {
      const script = this.lines.map((line) => line + '\n').join('');
      const {changes} = await post('/apply', {script, check: true});
      this.showPreview(changes);
      await this.showSystem(script);
    } catch (refused) {
      fill(this.preview, []);
      this.problem.textContent = refused.complaints?.[0]?.message ?? refused.message;
    }
  }

  showPreview(changes) {
    this.coming.show(factsOf({interfaces: this.interfaces, mode: this.wouldBe()}));
    fill(this.preview, [h('section', {class: 'sheet', id: 'mode-preview', 'aria-label': 'Preview'}, h('h2', {}, 'How it would be'),
      h('div', {class: 'sheet-body'}, this.coming.element, h('h3', {}, 'Settings'), diffView(changes), this.system))]);
  }

  // What becomes of files and of the kernel, where the appliance can try it out.
  async showSystem(script) {
    fill(this.system, [h('p', {class: 'soft'}, 'Trying what becomes of files and of the kernel …')]);
    try {
      const {files, kernel, notes} = await post('/preview', {method: 'POST', path: '/apply', body: {script}});
      fill(this.system, [h('h3', {}, 'Kernel'), textsView(kernel, 'What would differ in the kernel'),
        h('h3', {}, 'Files'), textsView(files, 'What would differ in files'), notes.length ? h('p', {class: 'hint'}, notes.join(' ')) : null]);
    } catch (refused) {
      fill(this.system, [h('p', {class: 'hint'}, `Files and the kernel could not be tried: ${refused.message}`)]);
    }
  }

  collect() {
    for (const line of this.lines) {
      const key = line.split(' ')[1] === 'pbr' ? 'mode:pbr' : CONFIRMED;
      basket.put({id: key, kind: 'mode', line, words: key === CONFIRMED ? `Mode: ${MODES[this.wanted][0]} (${line})` : `Policy routing: ${line.split(' ')[2]}`});
    }
    if (this.wanted === 'OPMODE_DUAL_IF') basket.drop('mode:pbr');
  }

  mark() {
    const said = [CONFIRMED, 'mode:pbr'].map((id) => basket.problems.get(id)).find(Boolean);
    this.problem.textContent = said ?? '';
  }
}
