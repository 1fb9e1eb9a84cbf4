#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Gives the web server the addresses at which it may be reached: the arguments, one to a line, and the site in which they
# stand. Without any the appliance itself remains.

printf '%s\n' "$@" > /var/etc/apache.addresses

site=/usr/share/kestrove/apache/site.conf
[ -r "$site" ] || exit 0
[ $# -gt 0 ] || set -- 127.0.0.1
hosts=
for address; do
  case $address in
    *:*) hosts="$hosts [$address]:443" ;;
    *) hosts="$hosts $address:443" ;;
  esac
done
sed "s|<VirtualHost ADDRESSES>|<VirtualHost$hosts>|" "$site" > /var/etc/apache.conf.new &&
  mv /var/etc/apache.conf.new /var/etc/apache.conf
