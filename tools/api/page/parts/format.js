// SPDX-License-Identifier: Apache-2.0
// Numbers and times as they are read.
const STEPS = [[1e9, 'G'], [1e6, 'M'], [1e3, 'k']];

// 2048000 as "2.05 M".
export function short(number, unit = '') {
  const step = STEPS.find(([size]) => Math.abs(number) >= size);
  if (!step) return `${trimmed(number)}${unit ? ' ' + unit : ''}`;
  return `${trimmed(number / step[0])} ${step[1]}${unit}`;
}

function trimmed(number) {
  const digits = Math.abs(number) >= 100 ? 0 : Math.abs(number) >= 10 ? 1 : 2;
  return String(Number(number.toFixed(digits)));
}

const pad = (number) => String(number).padStart(2, '0');

export function clock(date) {
  return `${pad(date.getHours())}:${pad(date.getMinutes())}:${pad(date.getSeconds())}`;
}

export function moment(text) {
  if (!text) return 'never';
  const date = new Date(text);
  if (Number.isNaN(date.getTime())) return String(text);
  return `${date.getFullYear()}-${pad(date.getMonth() + 1)}-${pad(date.getDate())} ${clock(date)}`;
}

export function span(seconds) {
  const whole = Math.max(0, Math.floor(seconds));
  const days = Math.floor(whole / 86400);
  const hours = Math.floor(whole / 3600) % 24;
  const minutes = Math.floor(whole / 60) % 60;
  if (days) return `${days} d ${hours} h`;
  return hours ? `${hours} h ${minutes} min` : `${minutes} min`;
}

// 4:59, and 9:59:59 from an hour on.
export function countdown(seconds) {
  const whole = Math.max(0, Math.ceil(seconds));
  const hours = Math.floor(whole / 3600);
  const minutes = Math.floor(whole / 60) % 60;
  return `${hours ? `${hours}:${pad(minutes)}` : minutes}:${pad(whole % 60)}`;
}

export const counted = (number, one, many = one + 's') => `${number} ${number === 1 ? one : many}`;
