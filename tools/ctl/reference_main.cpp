// SPDX-License-Identifier: Apache-2.0
// kestrovectl-reference [json]: prints the commands of kestrovectl, or the shapes of their JSON, as the documents have
// them.
#include <cstdio>
#include <string_view>

#include "tools/ctl/reference.h"
#include "tools/ctl/shape.h"

int main(int argc, char** argv) {
  const std::string_view what = argc > 1 ? argv[1] : "";
  const std::string text = what == "json" ? ctl::shapesDocument(ctl::grammar()) : ctl::reference(ctl::grammar());
  return fputs(text.c_str(), stdout) == EOF;
}
