// SPDX-License-Identifier: Apache-2.0
// The store of a sandbox, made from the image of another one.
#pragma once

#include <string>

#include "kestrove/layout.h"
#include "tools/ctl/settings/image.h"

namespace ctl {

void requireInside();
// A whole store in a file. Throws kSystem where the file is none.
Image readImage(const std::string& path);
void writeImage(const ShmData& store, const std::string& path);
// The segment and the lock file of a namespace that has none; not attached by the library.
ShmData* makeStore();

}  // namespace ctl
