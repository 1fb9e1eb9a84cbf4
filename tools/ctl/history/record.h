// SPDX-License-Identifier: Apache-2.0
// Settings in a file, with what is known about them: a line with the sum of the rest, a line of JSON, then the settings
// a line each. Revisions and the journal are such files.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/ctl/session.h"
#include "tools/ctl/settings/lines.h"

namespace ctl {

struct Record {
  Json head = Json::object();
  std::string body;  // the settings as they stand in the file
};

std::string bodyOf(const std::vector<SettingLine>& lines);
std::vector<SettingLine> settingsIn(const std::string& body);

// Tells two bodies apart.
std::string sumOf(std::string_view text);

std::string recordText(const Record& record);
// None where the text is not what was once written.
std::optional<Record> readRecord(const std::string& text);

}  // namespace ctl
