// Every section of the store as JSON: addresses as text, switches as words.
#pragma once

#include "tools/ctl/session.h"

namespace ctl {

// A member for each section of the dump. Throws a Refusal when the store cannot be read.
Json dumpJson();

}  // namespace ctl
