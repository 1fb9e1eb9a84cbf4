// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/script.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/script/item_words.h"
#include "tools/ctl/script/match.h"
#include "tools/ctl/script/script_file.h"

namespace ctl {
namespace {

constexpr size_t kMostShown = 200;  // characters of a line that a message names

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text.size() > kMostShown ? text.substr(0, kMostShown) + "..." : text;
}

std::string whyNot(const Match& match, const std::vector<std::string>& words) {
  if (!match.complaint.empty()) return match.complaint;
  if (match.near || match.row) return joined(words) + ": no line that says how a setting shall be";
  return joined(words) + ": no such command";
}

bool givesShared(const Match& match) {
  for (const std::vector<std::string>& given : match.shared) {
    if (!given.empty()) return true;
  }
  return false;
}

Wish wishOf(const std::vector<std::string>& words) {
  const Match match = matcher().match(words);
  if (!match.row || !match.row->wish) throw Refusal(kUsage, whyNot(match, words));
  if (givesShared(match)) throw Refusal(kUsage, "options of kestrovectl itself have no place in a script");
  return match.row->wish(match.given);
}

void readLine(Script& script, size_t number, const std::string& text) {
  try {
    const std::vector<std::string> words = wordsOfLine(text);
    if (!words.empty()) script.lines.push_back({number, text, wishOf(words)});
  } catch (const Refusal& refusal) {
    script.complaints.push_back({number, refusal});
  }
}

// A pipe is read, too; what only waits or acts is not.
FILE* opened(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd == -1) throw systemRefusal(path, errno);
  struct stat facts;
  if (fstat(fd, &facts) != 0 || !(S_ISREG(facts.st_mode) || S_ISFIFO(facts.st_mode))) {
    close(fd);
    throw Refusal(kSystem, path + ": no file of lines");
  }
  fcntl(fd, F_SETFL, 0);
  return fdopen(fd, "r");
}

Json complaintRow(const Complaint& complaint) {
  Json row = {{"line", complaint.line}};
  row.update(errorJson(complaint.refusal));
  return row;
}

Exit exitOf(const Complaint& complaint) { return complaint.refusal.exit(); }

std::string summaryOf(const Script& script, const std::vector<Complaint>& complaints) {
  const std::string count = complaints.size() == 1 ? "one line" : std::to_string(complaints.size()) + " lines";
  return script.name + ": " + count + (complaints.size() == 1 ? " is" : " are") + " not taken; nothing is changed" +
         (script.wholly ? "" : "; the rest was not looked at");
}

}  // namespace

Script scriptOf(const std::string& name, FILE* in) {
  Script script = {.name = name};
  LineReader reader(in);
  size_t number = 0;
  for (std::string line; reader.next(line);) {
    readLine(script, ++number, line);
    if (script.complaints.size() >= kMostComplaints) {
      script.wholly = false;
      return script;
    }
  }
  if (reader.failed()) throw systemRefusal(name, errno);
  return script;
}

Script readScript(const std::string& path) {
  if (path == "-") return scriptOf(path, stdin);
  FILE* in = opened(path);
  try {
    Script script = scriptOf(path, in);
    fclose(in);
    return script;
  } catch (const Refusal&) {
    fclose(in);
    throw;
  }
}

std::string meaningOf(const ScriptLine& line) {
  const ItemWish* item = std::get_if<ItemWish>(&line.wish);
  if (!item || item->row->form == ItemForm::kText) return line.text;
  const std::string own = itemPhrase(*item->row, Tongue::kItem, item->word, shm->config.productId);
  const std::string script = itemPhrase(*item->row, Tongue::kScript, item->word, shm->config.productId);
  return script.empty() || script == own ? own : own + " = " + script;
}

void refuseScript(const Session& session, const Script& script, const std::vector<Complaint>& complaints) {
  const auto senseless = std::ranges::find(complaints, kUsage, exitOf);
  const Refusal& first = (senseless == complaints.end() ? complaints.front() : *senseless).refusal;
  const Refusal whole(first.exit(), summaryOf(script, complaints), first.code(), first.error());
  if (!session.json) {
    for (const Complaint& one : complaints) {
      fprintf(stderr, "%s\n", tools::escaped(script.place(one.line) + one.refusal.what()).c_str());
    }
    throw Refusal(whole);
  }
  Json rows = Json::array();
  for (const Complaint& one : complaints) rows.push_back(complaintRow(one));
  session.show({{"error", errorJson(whole)}, {"complaints", rows}});
  throw Refusal(whole.exit(), "");
}

}  // namespace ctl
