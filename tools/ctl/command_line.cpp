// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/command_line.h"

#include <algorithm>
#include <memory>

#include "tools/common/version_text.h"
#include "tools/ctl/exit_codes.h"
#include "tools/ctl/history/changing.h"
#include "tools/ctl/history/recording.h"
#include "tools/ctl/place.h"
#include "tools/ctl/reference.h"
#include "tools/ctl/script/help_text.h"
#include "tools/ctl/shape.h"

namespace ctl {
namespace {

bool readable(const Type& type, const std::string& word) {
  int number = 0;
  double seconds = 0;
  if (type.form == Form::kNumber) return readNumber(word, number);
  return type.form != Form::kSeconds || readSeconds(word, seconds);
}

// What needs no more than the word itself is refused by the parser, which names the value and adds the usage.
void addChecks(CLI::Option& option, const Type& type) {
  if (type.form == Form::kWord) {
    std::vector<std::string> words;
    for (const NamedNumber& word : type.words) words.push_back(word.name);
    option.check(CLI::IsMember(words).description(""));
  }
  if (type.form == Form::kNumber && type.limited()) option.check(CLI::Range(type.least, type.most).description(""));
  if (type.form == Form::kSeconds) {
    option.check(CLI::Range(double(type.least), double(type.most)).description(""));
  }
}

using Take = std::function<void(const std::string&)>;

CLI::Option* addValue(CLI::App& app, const Value& value, const Take& take) {
  if (value.type.form == Form::kFlag) {
    return app.add_flag_callback(
        value.name, [take] { take("true"); }, value.help);
  }
  const Type type = value.type;
  CLI::Option* option = app.add_option(
      value.name,
      [type, take](const CLI::results_t& words) {
        for (const std::string& word : words) {
          if (!readable(type, word)) return false;
          take(word);
        }
        return true;
      },
      value.help);
  option->type_name(typeText(type))->required(value.needed)->default_str(value.preset);
  if (value.several) option->expected(CLI::detail::expected_max_vector_size);
  if (value.lastWins) option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  addChecks(*option, type);
  return option;
}

bool hasBelow(const std::vector<Command>& rows, const Command& row) {
  for (const Command& other : rows) {
    if (other.words.size() > row.words.size() && other.words.front() == row.words.front()) return true;
  }
  return false;
}

// The value of a line within the line, or of this one.
bool namesFile(const Value& value, const std::vector<std::string>& words) {
  if (value.type.form != Form::kCommandLine) return value.type.completion == Completion::kFiles && !words.empty();
  for (size_t i = 0; i < words.size(); ++i) {
    const Value* next = placeBehind(grammar(), {words.begin(), words.begin() + static_cast<std::ptrdiff_t>(i)}).next;
    if (next && next->type.completion == Completion::kFiles) return true;
  }
  return false;
}

// Files are named by those alone who may change something: what is read from them could be any file of the machine.
bool namesFile(const Command& row, const Given& given) {
  for (size_t i = 0; i < given.size(); ++i) {
    if (namesFile(row.values[i], given[i])) return true;
  }
  return false;
}

void addRow(CLI::App& place, const Session& session, const Command& row) {
  auto given = std::make_shared<Given>(row.values.size());
  bool rest = false;
  for (size_t i = 0; i < row.values.size(); ++i) {
    rest = rest || row.values[i].type.form == Form::kCommandLine;
    if (rest || (row.script && row.values[i].isOption())) continue;
    addValue(place, row.values[i], [given, i](const std::string& word) { (*given)[i].push_back(word); });
  }
  if (rest) place.prefix_command()->fallthrough(false);
  place.callback([&place, &session, &row, given, rest] {
    if (!place.get_subcommands().empty()) return;
    if (rest) given->back() = place.remaining();
    runRow(session, row, *given);
  });
}

// A second row of the same words is one of saved scripts, which the parser cannot read: it is told of below the first.
bool isSecond(const std::vector<Command>& rows, const Command& row) {
  return row.script && std::any_of(rows.begin(), rows.end(),
                                   [&row](const Command& other) { return &other < &row && other.words == row.words; });
}

std::string footerOf(const Command& row) {
  const std::string options = scriptOptions(row);
  std::string text = options.empty() ? "" : "In a saved script:\n  " + syntaxOf(row) + "\n" + options;
  return text + row.more;
}

void addFooter(CLI::App& place, const Command& row) {
  const std::string footer = footerOf(row);
  const std::string before = place.get_footer();
  if (!footer.empty()) place.footer(before + (before.empty() ? "" : "\n\n") + footer);
}

void addCommand(CLI::App& app, const Session& session, const std::vector<Command>& rows, const Command& row) {
  CLI::App* place = &app;
  for (size_t i = 0; i + 1 < row.words.size(); ++i) place = place->get_subcommand(row.words[i]);
  if (isSecond(rows, row)) return addFooter(*place->get_subcommand(row.words.back()), row);
  place = place->add_subcommand(row.words.back(), row.help);
  addFooter(*place, row);
  if (row.hidden || row.script) place->group("");
  if (hasBelow(rows, row)) place->require_subcommand(row.run ? 0 : 1, 1);
  if (row.run) addRow(*place, session, row);
}

}  // namespace

void runRow(const Session& session, const Command& row, const Given& given) {
  refuseKeeping(session, row);
  requireOutput(session, row);
  Session own = session;
  own.changes = row.changes;
  own.keepsRevision = keepsRevision(row);
  if (session.readsOnly && (row.changes || row.secret || row.hidden || namesFile(row, given))) {
    throw Refusal(kNotPermitted, session.readsOnly);
  }
  Recording::forget();
  row.run(own, given);
  tellUnkept(own);
}

void describeProgram(CLI::App& app, Session& session) {
  app.require_subcommand(0, 1);
  app.fallthrough();
  app.footer(exitCodesText());
  app.set_version_flag("--version", tools::versionText("kestrovectl"));
  addSharedOptions(app, session);
}

bool mayGive(const Session& session, const std::string& option) {
  return session.loggedIn.empty() || (option != "--source" && option != "--user");
}

void addSharedOptions(CLI::App& app, Session& session) {
  for (const Argument<Session>& argument : sharedOptions()) {
    if (!mayGive(session, argument.name)) continue;
    addValue(app, argument, [&argument, &session](const std::string& word) { argument.put(session, word); });
  }
}

void addCommands(CLI::App& app, const Session& session, const std::vector<Command>& rows) {
  for (const Command& row : rows) addCommand(app, session, rows, row);
}

void addNamedCommands(CLI::App& app, const Session& session, const std::vector<Command>& rows,
                      const std::vector<std::string>& line) {
  for (const Command& row : rows) {
    if (std::ranges::find(line, row.words.front()) != line.end()) addCommand(app, session, rows, row);
  }
}

}  // namespace ctl
