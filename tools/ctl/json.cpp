// SPDX-License-Identifier: Apache-2.0
// The one place where the class behind Json is compiled.
#include "tools/ctl/session.h"

template class nlohmann::basic_json<nlohmann::ordered_map>;
