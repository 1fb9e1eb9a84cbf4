// SPDX-License-Identifier: Apache-2.0
// The document of the interface, from the table of endpoints and the shapes of the commands behind it.
#pragma once

#include <string>

namespace api {

// OpenAPI 3.0, as YAML.
std::string openApiText();

}  // namespace api
