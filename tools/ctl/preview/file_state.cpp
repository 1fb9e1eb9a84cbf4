// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/preview/file_state.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "kestrove/segment.h"
#include "tools/ctl/session.h"

namespace ctl::preview {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFolders[] = {"/etc/config", "/var/log/kestrove", "/var/config",       "/var/net-snmp",
                                    "/var/etc",    "/var/lib/dhcpcd",   "/usr/local/apache2"};
constexpr const char* kSecrets[] = {"/etc/passwd", "/etc/passwd-", "/etc/shadow", "/etc/shadow-"};
constexpr uintmax_t kLongest = 16 << 20;
constexpr auto kOptions = fs::directory_options::skip_permission_denied;

// Of one file too.
template <typename Visit>
void visit(const fs::path& place, const Visit& visitor) {
  std::error_code error;
  if (fs::is_regular_file(fs::symlink_status(place, error))) return visitor(place);
  for (fs::recursive_directory_iterator entry(place, kOptions, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code gone;
    if (entry->is_regular_file(gone) && !entry->is_symlink(gone) && entry->file_size(gone) <= kLongest) {
      visitor(entry->path());
    }
  }
}

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Tells contents apart, and nothing of them.
std::string markOf(const std::string& content) {
  uint64_t hash = 0xcbf29ce484222325;
  for (char c : content) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  char mark[20];
  snprintf(mark, sizeof mark, "%08x", static_cast<unsigned>(hash ^ hash >> 32));
  return mark;
}

bool binary(const std::string& content) { return content.find('\0') != std::string::npos; }

// "name:hash:..." with what is between the first two colons replaced, where that is a hash.
std::string withoutSecret(const std::string& line) {
  const size_t start = line.find(':') + 1;
  const size_t end = std::min(line.find(':', start), line.size());
  if (start == 0 || end - start < 3) return line;
  return line.substr(0, start) + "(hidden " + markOf(line.substr(start, end - start)) + ")" + line.substr(end);
}

std::string withoutSecrets(const std::string& content) {
  std::istringstream lines(content);
  std::string text;
  for (std::string line; std::getline(lines, line);) text += withoutSecret(line) + "\n";
  return text;
}

std::string shown(const fs::path& path) {
  std::string content = contentOf(path);
  for (const char* secret : kSecrets) {
    if (path == secret) return withoutSecrets(content);
  }
  if (!binary(content)) return content;
  return "(binary, " + std::to_string(content.size()) + " bytes, " + markOf(content) + ")\n";
}

// Folders keep who may enter them.
void copyTo(const fs::path& from, const fs::path& to) {
  std::error_code ignored;
  fs::create_directories(to.parent_path(), ignored);
  fs::permissions(to.parent_path(), fs::status(from.parent_path(), ignored).permissions(), ignored);
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, ignored);
}

}  // namespace

std::vector<std::string> ownPlaces() {
  std::vector<std::string> places(std::begin(kFolders), std::end(kFolders));
  for (const std::string& file : {text(shm->config.configFileName), text(shm->config.eventLogFileName)}) {
    if (file.starts_with("/")) places.push_back(file);
  }
  return places;
}

std::string ownBooks() {
  const char* home = getenv("KESTROVE_HOME");
  return home ? home : "/var/lib/kestrove";
}

void exportFiles(const std::string& folder, const std::vector<std::string>& places) {
  for (const std::string& place : places) {
    visit(place, [&folder](const fs::path& path) { copyTo(path, folder + path.string()); });
  }
}

void importFiles(const std::string& folder) {
  visit(folder, [&folder](const fs::path& path) { copyTo(path, path.string().substr(folder.size())); });
}

std::map<std::string, std::string> fileState(const std::vector<std::string>& places) {
  std::map<std::string, std::string> files;
  auto take = [&files](const fs::path& path) { files[path.string()] = shown(path); };
  visit("/etc", take);
  for (const std::string& place : places) visit(place, take);
  return files;
}

}  // namespace ctl::preview
