// SPDX-License-Identifier: Apache-2.0
// The one door to other programs.
//
// Bare launchers for command lines that are fixed or come whole from a caller, and the formatted line, whose words
// pass a checkpoint: what came from the store or a file reaches the shell only if it is plain. Programs named without a
// path are found as search_path.h says.
#pragma once

#include <initializer_list>
#include <string_view>

namespace kestrove::sys {

// The result of a command line that was refused: that of a command that failed.
constexpr int kRefusedLine = 256;
constexpr int kRefusedVector = 1;

// Runs a program without a shell, with its standard streams on the given paths (null leaves them). Exit status, or -1
// when it could not be forked or was killed. A program that cannot be started gives 0: kept on purpose.
[[nodiscard]] int runVector(char* const argv[], const char* inputPath, const char* outputPath);

// Runs a line through the shell as user 0. The raw status of system(), -1 when the user id cannot be raised; then the
// caller's name stands in the log.
[[nodiscard]] int runShell(const char* line, const char* caller = "callSystem");

// The same as the user that the caller is.
[[nodiscard]] int runShellAsCaller(const char* line);

// One word of a formatted line.
class Word {
 public:
  static Word interface(std::string_view name) { return {Kind::kInterface, name}; }
  static Word name(std::string_view name) { return {Kind::kName, name}; }  // as interface, of any length
  static Word address(std::string_view text) { return {Kind::kAddress, text}; }
  static Word path(std::string_view path) { return {Kind::kPath, path}; }
  static Word pid(std::string_view pid) { return {Kind::kPid, pid}; }
  static Word fixed(std::string_view text) { return {Kind::kFixed, text}; }
  static Word number(long long value) { return {Kind::kNumber, {}, value}; }

  [[nodiscard]] bool plain() const;
  // Appends the word's text; false when it does not fit.
  [[nodiscard]] bool appendTo(char*& position, const char* end) const;

 private:
  enum class Kind { kInterface, kName, kAddress, kPath, kPid, kFixed, kNumber };
  Word(Kind kind, std::string_view text, long long value = 0) : kind_(kind), text_(text), value_(value) {}

  Kind kind_;
  std::string_view text_;
  long long value_;
};

// Fills the conversions (%s, %d, %u) of a format with the words, in order. False, with the reason logged, when a word
// is not plain or the line does not fit.
[[nodiscard]] bool formatLine(char* line, size_t size, const char* format, std::initializer_list<Word> words);

// formatLine and runShell; kRefusedLine when the line was refused.
[[nodiscard]] int runLine(const char* format, std::initializer_list<Word> words);
[[nodiscard]] int runLineAsCaller(const char* format, std::initializer_list<Word> words);

// runLine where nothing depends on the result; the caller says why.
inline void tryLine(const char* format, std::initializer_list<Word> words = {}) {
  static_cast<void>(runLine(format, words));
}

}  // namespace kestrove::sys
