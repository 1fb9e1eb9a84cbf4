// SPDX-License-Identifier: Apache-2.0
#include "tools/common/program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace tools {
namespace {

std::string readAll(int fd) {
  std::string text;
  char buffer[4096];
  for (ssize_t length; (length = read(fd, buffer, sizeof buffer)) != 0;) {
    if (length > 0) {
      text.append(buffer, static_cast<size_t>(length));
    } else if (errno != EINTR) {
      break;
    }
  }
  return text;
}

bool executable(const std::string& path) { return access(path.c_str(), X_OK) == 0; }

}  // namespace

Output runForOutput(const std::vector<std::string>& vector, bool quiet) {
  int ends[2];
  Output output;
  if (pipe2(ends, O_CLOEXEC) != 0) return output;
  pid_t child = fork();
  if (child == 0) {
    std::vector<char*> arguments;
    for (const std::string& argument : vector) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    dup2(ends[1], STDOUT_FILENO);
    const int nowhere = quiet ? open("/dev/null", O_WRONLY | O_CLOEXEC) : -1;
    if (nowhere != -1) dup2(nowhere, STDERR_FILENO);
    execvp(arguments[0], arguments.data());
    _exit(127);
  }
  close(ends[1]);
  if (child > 0) {
    output.text = readAll(ends[0]);
    int status = 0;
    while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
    if (WIFEXITED(status)) output.status = WEXITSTATUS(status);
  }
  close(ends[0]);
  return output;
}

Output runForOutput(const char* line) { return runForOutput(std::vector<std::string>{"/bin/sh", "-c", line}); }

std::string ownFolder() {
  char path[4096];
  ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return ".";
  std::string whole(path, static_cast<size_t>(length));
  return whole.substr(0, whole.find_last_of('/'));
}

std::string findProgram(const std::string& name, const std::string& relativeFolder) {
  const std::string folder = ownFolder() + "/";
  for (const std::string& path : {folder + name, folder + relativeFolder + "/" + name}) {
    if (executable(path)) return path;
  }
  const char* search = getenv("PATH");
  std::string list = search ? search : "";
  for (size_t start = 0; start <= list.size();) {
    size_t end = list.find(':', start);
    if (end == std::string::npos) end = list.size();
    std::string path = list.substr(start, end - start) + "/" + name;
    if (executable(path)) return path;
    start = end + 1;
  }
  return {};
}

}  // namespace tools
