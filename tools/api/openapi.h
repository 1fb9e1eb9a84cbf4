// SPDX-License-Identifier: Apache-2.0
// The document of the interface, from the table of endpoints and the shapes of the commands behind it.
#pragma once

#include <optional>
#include <string>

#include "tools/api/endpoint.h"
#include "tools/ctl/shape.h"

namespace api {

// What a row's success looks like; nothing where that is no JSON, or none that has been written down.
std::optional<ctl::Shape> resultShape(const Endpoint& row);

// OpenAPI 3.0, as YAML.
std::string openApiText();

}  // namespace api
