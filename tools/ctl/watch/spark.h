// SPDX-License-Identifier: Apache-2.0
// Numbers as a line of small bars.
#pragma once

#include <deque>
#include <optional>
#include <string>

namespace ctl {

// The newest values at the right end, as many as fit into the width; the largest of these has the highest bar, 0 the
// lowest, and what is not known is a gap. With wide characters these are eighths of blocks, otherwise ASCII.
std::string sparkLine(const std::deque<std::optional<double>>& values, size_t width, bool wide);

// Whether the locale of this process says that its terminal takes UTF-8.
bool terminalTakesUtf8();

// "12.3 M": three digits that count, and a letter for thousands.
std::string shortNumber(double value);

}  // namespace ctl
