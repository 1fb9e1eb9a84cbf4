// SPDX-License-Identifier: Apache-2.0
// kestrove-monitor: starts the engine and the servers, and again when they die.
#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/common/service.h"
#include "tools/monitor/misc.h"
#include "tools/monitor/monitor.h"

namespace {

using namespace monitor;

constexpr tools::Service kService = {"kestrove-monitor",
                                     "Starts the engine and the servers that are switched on, and again when they die.",
                                     "Exit status:\n"
                                     "  0  told to end\n"
                                     "  1  another monitor runs\n"
                                     "  2  wrong usage\n"
                                     "  3  a library of another layout\n"
                                     "  5  the folder cannot be used; or standard output cannot be written\n"
                                     "  7  not permitted"};

std::string checkTask(const std::string& task) {
  const size_t end = task.find('=');
  if (end == std::string::npos) return "\"" + task + "\" is not NAME=COMMAND";
  if (!findTask(task.substr(0, end))) return "no task \"" + task.substr(0, end) + "\"";
  const std::vector<std::string> words = wordsOf(task.substr(end + 1));
  return words.empty() || words[0].starts_with("/") ? "" : "\"" + words[0] + "\" is no whole path";
}

void describe(CLI::App& app, Options& options) {
  app.add_option("--task", options.tasks, "NAME=COMMAND: how a task is started, nothing for not at all")
      ->check(checkTask)
      ->expected(1)
      ->take_all();
  app.add_option("--metrics", options.metrics, "Into this file for the node exporter, empty for none")
      ->take_last()
      ->capture_default_str();
  app.add_option("--every", options.every, "Seconds between two writings of it")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  app.add_option("--folder", options.folder, "For its lock, its notes and the socket for records")
      ->take_last()
      ->capture_default_str();
  app.add_option("--first-delay", options.limits.firstDelay,
                 "Milliseconds after a start that failed, doubled each time")
      ->check(CLI::Range(1, 60000))
      ->capture_default_str();
  app.add_option("--ready-in", options.limits.ready, "Milliseconds for the engine to take its slot")
      ->check(CLI::Range(1, 600000))
      ->capture_default_str();
  app.add_flag("--misc", options.misc, "Be the task miscMonitor, which the monitor starts by itself");
}

// One monitor for a folder: the kernel drops the lock of one that dies. A record lock: one of the open file would live
// on in a task that was being started at that moment.
Exit takePlace(const std::string& folder, kestrove::sys::Descriptor& place) {
  if (mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST) return errno == EACCES ? kNotPermitted : kSystem;
  const std::string path = folder + "/monitor.lock";
  place = kestrove::sys::Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!place) return errno == EACCES ? kNotPermitted : kSystem;
  struct flock whole = {};
  whole.l_type = F_WRLCK;
  return fcntl(place.get(), F_SETLK, &whole) == 0 ? kDone : kAnother;
}

int watch(const Options& options) {
  kestrove::sys::Descriptor place;
  const Exit taken = takePlace(options.folder, place);
  if (taken == kAnother) return tools::fail(kService, taken, "another monitor runs");
  if (taken != kDone) return tools::fail(kService, taken, options.folder + ": " + strerror(errno));
  return Monitor(options).run();
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  return tools::runService(
      kService, argc, argv, [&](CLI::App& app) { describe(app, options); },
      [&](FILE*) {
        openlog(kService.name, LOG_PID, LOG_DAEMON);
        return options.misc ? int{runMisc(options)} : watch(options);
      });
}
