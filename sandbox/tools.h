// The programs that the appliance calls.
#pragma once

#include <string>

namespace kestrove::sandbox {

// Puts a program at every path by which the appliance calls one: the machine's, the image's or the recorder.
void layTools(const std::string& recorder, bool record);

}  // namespace kestrove::sandbox
