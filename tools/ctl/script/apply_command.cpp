// SPDX-License-Identifier: Apache-2.0
// apply.
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/history/carry_recorded.h"
#include "tools/ctl/script/progress.h"
#include "tools/ctl/script/target.h"
#include "tools/ctl/settings/carry_out.h"
#include "tools/ctl/settings/script_image.h"

namespace ctl {
namespace {

struct ApplyLine {
  std::string path;
  bool merge = false;
  bool replace = false;
  bool check = false;
  bool diff = false;
  bool stopOnError = false;
  bool skipRefused = false;
};

// What came of a script, or would.
struct Result {
  const Script& script;
  const Target& target;
  const Difference& made;
  std::vector<Step> failed = {};
  const Recorded* recorded = nullptr;
};

std::map<size_t, std::string> refusalsOf(const Target& target) {
  std::map<size_t, std::string> refusals;
  for (const Complaint& one : target.refused) refusals[one.line] = one.refusal.what();
  return refusals;
}

Json lineRows(const Result& result) {
  const std::map<size_t, std::string> refusals = refusalsOf(result.target);
  Json rows = Json::array();
  for (size_t i = 0; i < result.script.lines.size(); ++i) {
    const ScriptLine& line = result.script.lines[i];
    const auto refused = refusals.find(line.number);
    Json row = {{"line", line.number}, {"text", meaningOf(line)}, {"changed", bool(result.target.changes[i])}};
    if (refused != refusals.end()) row["error"] = refused->second;
    rows.push_back(std::move(row));
  }
  return rows;
}

Json failedRows(const std::vector<Step>& failed) {
  Json rows = Json::array();
  for (const Step& step : failed) {
    rows.push_back({{"section", step.section}, {"key", step.key}, {"line", step.line}, {"reason", step.reason}});
  }
  return rows;
}

Json resultJson(const Result& result, bool withDiff) {
  Json json = differenceJson(result.made);
  if (!withDiff) json.erase("diff");
  json["lines"] = lineRows(result);
  json["failed"] = failedRows(result.failed);
  if (result.recorded) result.recorded->addTo(json);
  return json;
}

std::string lineText(const Script& script, const ScriptLine& line, const std::string& what) {
  return tools::escaped(script.place(line.number) + what + ": " + meaningOf(line)) + "\n";
}

// A line each, then what went without being named.
std::string resultText(const Result& result, bool check) {
  const std::map<size_t, std::string> refusals = refusalsOf(result.target);
  std::string text;
  for (size_t i = 0; i < result.script.lines.size(); ++i) {
    const ScriptLine& line = result.script.lines[i];
    const auto refused = refusals.find(line.number);
    const char* change = check ? "would change" : "changed";
    text += lineText(result.script, line,
                     refused != refusals.end()  ? "refused: " + refused->second
                     : result.target.changes[i] ? change
                                                : "as it was");
  }
  for (const SettingChange& change : result.made.changes) {
    if (!change.after)
      text += (check ? "would be taken away: " : "taken away: ") + tools::escaped(*change.before) + "\n";
  }
  for (const Step& step : result.failed) text += "not made: " + tools::escaped(step.line + ": " + step.reason) + "\n";
  return text;
}

std::string counted(size_t count, const char* what) {
  return std::to_string(count) + (count == 1 ? " setting " : " settings ") + what;
}

std::string summaryText(const Result& result, bool check) {
  const size_t count = result.made.changes.size();
  std::string text = count == 0 ? std::string("nothing ") + (check ? "would change" : "changed")
                                : counted(count, check ? "would change; nothing was" : "changed");
  if (!result.failed.empty()) text += ", " + counted(result.failed.size(), "not made");
  return tools::escaped(result.script.name + ": " + text) + "\n";
}

void show(const Session& session, const Result& result, const ApplyLine& line) {
  if (!session.forPeople()) return session.show(resultJson(result, line.diff));
  std::string text = resultText(result, line.check);
  if (line.diff) text += differenceText(result.made, isatty(STDOUT_FILENO) == 1 && !getenv("NO_COLOR"));
  text += summaryText(result, line.check);
  session.print(result.recorded ? text + result.recorded->text() : text);
}

void refuseContradictions(const ApplyLine& line) {
  if (line.merge && line.replace) throw Refusal(kUsage, "--merge and --replace exclude each other");
  if (line.stopOnError && line.skipRefused)
    throw Refusal(kUsage, "--stop-on-error and --skip-refused exclude each other");
}

// A rule may miss its place only because a line in front of it cannot be read.
bool followsFromAnother(const Complaint& one) {
  return std::string_view(one.refusal.what()).find("no place for rule") != std::string_view::npos;
}

// Where lines make no sense the others are tried all the same, so that one run tells everything that is wrong.
[[noreturn]] void refuseWrong(const Session& session, const Script& script, Joining joining) {
  std::vector<Complaint> complaints = script.complaints;
  if (script.wholly) {
    const Target target = targetOf(runningImage(session), script, joining);
    std::ranges::remove_copy_if(target.refused, std::back_inserter(complaints), followsFromAnother);
  }
  std::ranges::stable_sort(complaints, {}, &Complaint::line);
  refuseScript(session, script, complaints);
}

Joining joiningOf(const ApplyLine& line) { return line.replace ? Joining::kReplace : Joining::kMerge; }

Script requireScript(const Session& session, const ApplyLine& line) {
  Script script = readScript(line.path);
  if (!script.complaints.empty()) refuseWrong(session, script, joiningOf(line));
  if (!script.lines.empty() || !line.replace) return script;
  throw Refusal(kUsage, line.path + ": no line of a script; --replace would take every table away");
}

std::vector<Step> failedOf(const Outcome& outcome) {
  std::vector<Step> failed;
  for (const Step& step : outcome.steps) {
    if (!step.done) failed.push_back(step);
  }
  return failed;
}

// The target, made of the store as it is: where a line is refused nothing is made of it.
Target requireTarget(const Session& session, const ApplyLine& line, const Script& script) {
  Target target = targetOf(Image(*shm), script, joiningOf(line));
  if (!target.refused.empty() && !line.skipRefused) refuseScript(session, script, target.refused);
  return target;
}

void warnOf(const Session& session, const CarriedOut& done) {
  if (!session.forPeople()) return;
  for (const std::string& note : done.outcome.notes) warn(note);
  if (done.outcome.changed && !done.outcome.saved) warn("applied, not saved: " + done.outcome.unsavedReason);
  done.recorded.warn();
}

// The store is held from the reading of it to the last change, so that nothing comes between what is checked and what
// is made.
void carry(const Session& session, const ApplyLine& line, const Script& script) {
  Target target;
  Progress bar;
  CarryOptions options;
  options.stopOnError = line.stopOnError;
  options.progress = [&bar](size_t done, size_t all) { bar.show(done, all); };
  const auto make = [&] {
    target = requireTarget(session, line, script);
    return target.store;
  };
  const CarriedOut done = carryOutRecorded(session, make, options);
  bar.end();
  show(session, {script, target, done.outcome.made, failedOf(done.outcome), &done.recorded}, line);
  warnOf(session, done);
  if (done.exit() != kDone) throw Refusal(done.exit(), "");
  if (!target.refused.empty()) throw Refusal(kPartly, "");
}

void predict(const Session& session, const ApplyLine& line, const Script& script) {
  awaitLock(session);
  tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  const Image start(*shm);
  const Target target = requireTarget(session, line, script);
  show(session, {script, target, compare(*start, *target.store)}, line);
  if (!target.refused.empty()) throw Refusal(kPartly, "");
}

void apply(const Session& session, const ApplyLine& line) {
  refuseContradictions(line);
  requireStore(session);
  const Script script = requireScript(session, line);
  line.check ? predict(session, line, script) : carry(session, line, script);
}

constexpr char kMeaning[] =
    "The whole script is checked on a copy of the appliance before the first change: a line that makes no sense, or "
    "that "
    "the store would refuse, is told with its number, and nothing is changed.\n"
    "--merge adds and changes; routes and addresses that are there keep their places, and the rules of the script "
    "stand "
    "at the numbers that it gives them, in its order. --replace makes management addresses, routes and rules exactly "
    "what the script says; single values that it does not name stay, as do users and, unless it names one, the "
    "bridge's "
    "own IPv6 addresses.\n"
    "Lines of a saved script number rules from 1, kestrovectl's own (rule add 0 --proto tcp) from 0.";

}  // namespace

Image scriptImage(const Session& session, const std::string& path) {
  const Script script = readScript(path);
  if (!script.complaints.empty()) refuseScript(session, script, script.complaints);
  const Target target = targetOf(runningImage(session), script, Joining::kReplace);
  if (!target.refused.empty()) refuseScript(session, script, target.refused);
  return target.store;
}

std::vector<Command> applyCommands() {
  return {changing("apply", "Make the settings what a script says", apply,
                   {needed("FILE", &ApplyLine::path, takes::file(), "The script; - is standard input"),
                    flag("--merge", &ApplyLine::merge, "Add and change, as without an option"),
                    flag("--replace", &ApplyLine::replace, "Take away what the script does not say"),
                    flag("--check", &ApplyLine::check, "Change nothing: say what would be changed"),
                    flag("--diff", &ApplyLine::diff, "Show what differs before and after"),
                    flag("--stop-on-error", &ApplyLine::stopOnError, "End at the first change that fails"),
                    flag("--skip-refused", &ApplyLine::skipRefused, "Leave out lines that the store refuses")},
                   kMeaning)};
}

}  // namespace ctl
