// The directory through which files go into an archive and come out of one.
#pragma once

namespace kestrove {

// Makes the directory, for nobody else to read: the copies in it hold password hashes and stand among the documents of
// the web server.
void makeStaging();

bool exists(const char* path);

// Known not to be there: a file that cannot be looked at is none that may be passed over.
bool missing(const char* path);

}  // namespace kestrove
