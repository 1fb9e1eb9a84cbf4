// SPDX-License-Identifier: Apache-2.0
// The static routes, of IPv4 and of IPv6.
import {CollectedTable} from './collected_table.js';
import {openDialog} from './dialog.js';
import {h} from './dom.js';
import {field, text} from './field.js';
import {rowsOf, ROUTES} from './table_rows.js';

const MARKS = {active: 'good', 'not active': 'warn', inactive: 'warn', disabled: ''};
const status = (row) => h('span', {class: `mark ${MARKS[row.status] ?? ''}`}, row.status || 'collected');
const COLUMNS = {
  4: [{title: 'Destination', of: (row) => row.key ?? row.destination, word: true}, {title: 'Next hop', of: (row) => row.gateway, word: true},
      {title: 'Status', of: status}],
  6: [{title: 'Destination', of: (row) => row.destination, word: true}, {title: 'Next hop', of: (row) => row.gateway, word: true},
      {title: 'Interface', of: (row) => row.interface ?? '', word: true}, {title: 'Status', of: status}],
};

class RoutesView extends CollectedTable {
  constructor(body, tools, family) {
    const kind = family === 6 ? 'routes6' : 'routes';
    super(body, tools, {
      kind, path: ROUTES[family].path, columns: COLUMNS[family], namedRows: (facts) => rowsOf(kind, facts),
      nameOf: (row) => row.key ?? row.destination, saying: (row) => `${row.key ?? row.destination} by ${row.gateway}`,
      words: {caption: `Static routes of IPv${family}`, one: `Route`, add: 'Add a route', none: `There is no static route of IPv${family}.`},
    });
    this.family = family;
  }

  edit(one) {
    const row = one?.row ?? {destination: '', gateway: '', status: ''};
    const destination = text('destination', row.key ?? row.destination, {disabled: Boolean(one?.was), placeholder: this.family === 6 ? '2001:db8::/32' : '172.20.0.0/16'});
    const gateway = text('gateway', row.gateway);
    const disabled = h('input', {type: 'checkbox', id: 'route-disabled', checked: row.status === 'disabled'});
    const form = h('form', {novalidate: true, id: 'route-form'}, h('div', {class: 'pair'}, field('Destination', destination, {hint: 'ADDRESS/LENGTH'}), field('Next hop', gateway)),
      h('p', {class: 'tick'}, disabled, h('label', {for: 'route-disabled'}, 'Keep it out of the kernel')),
      h('div', {class: 'ends'}, h('button', {type: 'button', class: 'plain', onclick: () => dialog.close()}, 'Leave it'),
        h('button', {type: 'submit', class: 'push', id: 'route-keep'}, 'Collect')));
    const dialog = openDialog(one ? 'Route to ' + (row.key ?? row.destination) : 'A new route', form);
    form.addEventListener('submit', (event) => {
      event.preventDefault();
      const wanted = destination.value.trim();
      this.keep(one, {...row, destination: wanted, key: this.family === 4 ? wanted : undefined, gateway: gateway.value.trim(), status: disabled.checked ? 'disabled' : ''});
      dialog.close();
    });
  }
}

export class Routes4View extends RoutesView {
  constructor(body, tools) { super(body, tools, 4); }
}

export class Routes6View extends RoutesView {
  constructor(body, tools) { super(body, tools, 6); }
}
