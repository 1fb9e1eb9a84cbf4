// SPDX-License-Identifier: Apache-2.0
// A table as it would be: its rows with the collected operations carried out on them. Rows are known by what they say,
// not by where they stand, so that a change from elsewhere does not turn an operation onto another row.

// Rows with ids: of equal ones the first, the second and so on.
export function named(rows, wordsOf) {
  const seen = new Map();
  return rows.map((row) => {
    const words = wordsOf(row);
    const number = (seen.get(words) ?? 0) + 1;
    seen.set(words, number);
    return {id: number === 1 ? words : `${words} #${number}`, row, was: row};
  });
}

const place = (list, id) => list.findIndex((one) => one.id === id);

const MAKE = {
  add(list, entry, end) {
    const before = entry.before === null ? end : place(list, entry.before);
    const at = before === -1 ? Math.min(entry.at ?? end, end) : before;
    list.splice(at, 0, {id: entry.id, row: entry.row, was: null, entry: entry.id});
    return true;
  },
  change(list, entry) {
    const at = place(list, entry.target);
    if (at === -1) return false;
    list[at] = {...list[at], row: entry.row, changed: true, entry: entry.id};
    return true;
  },
  move(list, entry, end) {
    const from = place(list, entry.target);
    if (from === -1) return false;
    const [one] = list.splice(from, 1);
    const before = entry.before === null ? end - 1 : place(list, entry.before);
    list.splice(before === -1 ? Math.min(entry.at, end - 1) : before, 0, {...one, moved: true, entry: entry.id});
    return true;
  },
  remove(list, entry) {
    const at = place(list, entry.target);
    if (at === -1) return false;
    if (entry.keepsPlace) list[at] = {...list[at], gone: true, entry: entry.id};
    else list.splice(at, 1);
    return true;
  },
};

// fixed rows at the end stay there. Entries that find no row any more are in lost.
export function drafted(rows, entries, fixed = 0) {
  const list = rows.slice();
  const lost = entries.filter((entry) => !MAKE[entry.deed](list, entry, list.length - fixed));
  return {list, lost};
}
