// SPDX-License-Identifier: Apache-2.0
// Which of the text that is seen differs too little from what it stands on; what cannot be used is left out.
const pen = Object.assign(document.createElement('canvas'), {width: 1, height: 1}).getContext('2d', {willReadFrequently: true});
const LEAST = 4.5;

const known = new Map();

function channels(colour) {
  if (!known.has(colour)) known.set(colour, read(colour));
  return known.get(colour);
}

function read(colour) {
  pen.clearRect(0, 0, 1, 1);
  pen.fillStyle = '#000';
  pen.fillStyle = colour;
  pen.fillRect(0, 0, 1, 1);
  const [red, green, blue, alpha] = pen.getImageData(0, 0, 1, 1).data;
  return [red, green, blue, alpha / 255];
}

const over = ([r, g, b, a], ground) => [r, g, b].map((part, i) => part * a + ground[i] * (1 - a)).concat(1);

function chain(element) {
  const found = [];
  for (let one = element; one; one = one.parentElement) found.unshift(one);
  return found;
}

function groundOf(element) {
  return chain(element).reduce((ground, one) => over(channels(getComputedStyle(one).backgroundColor), ground), [255, 255, 255, 1]);
}

// In a drawing the ground is the shape beneath.
function shapeUnder(element) {
  element.scrollIntoView({block: 'center'});
  const {x, y, width, height} = element.getBoundingClientRect();
  const shape = document.elementsFromPoint(x + width / 2, y + height / 2).find((one) => one.matches('rect, circle'));
  return shape ? channels(getComputedStyle(shape).fill) : null;
}

function lightness(colour) {
  const [red, green, blue] = colour.slice(0, 3).map((part) => part / 255).map((one) => (one <= 0.03928 ? one / 12.92 : ((one + 0.055) / 1.055) ** 2.4));
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

function contrast(one, other) {
  const [low, high] = [lightness(one), lightness(other)].sort((a, b) => a - b);
  return (high + 0.05) / (low + 0.05);
}

function measured(element, colour, words) {
  const drawn = element.closest('svg') !== null;
  const ground = (drawn && shapeUnder(element)) || groundOf(element);
  const [r, g, b, a] = channels(colour);
  const opacity = chain(element).reduce((all, one) => all * getComputedStyle(one).opacity, 1);
  const ratio = contrast(over([r, g, b, a * opacity], ground), ground);
  return {words: words.trim().slice(0, 40), at: `${element.localName}.${element.getAttribute('class') ?? ''}`, ratio: Number(ratio.toFixed(2)), colour, ground: String(ground)};
}

function seen(element) {
  const {width, height} = element.getBoundingClientRect();
  return element.checkVisibility() && width > 1 && height > 1 && !element.closest('.unseen, option, :disabled, label:has(:disabled), [aria-disabled=true]');
}

function* texts() {
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    if (!walker.currentNode.data.trim() || !seen(element)) continue;
    const style = getComputedStyle(element);
    yield measured(element, element.closest('svg') ? style.fill : style.color, walker.currentNode.data);
  }
}

function* controls() {
  for (const element of document.querySelectorAll('input:not([type=radio], [type=checkbox]), select, textarea')) {
    if (!seen(element)) continue;
    const hint = !element.value && element.placeholder;
    yield measured(element, getComputedStyle(element, hint ? '::placeholder' : null).color, element.value || element.placeholder || '');
  }
}

function* generated() {
  for (const element of document.body.querySelectorAll('*')) {
    for (const place of ['::before', '::after']) {
      const {content, color} = getComputedStyle(element, place);
      if (!['none', 'normal', '""', ''].includes(content) && seen(element)) yield measured(element, color, content);
    }
  }
}

const all = [...texts(), ...controls(), ...generated()];
return {count: all.length, faint: all.filter((one) => !(one.ratio >= LEAST))};
