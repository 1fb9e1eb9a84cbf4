// SPDX-License-Identifier: Apache-2.0
// The frame of a program that serves until it is told to end: from main to its work.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace tools {

// Of every service; each may have others of its own.
enum ServiceExit { kToldToEnd = 0, kWrongUsage = 2, kOtherLibrary = 3, kCannotServe = 5 };

struct Service {
  const char* name;
  const char* about;      // a sentence
  const char* exitCodes;  // a table, below the options
};

// Looks at the library and at the words of the command line, and has the work done; its result is the exit status.
// Standard output is the stream alone.
int runService(const Service& service, int argc, char** argv, const std::function<void(CLI::App&)>& describe,
               const std::function<int(FILE* out)>& work);

// Says on standard error why; gives the exit status back.
int fail(const Service& service, int exit, const std::string& message);

// The exit status of a text on standard output.
int print(const Service& service, FILE* out, const std::string& text);

}  // namespace tools
