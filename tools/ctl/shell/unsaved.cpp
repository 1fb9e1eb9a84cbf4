// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/unsaved.h"

namespace ctl {

bool unsavedChanges() { return false; }

bool unconfirmedChange() { return false; }

}  // namespace ctl
