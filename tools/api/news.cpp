// SPDX-License-Identifier: Apache-2.0
#include "tools/api/news.h"

#include <cstdlib>
#include <sstream>

#include "kestrove/segment.h"

namespace api {
namespace {

// {"time": ...} as "data: {"time": ...}".
std::string asEvents(const std::string& lines) {
  std::string text;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) text += "data: " + line + "\n\n";
  return text;
}

}  // namespace

News::News() {
  session_.json = true;
  session_.waitSeconds = 0;
}

std::string News::taken() {
  char* text = nullptr;
  size_t length = 0;
  session_.out = open_memstream(&text, &length);
  if (!session_.out) return {};
  const auto finish = [&] {
    fclose(session_.out);
    std::string found(text, length);
    free(text);
    return found;
  };
  try {
    follower_->look();
  } catch (const ctl::Refusal&) {
    finish();
    throw;
  }
  return asEvents(finish());
}

std::string News::look() {
  over_ = false;
  try {
    if (!follower_) follower_ = std::make_unique<ctl::EventFollower>(session_);
    return taken();
  } catch (const ctl::Refusal& refusal) {
    over_ = refusal.exit() != ctl::kLocked;
    if (over_) stop();
    return {};
  }
}

}  // namespace api
