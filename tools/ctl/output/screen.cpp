// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/output/screen.h"

#include <strings.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace ctl {
namespace {

constexpr size_t kUsual = 80;
constexpr size_t kMost = 10000;  // above, a value is no width of a screen

size_t plausible(size_t columns) { return columns <= kMost ? columns : 0; }

size_t columnsByEnvironment() {
  const char* text = getenv("COLUMNS");
  if (!text || *text < '0' || *text > '9') return 0;
  char* end = nullptr;
  const unsigned long columns = strtoul(text, &end, 10);
  return *end == '\0' ? plausible(columns) : 0;
}

size_t columnsByTerminal(int descriptor) {
  struct winsize size = {};
  return ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool namesUtf8(const char* locale) {
  const std::string_view name = locale;
  for (const char* charset : {"utf-8", "utf8"}) {
    const size_t dot = name.rfind('.');
    if (dot != std::string_view::npos && strcasecmp(locale + dot + 1, charset) == 0) return true;
  }
  return false;
}

}  // namespace

size_t screenColumns(FILE* stream) {
  const int descriptor = fileno(stream);
  if (descriptor == -1 || !isatty(descriptor)) return 0;
  if (const size_t columns = columnsByEnvironment()) return columns;
  if (const size_t columns = columnsByTerminal(descriptor)) return columns;
  return kUsual;
}

const char* cutMark() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* locale = getenv(name);
    if (locale && *locale) return namesUtf8(locale) ? "\u2026" : "~";
  }
  return "~";
}

}  // namespace ctl
