#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Gives the SNMP server the addresses at which it may be reached: the arguments, one to a line.

printf '%s\n' "$@" > /var/etc/snmpd.addresses
