// SPDX-License-Identifier: Apache-2.0
#include "lifecycle/short_version.h"

namespace kestrove {

std::string_view shortVersion(std::string_view full) {
  constexpr size_t none = std::string_view::npos;
  size_t first = full.find('.');
  size_t second = first == none ? none : full.find('.', first + 1);
  size_t third = second == none ? none : full.find('.', second + 1);
  if (third == none) return {};
  bool third_is_zero = full.substr(second + 1, third - second - 1) == "0";
  return full.substr(0, third_is_zero ? second : third);
}

}  // namespace kestrove
