// SPDX-License-Identifier: Apache-2.0
// kestrovectl-reference: prints the commands of kestrovectl as its document has them.
#include <cstdio>

#include "tools/ctl/reference.h"

int main() { return fputs(ctl::reference(ctl::grammar()).c_str(), stdout) == EOF; }
