// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/plain_file.h"

#include <sys/stat.h>

#include <cerrno>

#include "tools/ctl/session.h"

namespace ctl {
namespace {

std::string kindOf(mode_t mode) {
  if (S_ISDIR(mode)) return "a folder";
  if (S_ISFIFO(mode)) return "a pipe";
  if (S_ISCHR(mode) || S_ISBLK(mode)) return "a device";
  return "no plain file";
}

}  // namespace

off_t requirePlainFile(const std::string& path, const std::string& meant) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) throw systemRefusal(path, errno);
  if (!S_ISREG(facts.st_mode)) throw Refusal(kSystem, path + ": " + kindOf(facts.st_mode) + ", no " + meant);
  return facts.st_size;
}

}  // namespace ctl
