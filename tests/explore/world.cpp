// SPDX-License-Identifier: Apache-2.0
#include "tests/explore/world.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "tests/explore/report.h"

namespace kestrove::explore {

const char* const kComponentNames[kComponents] = {
    "results",       "store",    "configuration file", "events",       "password file",
    "resolver file", "programs", "files beside them",  "kernel tables"};

namespace {

constexpr Component kFileComponents[] = {kConfiguration, kEvents, kPasswords, kResolver, kStarted};
constexpr const char* kFiles[] = {"/etc/config/kestrove.conf", "/var/log/kestrove/event.log", "/etc/passwd",
                                  "/etc/resolv.conf", kStartedPrograms};
constexpr const char* kFolders[] = {"/etc/config", "/etc", "/var/log/kestrove"};

bool saved(const std::string& path) {
  return std::find(std::begin(kFiles), std::end(kFiles), path) != std::end(kFiles);
}

// What a killed save leaves, the next one removes.
bool temporary(const std::string& path) { return path[path.rfind('/') + 1] == '.'; }

}  // namespace

uint64_t markOf(const void* data, size_t size, uint64_t mark) {
  constexpr uint64_t kFactor = 0x9E3779B97F4A7C15u;
  const auto* bytes = static_cast<const unsigned char*>(data);
  mark = (mark ^ size) * kFactor + 1;
  for (size_t at = 0; at < size; at += sizeof mark) {
    uint64_t word = 0;
    memcpy(&word, bytes + at, std::min(sizeof word, size - at));
    mark = (mark ^ word) * kFactor;
    mark ^= mark >> 29;
  }
  return mark;
}

void FileState::read() {
  text.clear();
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  there = fd != -1;
  struct stat status;
  if (!there || fstat(fd, &status) != 0) return;
  text.resize(static_cast<size_t>(status.st_size));
  ssize_t got = ::read(fd, text.data(), text.size());
  text.resize(got > 0 ? static_cast<size_t>(got) : 0);
  close(fd);
}

// Started programs: those without the lock have no order, and come last.
void FileState::sortLines() {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line + "\n");
  auto held = [](const std::string& line) { return line.rfind(kStartedFreely, 0) != 0; };
  std::sort(std::stable_partition(lines.begin(), lines.end(), held), lines.end());
  text.clear();
  for (const std::string& line : lines) text += line;
}

void FileState::write() const {
  if (!there) {
    unlink(path.c_str());
    return;
  }
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd == -1 || ::write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    perror(path.c_str());
    exit(2);
  }
  close(fd);
}

std::vector<std::string> Folder::names() const {
  std::vector<std::string> found;
  DIR* directory = opendir(path_);
  if (!directory) return found;
  while (const dirent* entry = readdir(directory)) found.push_back(std::string(path_) + "/" + entry->d_name);
  closedir(directory);
  std::sort(found.begin(), found.end());
  return found;
}

void Folder::keep() { kept_ = names(); }

// The time of a change is a coarse one, but nobody adds and forgets a file without changing the size as well.
std::vector<std::string> Folder::added() {
  std::vector<std::string> rest;
  struct stat now;
  if (stat(path_, &now) != 0) return rest;
  bool same = now.st_size == size_ && now.st_mtim.tv_sec == changed_.tv_sec && now.st_mtim.tv_nsec == changed_.tv_nsec;
  if (same) return rest;
  for (const std::string& name : names()) {
    if (!saved(name) && !std::binary_search(kept_.begin(), kept_.end(), name)) rest.push_back(name);
  }
  size_ = rest.empty() ? now.st_size : -1;
  changed_ = now.st_mtim;
  return rest;
}

void World::keep() {
  files_.clear();
  for (const char* path : kFiles) {
    files_.push_back({path, false, {}, false});
    files_.back().read();
  }
  folders_.clear();
  for (const char* path : kFolders) folders_.emplace_back(path).keep();
  tables_ = kernel_.entries();
  std::string tables = textOf(tables_);
  tablesMark_ = markOf(tables.data(), tables.size());
  store_.keep();
}

void World::lookAtFiles(Outcome& outcome, bool inWords) {
  for (size_t i = 0; i < files_.size(); ++i) {
    FileState now = {files_[i].path, false, {}, false};
    now.read();
    if (kFileComponents[i] == kStarted) {
      programWaits_ = now.text.find(kStartedUnderLock) != std::string::npos;
      now.sortLines();
    }
    files_[i].changed = now.there != files_[i].there || now.text != files_[i].text;
    bool told = files_[i].changed && now.there;
    outcome.mark[kFileComponents[i]] = told ? markOf(now.text.data(), now.text.size()) : !files_[i].changed;
    if (inWords) outcome.text[kFileComponents[i]] = now.there ? now.text : "(no file)";
  }
}

void World::lookForLeftovers(Outcome& outcome, bool killed, bool inWords) {
  leftovers_.clear();
  std::string found;
  for (Folder& folder : folders_) {
    for (const std::string& name : folder.added()) {
      leftovers_.push_back(name);
      if (!killed || !temporary(name)) found += name + "\n";
    }
  }
  outcome.mark[kLeftovers] = markOf(found.data(), found.size());
  if (inWords) outcome.text[kLeftovers] = found;
}

void World::lookAtKernel(Outcome& outcome, bool inWords) {
  std::string tables = textOf(kernel_.entries());
  outcome.mark[kKernelTables] = markOf(tables.data(), tables.size());
  tablesChanged_ = outcome.mark[kKernelTables] != tablesMark_;
  if (inWords) outcome.text[kKernelTables] = tables;
}

Outcome World::look(bool kernel, bool killed, bool inWords) {
  Outcome outcome;
  if (store_.attach()) {
    outcome.mark[kStore] = store_.mark();
    if (inWords) outcome.text[kStore] = store_.differences();
  }
  lookAtFiles(outcome, inWords);
  lookForLeftovers(outcome, killed, inWords);
  if (kernel) lookAtKernel(outcome, inWords);
  return outcome;
}

void World::restoreFiles() {
  for (FileState& file : files_) {
    if (file.changed) file.write();
    file.changed = false;
  }
  for (const std::string& name : leftovers_) unlink(name.c_str());
  leftovers_.clear();
}

void World::restore(bool withStore) {
  restoreFiles();
  if (tablesChanged_ && !kernel_.restore(tables_)) {
    fprintf(stderr, "explore: the kernel does not take its tables back:\n%s-- wanted:\n%s",
            textOf(kernel_.entries()).c_str(), textOf(tables_).c_str());
    exit(2);
  }
  tablesChanged_ = false;
  if (!withStore) {
    store_.destroy();
    return;
  }
  store_.recreate();
  store_.restore();
}

}  // namespace kestrove::explore
