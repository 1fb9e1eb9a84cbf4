// SPDX-License-Identifier: Apache-2.0
// What a restart, or the time, would take back.
#pragma once

namespace ctl {

// Whether the attached store holds settings that its configuration file does not.
bool unsavedChanges();

// Whether a change waits for its confirmation.
bool unconfirmedChange();

}  // namespace ctl
