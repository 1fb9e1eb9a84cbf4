// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/input_lines.h"

#include <unistd.h>

#include <cerrno>

#include "tools/ctl/session.h"

namespace ctl {
namespace {

constexpr size_t kLongest = 65536;

ssize_t readAgain(char* buffer, size_t size) {
  ssize_t length;
  do {
    length = read(STDIN_FILENO, buffer, size);
  } while (length == -1 && errno == EINTR);
  if (length == -1) throw systemRefusal("standard input", errno);
  return length;
}

}  // namespace

InputLines::InputLines() : file_(lseek(STDIN_FILENO, 0, SEEK_CUR) != -1) {}

// True where more of the line follows.
bool InputLines::readSome(std::string& line) {
  char buffer[4096];
  const ssize_t length = readAgain(buffer, file_ ? sizeof buffer : 1);
  std::string piece(buffer, static_cast<size_t>(length));
  const size_t end = piece.find('\n');
  if (end != std::string::npos) {
    if (end + 1 < piece.size()) lseek(STDIN_FILENO, static_cast<off_t>(end + 1) - length, SEEK_CUR);
    piece.resize(end + 1);
  }
  line += piece;
  return length > 0 && end == std::string::npos;
}

std::optional<std::string> InputLines::next() {
  std::string line;
  bool tooLong = false;
  while (readSome(line)) {
    tooLong = tooLong || line.size() > kLongest;
    if (tooLong) line.resize(1);  // what is left of it still is a line
  }
  if (line.empty()) return std::nullopt;
  ++number_;
  if (tooLong) throw Refusal(kUsage, "a line of more than " + std::to_string(kLongest) + " characters");
  if (line.back() == '\n') line.pop_back();
  return line;
}

}  // namespace ctl
