// SPDX-License-Identifier: Apache-2.0
#include "tests/support/recorder.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

#include "sandbox/records.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

struct Record {
  std::string kind;
  std::vector<std::string> arguments;
  bool hasInput = false;
  std::string input;
};

// Takes the text up to the mark, and the mark, off the front.
std::string take(std::string_view& log, char mark) {
  size_t end = log.find(mark);
  if (end == log.npos) {
    ADD_FAILURE() << "a torn record: " << log;
    log = {};
    return {};
  }
  std::string text(log.substr(0, end));
  log.remove_prefix(end + 1);
  return text;
}

std::string takeCounted(std::string_view& log) {
  size_t length = strtoul(take(log, ':').c_str(), nullptr, 10);
  if (log.size() <= length || log[length] != '\n') {
    ADD_FAILURE() << "a torn record: " << log;
    log = {};
    return {};
  }
  std::string bytes(log.substr(0, length));
  log.remove_prefix(length + 1);
  return bytes;
}

Record takeRecord(std::string_view& log) {
  Record record;
  record.kind = take(log, ' ');
  int count = atoi(take(log, ' ').c_str());
  record.hasInput = take(log, '\n') == "1";
  for (int i = 0; i < count && !log.empty(); ++i) record.arguments.push_back(takeCounted(log));
  if (record.hasInput) record.input = takeCounted(log);
  return record;
}

std::vector<Record> records(const char* kind) {
  const std::string text = readFile(sandbox::kCommandLog);
  std::vector<Record> found;
  for (std::string_view log = text; !log.empty();) {
    Record record = takeRecord(log);
    if (record.kind == kind) found.push_back(record);
  }
  return found;
}

std::string quoted(const std::string& argument) {
  bool plain = !argument.empty() && argument.find(' ') == argument.npos;
  return plain ? argument : '"' + argument + '"';
}

std::string joined(const std::vector<std::string>& arguments) {
  std::string line;
  for (const std::string& argument : arguments) line += (line.empty() ? "" : " ") + quoted(argument);
  return line;
}

std::string baseName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

std::vector<std::string> shellLines() {
  std::vector<std::string> lines;
  for (const Record& record : records(sandbox::kShellKind)) lines.push_back(record.arguments.at(0));
  return lines;
}

std::vector<std::string> programs() {
  std::vector<std::string> lines;
  for (const Record& record : records(sandbox::kProgramKind)) lines.push_back(joined(record.arguments));
  return lines;
}

std::vector<std::string> inputsOf(const std::string& program) {
  std::vector<std::string> inputs;
  for (const Record& record : records(sandbox::kProgramKind)) {
    if (baseName(record.arguments.at(0)) == program && record.hasInput) inputs.push_back(record.input);
  }
  return inputs;
}

void clearRecords() { ASSERT_EQ(0, truncate(sandbox::kCommandLog, 0)); }

void answer(const std::string& program, const std::string& output, int status) {
  const std::string base = std::string(sandbox::kAnswers) + "/" + program;
  writeFile(base + ".out", output);
  writeFile(base + ".status", std::to_string(status));
}

void perform(const std::string& program, const std::string& script) {
  for (const char* part : {".out", ".status"}) unlink((std::string(sandbox::kAnswers) + "/" + program + part).c_str());
  const std::string path = std::string(sandbox::kRealPrograms) + "/" + program;
  writeFile(path, "#!/bin/sh\n" + script + "\n");
  ASSERT_EQ(0, chmod(path.c_str(), 0755));
}

}  // namespace kestrove::testing
