// SPDX-License-Identifier: Apache-2.0
// The items by subject, with the words that people have for them. What is not here stands under the last subject.
export const SUBJECTS = [
  ['Acceleration', [
    ['kestroveOperState', 'Engine'],
    ['compression', 'Compression'],
    ['wanCongestionControl', 'Congestion control on the WAN'],
    ['wanOptSupport', 'WAN optimisation supported'],
  ]],
  ['Links', [
    ['lanLinkRate', 'LAN rate'],
    ['wanLinkRate', 'WAN rate'],
    ['minRate', 'Least rate'],
    ['lanMaximumTransferUnit', 'LAN MTU'],
    ['wanMaximumTransferUnit', 'WAN MTU'],
    ['minMtu', 'Least MTU'],
    ['lanLinkSetting', 'LAN link'],
    ['wanLinkSetting', 'WAN link'],
    ['managementLinkSetting', 'Management link'],
    ['wanIpDefaultRtt', 'WAN round-trip time'],
  ]],
  ['Addresses of the ports', [
    ['managementAddress', 'Management address'],
    ['managementAddressMask', 'Management mask'],
    ['managementBroadcastAddress', 'Management broadcast'],
    ['lanIpAddress', 'LAN address'],
    ['lanIpAddressMask', 'LAN mask'],
    ['lanBroadcastAddress', 'LAN broadcast'],
    ['lanGateway', 'LAN gateway'],
    ['wanIpAddress', 'WAN address'],
    ['wanIpAddressMask', 'WAN mask'],
    ['wanBroadcastAddress', 'WAN broadcast'],
    ['wanGateway', 'WAN gateway'],
  ]],
  ['Mode and policy routing', [
    ['singleInterfaceMode', 'Single interface'],
    ['pbrOperState', 'Policy routing'],
    ['opModeState', 'Mode, as a number'],
    ['transparentBridgeOperState', 'Transparent bridge'],
    ['lanPbrRouteSet', 'LAN policy routes set'],
    ['wanPbrRouteSet', 'WAN policy routes set'],
  ]],
  ['Access', [
    ['httpOperState', 'Changes by the web'],
    ['httpSessionTimeout', 'Web session ends after (minutes, 0: half an hour)'],
    ['httpEncryptedId', 'Latest web session'],
    ['snmpOperState', 'Changes by SNMP'],
    ['snmpVersion', 'SNMP version'],
    ['sshdOperState', 'Secure shell'],
    ['cliOperState', 'Changes from the serial port'],
    ['bannerOperState', 'Banner before log-in'],
  ]],
  ['The unit', [
    ['sysName', 'Name'],
    ['sysLocation', 'Location'],
    ['sysContact', 'Contact'],
    ['sysDescription', 'Description'],
    ['loggingOperState', 'Event log'],
    ['fileBuffering', 'File buffering'],
    ['ipv6Support', 'IPv6 supported'],
    ['hardwarePlatform', 'Hardware platform'],
  ]],
  ['Relay', [
    ['failToWireAvailable', 'Relay available'],
    ['failToWireStatus', 'Relay status'],
    ['failToWireConfig', 'Relay setting'],
  ]],
  ['Others', [
    ['spareFlag', 'Spare flag'],
    ['item38Value', 'Value 38'],
    ['flag55', 'Flag 55'],
    ['flag56', 'Flag 56'],
    ['flag57', 'Flag 57'],
    ['flag58', 'Flag 58'],
  ]],
];

// The subjects with the rows that the appliance has.
export function bySubject(rows) {
  const left = new Map(rows.map((row) => [row.item, row]));
  const groups = SUBJECTS.map(([subject, names]) => [subject, names.flatMap(([name, label]) => {
    const row = left.get(name);
    left.delete(name);
    return row ? [{...row, label}] : [];
  })]);
  groups.at(-1)[1].push(...[...left.values()].map((row) => ({...row, label: row.item})));
  return groups;
}

export const labelOf = (item) =>
  SUBJECTS.flatMap(([, names]) => names).find(([name]) => name === item)?.[1] ?? item;
