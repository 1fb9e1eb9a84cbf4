// SPDX-License-Identifier: Apache-2.0
// What diff compares with and this build does not have.
#include "tools/ctl/settings/script_image.h"

namespace ctl {

Image scriptImage(const Session&, const std::string& path) {
  throw Refusal(kRefused, path + ": this build reads no scripts");
}

}  // namespace ctl
