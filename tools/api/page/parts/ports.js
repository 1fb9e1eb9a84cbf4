// SPDX-License-Identifier: Apache-2.0
// The way through the appliance as a drawing: the ports with their links, the mode between them, what passes now.
import {h, svg} from './dom.js';
import {short} from './format.js';

const WIDE = {view: '0 0 920 190', lan: [60, 58], wan: [800, 58], box: [330, 30, 260, 84], management: [460, 152],
              lanText: [60, 122, 'start'], wanText: [860, 122, 'end'], lanRate: [225, 46, 'middle'], wanRate: [695, 46, 'middle'],
              lanCable: 'M120 72H330', wanCable: 'M590 72H800', managementCable: 'M460 114V140', managementText: [490, 160, 'start']};
const SLIM = {view: '0 0 340 388', lan: [20, 20], wan: [20, 262], box: [90, 124, 236, 84], management: [286, 336],
              lanText: [94, 34, 'start'], wanText: [94, 276, 'start'], lanRate: [94, 94, 'start'], wanRate: [94, 234, 'start'],
              lanCable: 'M50 48V162H90', wanCable: 'M50 262V168H90', managementCable: 'M286 208V330', managementText: [326, 360, 'end']};

export const MODES = {
  OPMODE_DUAL_IF: ['Two interfaces', 'bridged, LAN to WAN'],
  OPMODE_SINGLIF_ONLY: ['Single interface', 'LAN and WAN as two VLANs'],
  OPMODE_SINGLIF_PBR: ['Policy routing', 'on the single interface'],
};

// "up", "down" or "" from the words of the link tool.
export function linkOf(words) {
  const text = Object.values(words ?? {}).join(' ').toLowerCase();
  if (/no link|down/.test(text)) return 'down';
  return /link ok|up|negotiated|fd\b|base/.test(text) ? 'up' : '';
}

function jack([x, y], side, state, shared) {
  return svg('g', {}, svg('path', {class: `jack ${side} ${shared ? 'shared' : ''}`, d: `M${x} ${y}h60v28h-16v8h-28v-8h-16z`}),
             svg('circle', {class: `led ${state}`, cx: x + 51, cy: y + 8, r: 4}));
}

function words([x, y, anchor], lines) {
  return lines.map(([text, kind], i) => svg('text', {x, y: y + i * 17, 'text-anchor': anchor, class: kind ?? ''}, text));
}

// On the single interface both sides are VLANs of the same port.
function nameOf(facts, side, label) {
  const vlan = facts.mode[side + 'Vlan'];
  return facts.mode.singleInterface === 'on' ? `${label} · VLAN ${vlan}` : `${label} · ${facts[side].inUse}`;
}

function portLines(facts, label, side) {
  const port = facts[side];
  const address = port.address && port.address !== '0.0.0.0' ? port.address : 'no address';
  return [[nameOf(facts, side, label), `name ${side}`], [address, ''], [port.hardware ?? '', 'faint']];
}

function rates(place, series, [out, into], side) {
  return !series ? [] : words(place, [[`${short(series[out] ?? 0, 'bit/s')} out`, `rate ${side}`],
                       [`${short(series[into] ?? 0, 'bit/s')} in`, 'faint']]);
}

function box([x, y, width, height], facts) {
  const [name, detail] = MODES[facts.mode.mode] ?? [facts.mode.mode, ''];
  const vlans = facts.mode.singleInterface === 'on' ? `VLAN ${facts.mode.lanVlan} and ${facts.mode.wanVlan}` : detail;
  const middle = x + width / 2;
  return [svg('rect', {class: 'box', x, y, width, height, rx: 4}),
          ...words([middle, y + 28, 'middle'], [[name, 'name'], [vlans, ''], [facts.engine, 'faint']])];
}

function spoken(facts, sample) {
  const [name] = MODES[facts.mode.mode] ?? [facts.mode.mode];
  const link = (side) => ({up: 'link up', down: 'no link'})[facts.links[side]] ?? 'link not known';
  return `Mode: ${name}. LAN on ${facts.lan.inUse}, ${link('lan')}, ${short(sample?.lanOut ?? 0, 'bit/s')} out. ` +
    `WAN on ${facts.wan.inUse}, ${link('wan')}, ${short(sample?.wanOut ?? 0, 'bit/s')} out. ${facts.engine}.`;
}

function drawing(at, facts, sample) {
  const {links} = facts;
  return svg('svg', {viewBox: at.view, role: 'img', 'aria-label': spoken(facts, sample)},
    svg('path', {class: 'cable lan', d: at.lanCable}), svg('path', {class: 'cable wan', d: at.wanCable}),
    svg('path', {class: 'through', d: at.managementCable}),
    jack(at.lan, 'lan', links.lan, facts.mode.singleInterface === 'on'), jack(at.wan, 'wan', links.wan), box(at.box, facts),
    svg('circle', {class: `led ${links.management}`, cx: at.management[0], cy: at.management[1], r: 5}),
    words(at.lanText, portLines(facts, 'LAN', 'lan')), words(at.wanText, portLines(facts, 'WAN', 'wan')),
    words(at.managementText, [[`management · ${facts.management.inUse}`, ''], [facts.management.hardware ?? '', 'faint']]),
    rates(at.lanRate, sample, ['lanOut', 'lanIn'], 'lan'), rates(at.wanRate, sample, ['wanOut', 'wanIn'], 'wan'));
}

const NONE = {inUse: '–'};

export function factsOf({interfaces, mode, links = {}, engine = ''}) {
  const port = (name) => interfaces.find((one) => one.interface === name) ?? NONE;
  return {lan: port('LAN'), wan: port('WAN'), management: port('management'), mode, engine,
          links: {lan: '', wan: '', management: '', ...links}};
}

// Redrawn as its place gets wide or slim.
export class PortsDrawing {
  constructor() {
    this.element = h('div', {class: 'way'});
    this.watch = new ResizeObserver(() => this.draw());
    this.watch.observe(this.element);
  }

  show(facts, sample) {
    Object.assign(this, {facts, sample});
    this.draw();
  }

  draw() {
    if (!this.facts) return;
    const at = this.element.clientWidth < 640 ? SLIM : WIDE;
    this.element.replaceChildren(drawing(at, this.facts, this.sample));
  }

  close() { this.watch.disconnect(); }
}
