// SPDX-License-Identifier: Apache-2.0
// The management addresses, and the bridge's own IPv6 addresses, which no script takes away.
import {basket} from './basket.js';
import {CollectedTable} from './collected_table.js';
import {openDialog} from './dialog.js';
import {h} from './dom.js';
import {choice, field, text} from './field.js';
import {lengthOf} from './lines.js';
import {named} from './draft.js';

const PORTS = ['bridge', 'management', 'lan', 'wan', 'router', ['br0', "the bridge itself (its own IPv6 address)"]];
const MARKS = {applied: 'good', 'not applied': 'warn'};

const lengthText = (row) => (row.mask ? (row.mask.includes('.') ? lengthOf(row.mask) : row.mask) : '');
const COLUMNS = [
  {title: 'Address', of: (row) => row.address.includes('/') ? row.address : `${row.address}/${lengthText(row)}`, word: true},
  {title: 'At', of: (row) => (row.interface === 'br0' ? 'the bridge itself' : row.interface)},
  {title: 'Status', of: (row) => h('span', {class: `mark ${MARKS[row.status] ?? ''}`}, row.status || 'collected')},
];

const bare = (row) => row.address.split('/')[0];

export class AddressesView extends CollectedTable {
  constructor(body, tools) {
    super(body, tools, {
      kind: 'addresses', path: '/addresses', columns: COLUMNS, namedRows: (facts) => named(facts, (row) => row.address),
      nameOf: bare, saying: (row) => `${row.address} at ${row.interface}`,
      words: {caption: 'Management addresses', one: 'Address', add: 'Add an address', none: 'The appliance has no management address.'},
    });
  }

  get entries() { return [...basket.of('addresses'), ...basket.of('addresses6')]; }

  mayChange() { return false; }

  // Addresses of the bridge itself go by a request each.
  collect(entry) {
    if (entry.row.interface !== 'br0') return super.collect(entry);
    const gone = entry.deed === 'remove';
    const request = gone ? {method: 'DELETE', path: `/addresses/${encodeURIComponent(bare(entry.row))}?bridge=true`}
      : {method: 'POST', path: '/addresses', body: {address: entry.row.address, bridge: true}};
    basket.put({kind: 'addresses6', id: basket.freshId('addresses6'), before: null, request, ...entry});
  }

  edit() {
    const address = text('address', '', {placeholder: '192.168.10.9/24'});
    const port = choice('interface', 'bridge', PORTS);
    const form = h('form', {novalidate: true, id: 'address-form'}, h('div', {class: 'pair'}, field('Address', address, {hint: 'ADDRESS/LENGTH'}), field('At', port)),
      h('div', {class: 'ends'}, h('button', {type: 'button', class: 'plain', onclick: () => dialog.close()}, 'Leave it'),
        h('button', {type: 'submit', class: 'push', id: 'address-keep'}, 'Collect')));
    const dialog = openDialog('A new address', form);
    form.addEventListener('submit', (event) => {
      event.preventDefault();
      this.keep(null, {address: address.value.trim(), interface: port.value, status: ''});
      dialog.close();
    });
  }
}
