// SPDX-License-Identifier: Apache-2.0
// Small files of this program, for root alone, which all workers share. A file is replaced whole.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sys/descriptor.h"

namespace api {

class Folder {
 public:
  // Makes it where it is not there. Throws a Refusal where it belongs to others, or others may read it.
  explicit Folder(const std::string& path);

  std::optional<std::string> read(const std::string& name) const;
  void write(const std::string& name, const std::string& text) const;
  void remove(const std::string& name) const;
  std::vector<std::string> names() const;
  // Seconds since the file was written or touched; negative where there is none.
  double age(const std::string& name) const;
  void touch(const std::string& name) const;

  // Held until the result is gone: one process at a time.
  kestrove::sys::Descriptor lock(double seconds) const;

 private:
  std::string pathOf(const std::string& name) const { return path_ + "/" + name; }

  std::string path_;
};

}  // namespace api
