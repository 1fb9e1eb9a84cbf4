// SPDX-License-Identifier: Apache-2.0
#include "tools/common/service.h"

#include <CLI/CLI.hpp>

#include "tools/common/plain_text.h"
#include "tools/common/standard_output.h"
#include "tools/common/version_text.h"

namespace tools {

int fail(const Service& service, int exit, const std::string& message) {
  fprintf(stderr, "%s: %s\n", service.name, escaped(message).c_str());
  return exit;
}

int print(const Service& service, FILE* out, const std::string& text) {
  const std::string failure = writeOut(out, text);
  return failure.empty() ? kToldToEnd : fail(service, kCannotServe, failure);
}

int runService(const Service& service, int argc, char** argv, const std::function<void(CLI::App&)>& describe,
               const std::function<int(FILE* out)>& work) {
  FILE* out = takeStandardOutput();
  if (const std::string other = libraryRefusal(); !other.empty()) return fail(service, kOtherLibrary, other);
  if (const std::string refused = refusedWord(argc, argv); !refused.empty()) return fail(service, kWrongUsage, refused);
  CLI::App app(service.about, service.name);
  app.footer(service.exitCodes);
  app.set_version_flag("--version", versionText(service.name));
  describe(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return print(service, out, app.help());
  } catch (const CLI::CallForVersion&) {
    return print(service, out, versionText(service.name) + "\n");
  } catch (const CLI::ParseError& error) {
    return fail(service, kWrongUsage, error.what());
  }
  return work(out);
}

}  // namespace tools
