// Taking back an account whose password could not be added.
#pragma once

#include <string_view>

namespace kestrove {

// Takes the last account of that name off the table and saves. The password file is left alone: a password that could
// not be added has no line there, and a line that was there before is the machine's own. Under the store lock.
void undoAccount(std::string_view name);

}  // namespace kestrove
