// SPDX-License-Identifier: Apache-2.0
// kestrovectl-reference: prints the commands of kestrovectl as its document has them. With json the shapes of their
// JSON; with man the source of the manual page; with keywords DOCUMENT PAGE that of the configuration file's.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "tools/ctl/manual.h"
#include "tools/ctl/reference.h"
#include "tools/ctl/shape.h"

namespace {

std::string whole(const char* path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(std::string(path) + " cannot be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string wanted(std::string_view what, char** paths) {
  if (what == "json") return ctl::shapesDocument(ctl::grammar());
  if (what == "man") return ctl::manualPage(ctl::grammar());
  if (what == "keywords") return ctl::keywordPage(whole(paths[1]), whole(paths[0]));
  return ctl::reference(ctl::grammar());
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view what = argc > 1 ? argv[1] : "";
  if (what == "keywords" && argc != 4) return 2;
  try {
    return fputs(wanted(what, argv + 2).c_str(), stdout) == EOF;
  } catch (const std::exception& error) {
    fprintf(stderr, "kestrovectl-reference: %s\n", error.what());
    return 1;
  }
}
