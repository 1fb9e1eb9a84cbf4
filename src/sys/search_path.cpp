// SPDX-License-Identifier: Apache-2.0
#include "sys/search_path.h"

#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

namespace kestrove::sys {
namespace {

constexpr std::string_view kVariable = "PATH=";
constexpr std::string_view kReplacement = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
static_assert(kReplacement.substr(kVariable.size()) == kSystemFolders);

enum class Folder {
  kOurs,     // only root or the present user can change what is in it
  kSticky,   // others can put something into it, but not replace what is there
  kMissing,  // can be made by whoever may write to the folder above
  kForeign,
};

bool trustedOwner(uid_t owner) { return owner == 0 || owner == geteuid(); }

Folder judge(const char* path) {
  struct stat status;
  if (stat(path, &status) != 0) return errno == ENOENT ? Folder::kMissing : Folder::kForeign;
  if (!S_ISDIR(status.st_mode) || !trustedOwner(status.st_uid)) return Folder::kForeign;
  if (!(status.st_mode & (S_IWGRP | S_IWOTH))) return Folder::kOurs;
  return status.st_mode & S_ISVTX ? Folder::kSticky : Folder::kForeign;
}

// Walks from the root down, so that a missing folder is judged by the one that it would be made in.
bool trustedFolder(std::string_view entry) {
  char path[PATH_MAX];
  if (!entry.starts_with('/') || entry.size() >= sizeof path) return false;
  Folder folder = judge("/");
  for (size_t end = 1; end <= entry.size() && folder != Folder::kForeign; ++end) {
    if (end != entry.size() && entry[end] != '/') continue;
    memcpy(path, entry.data(), end);
    path[end] = '\0';
    Folder next = judge(path);
    if (next == Folder::kMissing) return folder == Folder::kOurs;
    folder = next;
  }
  return folder == Folder::kOurs;
}

bool trustedEntries(std::string_view path) {
  for (;;) {
    size_t end = path.find(':');
    if (!trustedFolder(path.substr(0, end))) return false;
    if (end == path.npos) return true;
    path.remove_prefix(end + 1);
  }
}

bool namesPath(const char* entry) { return strncmp(entry, kVariable.data(), kVariable.size()) == 0; }

// The next PATH of the environment from here on, null behind the last. There may be several: a shell takes another one
// than the C library.
char** nextPath(char** entry) {
  while (entry && *entry && !namesPath(*entry)) ++entry;
  return entry && *entry ? entry : nullptr;
}

}  // namespace

bool searchPathIsTrusted() {
  for (char** entry = nextPath(environ); entry; entry = nextPath(entry + 1)) {
    if (!secure_getenv("PATH") || !trustedEntries(*entry + kVariable.size())) return false;
  }
  return true;
}

// A second PATH is nobody's honest doing and does not come back.
TrustedSearchPath::TrustedSearchPath() {
  if (searchPathIsTrusted()) return;
  place_ = nextPath(environ);
  callers_ = *place_;
  for (char** entry = place_; entry; entry = nextPath(entry + 1)) *entry = const_cast<char*>(kReplacement.data());
}

TrustedSearchPath::~TrustedSearchPath() {
  if (place_) *place_ = callers_;
}

}  // namespace kestrove::sys
