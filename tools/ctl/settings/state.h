// SPDX-License-Identifier: Apache-2.0
// A state of the settings as a command line names it: "running", "saved", "rev:7", a configuration file, a script.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/settings/lines.h"

namespace ctl {

// Its settings. Throws kUsage for a revision without a number, kSystem for a file that cannot be read or is neither.
std::vector<SettingLine> linesOf(const Session& session, const std::string& state);

// Of settings that differ, those that the configuration file has no line for: a restart takes them from the factory
// defaults.
bool keptInNoFile(const std::string& section, const std::string& key);

enum class FileKind { kConfiguration, kScript, kNeither };

// By the first word of its lines that either of the two begins with.
FileKind kindOfFile(const std::string& path);

}  // namespace ctl
