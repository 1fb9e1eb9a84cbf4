// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/usage.h"

#include <vector>

#include "tools/common/plain_text.h"

namespace ctl {
namespace {

const CLI::App* innermost(const CLI::App& app) {
  const CLI::App* command = &app;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  return command;
}

std::string nameOf(const CLI::App& command) {
  const CLI::App* parent = command.get_parent();
  return parent ? nameOf(*parent) + " " + command.get_name() : command.get_name();
}

std::vector<std::string> commandsOf(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::App* sub : command.get_subcommands([](const CLI::App* one) { return !one->get_group().empty(); })) {
    names.push_back(sub->get_name());
  }
  return names;
}

// Of the command and of everything around it.
std::vector<std::string> optionsOf(const CLI::App* command) {
  std::vector<std::string> names;
  for (; command; command = command->get_parent()) {
    for (const CLI::Option* option : command->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

std::string hint(const std::string& word, const std::vector<std::string>& names) {
  const std::string near = tools::nearest(word, names);
  return near.empty() ? "" : "; did you mean " + near + "?";
}

std::string unexpected(const CLI::App& app, const std::string& word) {
  const CLI::App* command = innermost(app);
  if (word.starts_with("-")) return word + ": no such option" + hint(word, optionsOf(command));
  const std::vector<std::string> commands = commandsOf(*command);
  if (commands.empty()) return word + ": one word too many";
  const std::string place = command == &app ? "" : " of " + nameOf(*command);
  return word + ": no such command" + place + hint(word, commands);
}

}  // namespace

std::string helpOf(const CLI::App& app) {
  return app.help("", app.get_subcommands().empty() ? CLI::AppFormatMode::All : CLI::AppFormatMode::Normal);
}

std::string usageOf(const CLI::App& app) {
  const std::string help = app.help("");
  const size_t start = help.find("Usage: ");
  return start == std::string::npos ? "" : help.substr(start, help.find('\n', start) - start);
}

std::string usageError(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> words = app.remaining(true);
  return words.empty() ? error.what() : unexpected(app, words.front());
}

}  // namespace ctl
