// SPDX-License-Identifier: Apache-2.0
// Prints doc/api.yaml.
#include <cstdio>

#include "tools/api/openapi.h"

int main() { return fputs(api::openApiText().c_str(), stdout) < 0; }
