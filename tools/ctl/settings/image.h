// SPDX-License-Identifier: Apache-2.0
// A whole store on the heap: what is compared, tried and carried out.
#pragma once

#include <memory>
#include <string>

#include "kestrove/layout.h"
#include "tools/ctl/session.h"

namespace ctl {

class Image {
 public:
  Image();  // all zero
  explicit Image(const ShmData& store);
  Image(const Image& other) : Image(*other) {}
  Image(Image&&) noexcept = default;
  Image& operator=(const Image& other);
  Image& operator=(Image&&) noexcept = default;

  ShmData& operator*() { return *data_; }
  const ShmData& operator*() const { return *data_; }
  ShmData* operator->() { return data_.get(); }
  const ShmData* operator->() const { return data_.get(); }

 private:
  std::unique_ptr<ShmData> data_;
};

// A store as it is laid out before anything is read into it: empty tables, the default rule alone.
Image emptyImage();

// The attached store, copied under its lock.
Image runningImage(const Session& session);

// What a store would hold that is built from the factory defaults and that configuration file: read by the library
// itself, on a private copy. The words of the platform, which no file carries, are those of the attached store. Throws
// kSystem or kNotPermitted when the file cannot be read.
Image fileImage(const Session& session, const std::string& path);

// The same of the file that the store is saved to: what a restart would bring back.
Image savedImage(const Session& session);

}  // namespace ctl
