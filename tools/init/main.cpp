// SPDX-License-Identifier: Apache-2.0
// shm-init: builds the store when the appliance starts.
#include <unistd.h>

#include "CLI/CLI.hpp"
#include "kestrove/layout.h"
#include "tools/common/plain_text.h"
#include "tools/common/standard_output.h"
#include "tools/common/version_text.h"
#include "tools/init/startup.h"

namespace {

constexpr char kPlatformFile[] = "/etc/config/platform";
constexpr char kExitCodes[] =
    "Exit status:\n"
    "  0  built\n"
    "  1  a store exists\n"
    "  2  wrong usage or platform file\n"
    "  3  not built; or a library of another layout\n"
    "  4  built, but Unconfigured\n"
    "  5  built, but a later step failed; or standard output cannot be written\n"
    "  6  another process held the store's lock longer than --wait\n"
    "  7  not permitted";
const std::map<std::string, uint32_t> kSwitch = {{"on", SHM_ON}, {"off", SHM_OFF}};

struct CommandLine {
  init::Options options;
  init::Platform given;
  std::string platformFile;
};

void describe(CLI::App& app, CommandLine& line) {
  app.footer(kExitCodes);
  app.set_version_flag("--version", tools::versionText("shm-init"));
  app.add_flag("--replace", line.options.replace, "Remove a store that is there and build a new one");
  app.add_option("--wait", line.options.waitSeconds, "Seconds to wait for a store that another process has locked")
      ->check(CLI::Range(0.0, 86400.0))
      ->capture_default_str();
  app.add_option("--config", line.options.configPath, "Configuration file")->capture_default_str();
  app.add_option("--event-log", line.options.eventLogPath, "Image of the event log")->capture_default_str();
  app.add_option("--platform-file", line.platformFile,
                 "Words of the platform (default: /etc/config/platform if there)");
  app.add_option("--platform", line.given.hardwarePlatform, "Hardware platform")->check(CLI::Range(0, 15));
  app.add_option("--ipv6", line.given.ipv6Support, "IPv6 support, on or off")
      ->transform(CLI::CheckedTransformer(kSwitch));
  app.add_option("--wan-opt", line.given.wanOptSupport, "WAN optimisation support, on or off")
      ->transform(CLI::CheckedTransformer(kSwitch));
  app.add_option("--interval", line.given.accumulationInterval, "Seconds between the engine's reports")
      ->check(CLI::Range(1, 86400));
}

// What the command line gives goes before what the file says.
void readPlatformFile(CommandLine& line) {
  init::Platform& platform = line.options.platform;
  if (line.platformFile.empty() && access(kPlatformFile, F_OK) == 0) line.platformFile = kPlatformFile;
  if (!line.platformFile.empty()) {
    std::string wrong = init::readPlatform(line.platformFile, platform);
    if (!wrong.empty()) throw init::Failure(init::kUsage, wrong);
  }
  if (line.given.hardwarePlatform) platform.hardwarePlatform = line.given.hardwarePlatform;
  if (line.given.ipv6Support) platform.ipv6Support = line.given.ipv6Support;
  if (line.given.wanOptSupport) platform.wanOptSupport = line.given.wanOptSupport;
  if (line.given.accumulationInterval) platform.accumulationInterval = line.given.accumulationInterval;
}

int fail(init::Exit exit, const char* message) {
  fprintf(stderr, "shm-init: %s\n", tools::escaped(message).c_str());
  return exit;
}

int print(FILE* out, const std::string& text) {
  const std::string failure = tools::writeOut(out, text);
  return failure.empty() ? init::kBuilt : fail(init::kIncomplete, failure.c_str());
}

int run(int argc, char** argv, FILE* out) {
  const std::string otherLibrary = tools::libraryRefusal();
  if (!otherLibrary.empty()) return fail(init::kNotBuilt, otherLibrary.c_str());
  const std::string refused = tools::refusedWord(argc, argv);
  if (!refused.empty()) return fail(init::kUsage, refused.c_str());
  CommandLine line;
  CLI::App app("Builds the appliance's store from the factory defaults and the configuration file.", "shm-init");
  describe(app, line);
  try {
    app.parse(argc, argv);
    readPlatformFile(line);
    return init::startUp(line.options);
  } catch (const CLI::CallForHelp&) {
    return print(out, app.help());
  } catch (const CLI::CallForVersion&) {
    return print(out, tools::versionText("shm-init") + "\n");
  } catch (const CLI::ParseError& error) {
    return fail(init::kUsage, error.what());
  } catch (const init::Failure& failure) {
    return fail(failure.exit(), failure.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  FILE* out = tools::takeStandardOutput();
  return run(argc, argv, out);
}
