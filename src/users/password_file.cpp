// SPDX-License-Identifier: Apache-2.0
#include "users/password_file.h"

#include <errno.h>
#include <pwd.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <syslog.h>
#include <unistd.h>

#include "store/fail.h"
#include "sys/replace.h"
#include "sys/stream.h"
#include "users/kept_lines.h"
#include "users/system_lock.h"

namespace kestrove {
namespace {

constexpr char kPasswordFile[] = "/etc/passwd";

uid_t freeUserNumber() {
  uid_t number = 0;
  while (getpwuid(number)) number = static_cast<uid_t>(rand());
  return number;
}

// An unfinished last line would swallow the new one.
[[nodiscard]] bool finishLastLine(FILE* file, off_t size) {
  if (size == 0) return true;
  if (fseeko(file, -1, SEEK_END) != 0) return false;
  int last = fgetc(file);
  if (last == EOF || fseeko(file, 0, SEEK_END) != 0) return false;
  return last == '\n' || fputc('\n', file) != EOF;
}

[[nodiscard]] bool append(FILE* file, const struct passwd& entry) {
  if (fseeko(file, 0, SEEK_END) != 0) return false;
  off_t size = ftello(file);
  if (finishLastLine(file, size) && putpwent(&entry, file) == 0 && fflush(file) == 0) return true;
  int error = errno;
  __fpurge(file);
  if (ftruncate(fileno(file), size) != 0) syslog(LOG_ERR, "%s is left with part of a line: %m", kPasswordFile);
  errno = error;
  return false;
}

char* text(const char* constant) { return const_cast<char*>(constant); }  // struct passwd knows no const

}  // namespace

int appendPasswordLine(const char* name, const char* hash) {
  struct passwd entry = {};
  entry.pw_name = text(name);
  entry.pw_passwd = text(hash);
  entry.pw_uid = freeUserNumber();
  entry.pw_gecos = text("");
  entry.pw_dir = text("/root");
  entry.pw_shell = text("/usr/bin/serialUi.sh");
  SystemPasswordLock lock;
  sys::Stream file(fopen(kPasswordFile, "a+e"));
  return file && append(file.get(), entry) ? 0 : fail(SHM_EOPEN);
}

int removePasswordLines(std::string_view name) {
  SystemPasswordLock lock;
  KeptLines kept;
  sys::Stream file(fopen(kPasswordFile, "re"));
  if (!file || !kept.gather(file.get(), name)) return fail(SHM_EOPEN);
  sys::Replacement replacement(kPasswordFile);
  if (!replacement || !replacement.write(kept.data(), kept.size()) || !replacement.commit()) return fail(SHM_EOPEN);
  return 0;
}

}  // namespace kestrove
