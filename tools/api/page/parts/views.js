// SPDX-License-Identifier: Apache-2.0
// The subjects, in the order in which they stand at the side.
import {AddressesView} from './addresses.js';
import {DashboardView} from './dashboard.js';
import {EventsView} from './events.js';
import {HistoryView} from './history.js';
import {ItemsView} from './items.js';
import {ModeView} from './mode.js';
import {Routes4View, Routes6View} from './routes.js';
import {RulesView} from './rules.js';
import {StatesView} from './states.js';
import {UsersView} from './users.js';

export const VIEWS = [
  {name: 'dashboard', title: 'Dashboard', View: DashboardView},
  {name: 'events', title: 'Events', View: EventsView},
  {name: 'items', title: 'Items', View: ItemsView, apart: true},
  {name: 'rules', title: 'Rules', View: RulesView},
  {name: 'routes', title: 'Routes IPv4', View: Routes4View},
  {name: 'routes6', title: 'Routes IPv6', View: Routes6View},
  {name: 'addresses', title: 'Addresses', View: AddressesView},
  {name: 'mode', title: 'Operating mode', View: ModeView},
  {name: 'users', title: 'Users', View: UsersView},
  {name: 'history', title: 'History', View: HistoryView, apart: true},
  {name: 'states', title: 'Saved states', View: StatesView},
];
