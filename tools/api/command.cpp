// SPDX-License-Identifier: Apache-2.0
#include "tools/api/command.h"

#include <sys/mman.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "kestrove/codes.h"
#include "tools/api/failure.h"
#include "tools/ctl/script/run_line.h"

namespace api {
namespace {

constexpr double kLongestConfirmation = 1440;

double minutesOf(const std::string& text) {
  char* end = nullptr;
  errno = 0;
  const double minutes = strtod(text.c_str(), &end);
  const bool number = !text.empty() && text.find_first_not_of("0123456789.") == std::string::npos && *end == '\0';
  if (!number || errno != 0 || minutes > kLongestConfirmation) throw Failure(400, "confirm: 0 to 1440 minutes");
  return minutes;
}

}  // namespace

Printed run(ctl::Session session, const std::vector<std::string>& words) {
  char* text = nullptr;
  size_t length = 0;
  session.out = open_memstream(&text, &length);
  if (!session.out) throw ctl::systemRefusal("memory", errno);
  const int exit = ctl::runWords(session, words);
  fclose(session.out);
  const std::unique_ptr<char, void (*)(void*)> owned(text, free);
  return {exit, std::string(text, length)};
}

ctl::Session sessionOf(const Request& request, const Caller& caller) {
  ctl::Session session;
  session.json = true;
  session.source = SHM_SOURCE_HTTP;
  session.user = caller.user;
  session.loggedIn = caller.user;
  session.waitSeconds = kPatience;
  session.leavesEqual = true;
  if (request.query.contains("comment")) session.comment = request.query.at("comment");
  if (request.query.contains("confirm")) session.confirmMinutes = minutesOf(request.query.at("confirm"));
  return session;
}

void logNoPasswords() { setlogmask(LOG_UPTO(LOG_INFO)); }

void giveInput(const std::string& input) {
  const int fd = memfd_create("input", MFD_CLOEXEC);
  if (fd == -1) throw ctl::systemRefusal("memory", errno);
  const bool written = write(fd, input.data(), input.size()) == static_cast<ssize_t>(input.size());
  if (!written || lseek(fd, 0, SEEK_SET) != 0 || dup2(fd, STDIN_FILENO) == -1)
    throw ctl::systemRefusal("memory", errno);
  close(fd);
}

}  // namespace api
