// Taking back an account whose password could not be added.
#pragma once

namespace kestrove {

// removeUser, which knows nobody who is not in the password file; an account that has no line there yet is taken off
// the table by itself, and the table saved. Takes the lock.
void undoAccount(const char* name);

}  // namespace kestrove
