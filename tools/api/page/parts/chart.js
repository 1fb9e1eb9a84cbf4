// SPDX-License-Identifier: Apache-2.0
// Lines over time on a canvas: a scale of round numbers, gaps where nothing is known, a reading under the pointer or
// the arrow keys.
import {clock, short} from './format.js';
import {h} from './dom.js';

const LEFT = 58;
const RIGHT = 10;
const TOP = 8;
const FOOT = 20;
const WINDOWS = [60, 300, 900, 3600];

// The least of 1, 2, 5 times a power of ten that is enough.
export function roundUp(number) {
  if (number <= 0) return 1;
  const power = 10 ** Math.floor(Math.log10(number));
  return [1, 2, 5, 10].map((step) => step * power).find((size) => size >= number * 0.999);
}

const colourOf = (element, name) => getComputedStyle(element).getPropertyValue(name).trim();

export class Chart {
  // lines: {name, label, colour: '--lan', dashed}
  constructor(title, lines, {unit = '', least = 1, most = null} = {}) {
    Object.assign(this, {title, lines, unit, least, most, samples: [], pointed: null});
    this.canvas = h('canvas', {role: 'img', tabindex: '0', 'aria-label': title});
    this.now = h('p', {class: 'now'});
    this.element = h('figure', {class: 'chart'},
      h('figcaption', {class: 'chart-head'}, h('h2', {}, title), this.now), this.legend(), this.canvas);
    this.listen();
  }

  legend() {
    this.values = this.lines.map(() => h('b', {}));
    return h('ul', {class: 'legend'}, this.lines.map((line, i) =>
      h('li', {}, h('i', {class: `key${line.colour.slice(1)} ${line.dashed ? 'dashed' : ''}`}), line.label, this.values[i])));
  }

  listen() {
    this.canvas.addEventListener('pointermove', (event) => this.point(this.timeAt(event.offsetX)));
    this.canvas.addEventListener('pointerleave', () => this.point(null));
    this.canvas.addEventListener('blur', () => this.point(null));
    this.canvas.addEventListener('keydown', (event) => this.key(event));
    this.watch = new ResizeObserver(() => this.draw());
    this.watch.observe(this.canvas);
    this.scheme = matchMedia('(prefers-color-scheme: dark)');
    this.redraw = () => this.draw();
    this.scheme.addEventListener('change', this.redraw);
  }

  close() {
    this.watch.disconnect();
    this.scheme.removeEventListener('change', this.redraw);
  }

  show(samples) {
    this.samples = samples;
    this.draw();
  }

  point(time) {
    this.pointed = time;
    this.draw();
  }

  key(event) {
    const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
    if (!step || !this.samples.length) return;
    event.preventDefault();
    const at = this.pointed === null ? this.samples.length - 1 : this.nearest(this.pointed) + step;
    this.point(this.samples[Math.min(Math.max(at, 0), this.samples.length - 1)].at);
  }

  nearest(time) {
    let best = 0;
    this.samples.forEach((one, i) => {
      if (Math.abs(one.at - time) < Math.abs(this.samples[best].at - time)) best = i;
    });
    return best;
  }

  measure() {
    const {clientWidth: width, clientHeight: height} = this.canvas;
    const dots = devicePixelRatio || 1;
    this.canvas.width = Math.round(width * dots);
    this.canvas.height = Math.round(height * dots);
    const end = this.samples.at(-1)?.at ?? Date.now();
    const known = this.samples.length ? (end - this.samples[0].at) / 1000 : 0;
    const seconds = WINDOWS.find((one) => one >= known) ?? WINDOWS.at(-1);
    Object.assign(this, {width, height, dots, end, begin: end - seconds * 1000, top: this.highest(end - seconds * 1000)});
  }

  highest(since) {
    if (this.most) return this.most;
    const seen = this.samples.filter((one) => one.at >= since);
    return roundUp(Math.max(this.least, ...seen.flatMap((one) => this.lines.map((line) => one[line.name] ?? 0))));
  }

  x(at) { return LEFT + ((at - this.begin) / (this.end - this.begin)) * (this.width - LEFT - RIGHT); }
  y(value) { return TOP + (1 - value / this.top) * (this.height - TOP - FOOT); }
  timeAt(x) { return this.begin + ((x - LEFT) / (this.width - LEFT - RIGHT)) * (this.end - this.begin); }

  draw() {
    this.measure();
    if (!this.width) return;
    const pen = this.canvas.getContext('2d');
    pen.setTransform(this.dots, 0, 0, this.dots, 0, 0);
    pen.clearRect(0, 0, this.width, this.height);
    pen.font = `12px ${getComputedStyle(this.canvas).fontFamily}`;
    this.drawScale(pen);
    for (const line of this.lines) this.drawLine(pen, line);
    this.drawPointed(pen);
    this.tell();
  }

  drawScale(pen) {
    pen.lineWidth = 1;
    pen.textBaseline = 'middle';
    for (const share of [0, 0.5, 1]) {
      const y = Math.round(this.y(this.top * share)) + 0.5;
      this.stroke(pen, '--line', () => { pen.moveTo(LEFT, y); pen.lineTo(this.width - RIGHT, y); });
      pen.fillStyle = colourOf(this.canvas, '--soft');
      pen.textAlign = 'right';
      pen.fillText(short(this.top * share, share === 1 ? this.unit.replace('bit/s', 'b/s') : ''), LEFT - 6, y);
    }
    this.drawTimes(pen);
  }

  drawTimes(pen) {
    const y = this.height - FOOT / 2 + 2;
    const minutes = (this.end - this.begin) / 60000;
    pen.textAlign = 'left';
    pen.fillText(`${minutes} min ago`, LEFT, y);
    pen.textAlign = 'right';
    pen.fillText(clock(new Date(this.end)), this.width - RIGHT, y);
  }

  stroke(pen, colour, path) {
    pen.strokeStyle = colourOf(this.canvas, colour);
    pen.beginPath();
    path();
    pen.stroke();
  }

  drawLine(pen, {name, colour, dashed}) {
    pen.lineWidth = 1.75;
    pen.lineJoin = 'round';
    pen.setLineDash(dashed ? [4, 3] : []);
    let drawing = false;
    this.stroke(pen, colour, () => {
      for (const one of this.samples) {
        const known = one[name] !== null && one[name] !== undefined && one.at >= this.begin;
        if (known) pen[drawing ? 'lineTo' : 'moveTo'](this.x(one.at), this.y(Math.min(one[name], this.top)));
        drawing = known;
      }
    });
    pen.setLineDash([]);
  }

  drawPointed(pen) {
    if (this.pointed === null || !this.samples.length) return;
    const x = Math.round(this.x(this.samples[this.nearest(this.pointed)].at)) + 0.5;
    pen.lineWidth = 1;
    this.stroke(pen, '--edge', () => { pen.moveTo(x, TOP); pen.lineTo(x, this.height - FOOT); });
  }

  reading(one, line) {
    const value = one?.[line.name];
    return value === null || value === undefined ? '' : short(value, this.unit);
  }

  // The figures beside the drawing, and in words for whoever does not see it.
  tell() {
    const one = this.pointed === null ? this.samples.at(-1) : this.samples[this.nearest(this.pointed)];
    const figures = this.lines.map((line) => this.reading(one, line));
    figures.forEach((figure, i) => { this.values[i].textContent = figure; });
    this.now.textContent = !figures.some(Boolean) ? 'nothing counted yet' : this.pointed === null ? '' : clock(new Date(one.at));
    const words = this.lines.map((line, i) => (figures[i] ? `${line.label} ${figures[i]}` : '')).filter(Boolean).join(', ');
    this.canvas.setAttribute('aria-label', `${this.title}. ${this.now.textContent} ${words}`);
  }
}
