// SPDX-License-Identifier: Apache-2.0
// The sections of the command script, each written from the store as it is: the caller holds the lock.
#pragma once

#include "kestrove/layout.h"
#include "sys/text_writer.h"

namespace kestrove {

void writeRates(sys::TextWriter& out);
void writeManagementAddresses(sys::TextWriter& out);
void writeInterfaceMode(sys::TextWriter& out);
void writePolicyRouting(sys::TextWriter& out);
void writeServices(sys::TextWriter& out);
void writeAccelerationMode(sys::TextWriter& out, uint32_t product);
// False when there is no interface of that number with a link setting.
[[nodiscard]] bool writeLink(sys::TextWriter& out, int which);
void writeRoute(sys::TextWriter& out, const RouteEntry& route);
void writeRoute6(sys::TextWriter& out, const Route6Entry& route);
void writeRoutes(sys::TextWriter& out);
void writeRoutes6(sys::TextWriter& out);
void writeRules(sys::TextWriter& out);

// The script whole, in its file. 0 or -1.
[[nodiscard]] int writeScriptFile(const char* timestamp);

}  // namespace kestrove
