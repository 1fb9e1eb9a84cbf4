// SPDX-License-Identifier: Apache-2.0
// The programs that the appliance calls.
#pragma once

#include <string>

namespace kestrove::sandbox {

// Puts a program at every path by which the appliance calls one: the machine's, the image's or the recorder.
// `home` is the launcher's folder, with the recorder in it and, below `programs`, the project's own.
void layTools(const std::string& home, bool record);

}  // namespace kestrove::sandbox
