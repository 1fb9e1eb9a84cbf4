// SPDX-License-Identifier: Apache-2.0
// The sections of the dump, each without its heading.
#pragma once

#include "sys/text_writer.h"

namespace kestrove {

void dumpState(sys::TextWriter& out);
void dumpFiles(sys::TextWriter& out);
void dumpUsers(sys::TextWriter& out);
void dumpConfig(sys::TextWriter& out);
void dumpOperationalStats(sys::TextWriter& out);
void dumpInterfaceStats(sys::TextWriter& out);
void dumpQosStats(sys::TextWriter& out);
void dumpTasks(sys::TextWriter& out);
void dumpSessionEngine(sys::TextWriter& out);
void dumpRoutes(sys::TextWriter& out);
void dumpRoutes6(sys::TextWriter& out);
void dumpRules(sys::TextWriter& out);

}  // namespace kestrove
