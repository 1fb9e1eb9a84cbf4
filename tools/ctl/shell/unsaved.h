// SPDX-License-Identifier: Apache-2.0
// What a restart would take back.
#pragma once

#include <string>

#include "kestrove/layout.h"

namespace ctl {

// Another text whenever the settings of the store or its file have changed.
std::string settingsMark(const ShmData& store);

// Whether the attached store holds settings that its configuration file could hold and does not. False, too, where that
// cannot be found out at once.
bool unsavedChanges();

}  // namespace ctl
