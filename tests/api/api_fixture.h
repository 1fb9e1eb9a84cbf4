// SPDX-License-Identifier: Apache-2.0
// Requests to a store of our own, answered without a socket.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "kestrove/kestrove.h"
#include "tests/support/peer.h"
#include "tests/support/store.h"
#include "tools/api/endpoint.h"
#include "tools/api/plan.h"

namespace kestrove::testing {

using Json = api::Json;

constexpr char kPassword[] = "Passw0rd!";
constexpr char kHome[] = "192.0.2.1";

// The work of a peer that holds the store's lock from its 'l' until it is killed.
inline int holdLock(const Peer::Line& line) {
  shm_lock();
  line.say('l');
  line.hear();
  return 0;
}

struct Browser {
  std::string cookie;
  std::string csrf;
};

class ApiTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    passwords_ = readFile("/etc/passwd");
    shm->config.httpOperState = SHM_ON;
    shm->config.loggingOperState = SHM_ON;
    add("alice", 1);
    add("guest", 2);
    shm->eventLog.writeIndex = 0;
  }
  void TearDown() override {
    endWatchers();
    for (const char* path : {"/run/kestrove/sessions", "/run/kestrove/failures", "/var/lib/kestrove"}) {
      std::filesystem::remove_all(path);
    }
    writeFile("/etc/passwd", passwords_);
    StoreTest::TearDown();
  }

  static void add(const std::string& name, int32_t superUser) {
    UserAccount account = {};
    memcpy(account.username, name.data(), name.size());
    account.superUser = superUser;
    ASSERT_EQ(0, addUser(&account, kPassword)) << shm_strerror(static_cast<int>(shm_errno));
  }

  static api::Request request(const std::string& method, const std::string& path, const Json& body = nullptr) {
    api::Request made;
    made.method = method;
    made.path = api::kPrefix + path.substr(0, path.find('?'));
    made.headers["host"] = kHome;
    if (body.is_null()) return made;
    made.headers["content-type"] = "application/json";
    made.body = body.dump();
    return made;
  }

  static api::Reply logInAs(const std::string& user, const std::string& password = kPassword) {
    return api::answer(request("POST", "/session", {{"user", user}, {"password", password}}));
  }
  static Browser browserOf(const std::string& user) {
    const api::Reply reply = logInAs(user);
    EXPECT_EQ(201, reply.status) << reply.body;
    const std::string cookie = reply.header("Set-Cookie");
    return {cookie.substr(0, cookie.find(';')), Json::parse(reply.body).value("csrf", "")};
  }

  static api::Request from(const Browser& browser, api::Request made) {
    made.headers["cookie"] = browser.cookie;
    made.headers["x-csrf-token"] = browser.csrf;
    return made;
  }
  static api::Reply ask(const Browser& browser, const std::string& method, const std::string& path,
                        const Json& body = nullptr, const api::Fields& query = {}) {
    api::Request made = from(browser, request(method, path, body));
    made.query = query;
    return api::answer(made);
  }

  // The settings, and all files that a change could reach but those of log-ins.
  static std::string everything() {
    std::string all(reinterpret_cast<const char*>(&shm->config), reinterpret_cast<const char*>(&shm->qos));
    for (const char* folder : {"/etc/config", "/var/lib/kestrove", "/usr/local/apache2/htdocs"}) {
      if (!fileExists(folder)) continue;
      std::vector<std::string> files;
      for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
      }
      std::sort(files.begin(), files.end());
      for (const std::string& file : files) all += file + numberOf(file) + readFile(file);
    }
    return all + readFile("/etc/passwd");
  }

  // "21 2 alice" of each.
  static std::vector<std::string> events() {
    std::vector<std::string> found;
    for (uint32_t i = 0; i < shm->eventLog.writeIndex; ++i) {
      const EventRecord& event = shm->eventLog.record[i];
      found.push_back(std::to_string(event.eventId) + " " + std::to_string(event.source) + " " + event.userName);
    }
    return found;
  }

 private:
  static bool isWatcher(int process) {
    return readFile("/proc/" + std::to_string(process) + "/cmdline")
        .starts_with(std::string("kestrovectl\0confirm-", 20));
  }
  // Whoever waits for a confirmation would still write while all is removed.
  static void endWatchers() {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
      const int process = atoi(entry.path().filename().c_str());
      if (process <= 0 || !isWatcher(process)) continue;
      kill(process, SIGKILL);
      while (isWatcher(process)) usleep(1000);
    }
  }

  // A file that is written anew is another one.
  static std::string numberOf(const std::string& file) {
    struct stat facts = {};
    stat(file.c_str(), &facts);
    return " " + std::to_string(facts.st_ino) + "\n";
  }

  std::string passwords_;
};

inline Json jsonOf(const api::Reply& reply) { return Json::parse(reply.body, nullptr, false); }

}  // namespace kestrove::testing
