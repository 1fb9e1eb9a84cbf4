// SPDX-License-Identifier: Apache-2.0
// The basket looked through: each change, what it would make different, and how it is applied.
import {say, warn} from './announce.js';
import {basket} from './basket.js';
import {diffView} from './diff_view.js';
import {openDialog} from './dialog.js';
import {fill, h} from './dom.js';
import {field, tellProblem, text} from './field.js';
import {counted} from './format.js';
import {make, tryOut} from './making.js';
import {redraw} from './redraw.js';

class Review {
  constructor() {
    this.list = h('ul', {class: 'collected'});
    this.words = h('p', {class: 'problem', role: 'alert', id: 'review-problem'});
    this.diff = h('div', {'aria-live': 'polite'});
    this.minutes = text('minutes', '', {inputmode: 'decimal', id: 'confirm-minutes', placeholder: 'none'});
    this.comment = text('comment', '', {maxlength: 200, id: 'confirm-comment'});
    this.apply = h('button', {type: 'button', class: 'push', id: 'review-apply', disabled: true, onclick: () => this.make()}, 'Apply');
    this.dialog = openDialog('Review and apply', this.content(), {kind: 'review'});
    this.heard = () => this.draw();
    basket.addEventListener('change', this.heard);
    this.dialog.addEventListener('close', () => basket.removeEventListener('change', this.heard));
    this.draw();
    this.tryOut();
  }

  content() {
    return [this.list, h('h3', {}, 'What would be different'), this.diff, this.words,
      h('div', {class: 'settle'},
        field('Comment for the history', this.comment),
        field('Take back unless confirmed', this.minutes, {hint: 'minutes; empty: stays at once'})),
      h('div', {class: 'ends'}, h('button', {type: 'button', class: 'plain', onclick: () => this.dialog.close()}, 'Not yet'), this.apply)];
  }

  draw() {
    redraw(this.list, basket.entries.map((entry) => this.entry(entry)));
  }

  entry(entry) {
    const problem = basket.problems.get(entry.id);
    return h('li', {class: problem ? 'wrong' : '', 'data-entry': entry.id}, h('span', {class: 'what'}, entry.words),
      h('button', {type: 'button', class: 'plain small', 'aria-label': 'Drop: ' + entry.words, onclick: () => this.drop(entry)}, 'Drop'),
      problem ? h('p', {class: 'problem'}, problem) : null);
  }

  drop(entry) {
    basket.drop(entry.id);
    if (!basket.size) this.dialog.close();
    else this.tryOut();
  }

  async tryOut() {
    this.apply.disabled = true;
    fill(this.diff, [h('p', {class: 'soft'}, 'The appliance tries it on a copy of itself …')]);
    try {
      this.show(await tryOut());
    } catch (refused) {
      this.tell(refused.message);
      fill(this.diff, []);
    }
  }

  show(outcome) {
    this.script = outcome.script;
    basket.complain(outcome.problems);
    const wrong = outcome.problems.size > 0 || outcome.general;
    this.tell(outcome.general || (wrong ? `${counted(outcome.problems.size, 'change')} refused: see above.` : ''));
    fill(this.diff, wrong ? [] : [diffView(outcome.changes), this.others(outcome)]);
    this.apply.disabled = Boolean(wrong);
  }

  others(outcome) {
    if (!outcome.requests.length) return null;
    return h('p', {class: 'hint'}, `${counted(outcome.requests.length, 'change')} of users or of the bridge's own addresses ${outcome.requests.length === 1 ? 'is' : 'are'} made behind these, one by one.`);
  }

  tell(words) {
    this.words.textContent = words;
    if (words) warn(words);
  }

  async make() {
    this.apply.disabled = true;
    this.tell('');
    try {
      const words = await make(this.script, {minutes: this.minutes.value.trim(), comment: this.comment.value.trim()});
      this.finish(words);
    } catch (refused) {
      await this.refused(refused);
    }
    dispatchEvent(new Event('kestrove-made'));
  }

  async refused(refused) {
    if (refused.owner) await this.shorten();
    if (refused.problems) basket.complain(refused.problems);
    const changed = refused.status === 412;
    const ofTime = refused.message.startsWith('confirm:');
    tellProblem(this.minutes, ofTime ? refused.message : '');
    if (ofTime) this.minutes.focus();
    this.tell(changed ? 'Somebody else changed the settings meanwhile. Look again at what would be different, then apply.' : refused.general || refused.message);
    if (changed) await this.again();
    else this.apply.disabled = false;
  }

  // What came before the request that was refused is made: the rest is another script.
  async shorten() {
    try {
      this.script = (await tryOut()).script;
    } catch { /* applying the former one again is refused as changed meanwhile */ }
  }

  async again() {
    const words = this.words.textContent;
    await this.tryOut();
    if (!this.words.textContent) this.tell(words);
  }

  finish(words) {
    this.dialog.close();
    if (words) openDialog('Applied in part', [h('p', {class: 'note wrong'}, words), closer()]);
    else say('Applied.');
  }
}

const closer = () => h('div', {class: 'ends'}, h('button', {type: 'button', class: 'plain', onclick: (event) => event.target.closest('dialog').close()}, 'Close'));

export const review = () => new Review();
