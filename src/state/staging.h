// SPDX-License-Identifier: Apache-2.0
// The directory through which files go into an archive and come out of one.
#pragma once

namespace kestrove {

// Makes the directory, for nobody else to read: the copies in it hold password hashes and stand among the documents of
// the web server. False, with the reason logged and nothing run, when something else than a directory bears its name: a
// link would lead the copies elsewhere.
[[nodiscard]] bool makeStaging();

// Takes every copy of an earlier archive out of the directory. False when one stays.
[[nodiscard]] bool dropOldCopies();

// What an archive has put there are regular files and no links. False when one is not, with its name logged.
[[nodiscard]] bool copiesAreRegular();

[[nodiscard]] bool exists(const char* path);

// Known not to be there: a file that cannot be looked at is none that may be passed over.
[[nodiscard]] bool missing(const char* path);

}  // namespace kestrove
