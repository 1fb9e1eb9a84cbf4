/* SPDX-License-Identifier: Apache-2.0 */
/* The whole interface of libkestrove. */
#ifndef KESTROVE_KESTROVE_H
#define KESTROVE_KESTROVE_H

#include "kestrove/codes.h"
#include "kestrove/dhcp.h"
#include "kestrove/dump.h"
#include "kestrove/engine.h"
#include "kestrove/errors.h"
#include "kestrove/events.h"
#include "kestrove/iface.h"
#include "kestrove/ipv6.h"
#include "kestrove/items.h"
#include "kestrove/kernelrules.h"
#include "kestrove/layout.h"
#include "kestrove/library.h"
#include "kestrove/management.h"
#include "kestrove/opmode.h"
#include "kestrove/persistence.h"
#include "kestrove/routes.h"
#include "kestrove/rules.h"
#include "kestrove/segment.h"
#include "kestrove/state.h"
#include "kestrove/stats.h"
#include "kestrove/system.h"
#include "kestrove/text.h"
#include "kestrove/unit.h"
#include "kestrove/users.h"

#endif
