// SPDX-License-Identifier: Apache-2.0
// Lines of a configuration file, read one by one by the library into the attached store: to be used on a copy of the
// appliance, in Configuration Mode's peace that a load has.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "tools/common/config_lint.h"

namespace ctl::lint {

// Bytes of the store that a keyword sets; of no width where it sets rows.
struct Place {
  size_t offset = 0;
  size_t width = 0;
  auto operator<=>(const Place&) const = default;
};

class Trial {
 public:
  explicit Trial(const std::string& scratch);  // a file that may be written
  ~Trial();
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;

  // Gives the code that the reading left.
  uint32_t read(std::string_view line);

  // Found out by reading a line of the keyword into a store of zeros and into one of ones: what is the same in both.
  Place placeOf(const tools::ConfigKeyword& keyword);

  static std::string bytesAt(const Place& place);
  static void putBytes(const Place& place, const std::string& bytes);

 private:
  Place probe(const std::string& line);

  std::string path_;
  int fd_;
  std::map<std::string_view, Place> places_;
};

}  // namespace ctl::lint
