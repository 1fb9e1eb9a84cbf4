// SPDX-License-Identifier: Apache-2.0
// Who comes in, and who does not.
#include <fcntl.h>
#include <sys/stat.h>

#include "tests/api/api_fixture.h"
#include "tests/support/syslog.h"
#include "tools/api/digest.h"
#include "tools/api/sessions.h"
#include "tools/api/tokens.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class SessionTest : public ApiTest {};

std::string sessionFile(const Browser& browser) {
  return std::string(api::kSessionFolder) + "/" + api::digest(browser.cookie.substr(browser.cookie.find('=') + 1));
}

void makeOlder(const std::string& file, time_t seconds) {
  struct stat facts;
  ASSERT_EQ(0, stat(file.c_str(), &facts));
  const struct timespec times[2] = {facts.st_atim, {facts.st_mtim.tv_sec - seconds, 0}};
  ASSERT_EQ(0, utimensat(AT_FDCWD, file.c_str(), times, 0));
}

// As if the failures were so old; those of a time to come stay as they are however slow the machine is.
void setFailuresAge(time_t seconds) {
  for (const auto& file : std::filesystem::directory_iterator("/run/kestrove/failures")) {
    const struct timespec times[2] = {{0, UTIME_OMIT}, {time(nullptr) - seconds, 0}};
    if (file.path().filename().string()[0] == '.') continue;
    ASSERT_EQ(0, utimensat(AT_FDCWD, file.path().c_str(), times, 0));
  }
}

constexpr time_t kToCome = -3600;

TEST_F(SessionTest, LogInIsLoggedStampedAndNamedInTheStoreByItsDigest) {
  const api::Reply reply = logInAs("alice");
  ASSERT_EQ(201, reply.status) << reply.body;
  const std::string cookie = reply.header("Set-Cookie");
  EXPECT_THAT(cookie, HasSubstr("__Host-kestrove="));
  EXPECT_THAT(cookie, HasSubstr("; Path=/; Secure; HttpOnly; SameSite=Strict"));
  EXPECT_EQ("admin", jsonOf(reply)["role"]);
  EXPECT_EQ(64u, jsonOf(reply)["csrf"].get<std::string>().size());
  EXPECT_THAT(events(), ElementsAre("21 2 alice"));
  EXPECT_NE(0, shm->config.users[0].lastLoginSeconds);
  const std::string held = cookie.substr(cookie.find('=') + 1, 64);
  EXPECT_EQ(api::digest(held), ctl::text(shm->config.httpEncryptedId));
  EXPECT_FALSE(fileExists(std::string(api::kSessionFolder) + "/" + held)) << "nobody is in by a name of the folder";
}

TEST_F(SessionTest, NoPasswordIsKeptAnywhere) {
  logInAs("alice", "Wr0ng-Secret!");
  EXPECT_THAT(readFile("/run/kestrove/syslog"), Not(HasSubstr("Wr0ng-Secret!")));
  const std::string store(reinterpret_cast<const char*>(shm), SHM_SIZE);
  EXPECT_EQ(std::string::npos, store.find("Wr0ng-Secret!"));
}

TEST_F(SessionTest, WrongPasswordIsLoggedAndWhoComesAgainTooSoonIsTold) {
  EXPECT_EQ(401, logInAs("alice", "Passw0rd?").status);
  EXPECT_THAT(events(), ElementsAre("22 2 alice"));
  setFailuresAge(kToCome);
  const api::Reply early = logInAs("alice");
  EXPECT_EQ(429, early.status) << "the right one, too: nothing is looked at";
  EXPECT_THAT(early.header("Retry-After"), ::testing::MatchesRegex("[1-9][0-9]*"));
  EXPECT_EQ(1u, events().size());
}

TEST_F(SessionTest, BeginningOfANameAndAnEmptyPasswordAreRefused) {
  EXPECT_EQ(401, logInAs("alic").status);
  EXPECT_THAT(events(), ElementsAre("22 2 --"));
  std::filesystem::remove_all("/run/kestrove/failures");
  EXPECT_EQ(401, logInAs("alice", "").status);
  std::filesystem::remove_all("/run/kestrove/failures");
  EXPECT_EQ(400, api::answer(request("POST", "/session", {{"user", "alice"}})).status);
  EXPECT_EQ(400, api::answer(request("POST", "/session", {{"user", 5}, {"password", kPassword}})).status);
}

TEST_F(SessionTest, EachFailureIsWaitedForTwiceAsLong) {
  std::vector<int> waits;
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(401, logInAs("alice", "Passw0rd?").status);
    setFailuresAge(kToCome);
    waits.push_back(std::stoi(logInAs("alice").header("Retry-After")));
    setFailuresAge(40);
  }
  EXPECT_THAT(waits, ElementsAre(1, 2, 4, 8));
}

TEST_F(SessionTest, LogOutEndsTheSessionOfTheServer) {
  const Browser earlier = browserOf("guest");
  const Browser browser = browserOf("alice");
  EXPECT_EQ("alice", jsonOf(ask(browser, "GET", "/session"))["user"]);
  EXPECT_EQ(200, ask(earlier, "DELETE", "/session").status);
  EXPECT_NE("", ctl::text(shm->config.httpEncryptedId)) << "of the one that is there";
  const api::Reply out = ask(browser, "DELETE", "/session");
  EXPECT_EQ("", ctl::text(shm->config.httpEncryptedId));
  EXPECT_EQ(200, out.status);
  EXPECT_THAT(out.header("Set-Cookie"), HasSubstr("Max-Age=0"));
  EXPECT_EQ(401, ask(browser, "GET", "/session").status);
}

TEST_F(SessionTest, WithoutAUseTheSessionEndsWhenItem54Says) {
  shm->config.httpSessionTimeout = 5;
  const Browser browser = browserOf("alice");
  makeOlder(sessionFile(browser), 4 * 60);
  EXPECT_EQ(200, ask(browser, "GET", "/session").status) << "a use: it begins anew";
  makeOlder(sessionFile(browser), 4 * 60);
  api::Request look = from(browser, request("GET", "/session"));
  look.headers["x-kestrove-background"] = "1";
  EXPECT_EQ(200, api::answer(look).status);
  makeOlder(sessionFile(browser), 2 * 60);
  EXPECT_EQ(401, api::answer(look).status) << "looks of the page's own accord are no use";
  EXPECT_FALSE(fileExists(sessionFile(browser)));
}

TEST_F(SessionTest, WhoIsRemovedIsOutAtOnce) {
  const Browser browser = browserOf("guest");
  ASSERT_EQ(1, removeUser("guest"));
  EXPECT_EQ(401, ask(browser, "GET", "/items").status);
}

// As if the account were older than this second, as those of people are.
void makeAccountOlder(const std::string& name) {
  for (UserAccount& account : shm->config.users) {
    if (name == account.username) account.lastPasswdChange -= 100;
  }
}

TEST_F(SessionTest, WhoWasRemovedAndAddedAnewIsSomebodyElse) {
  makeAccountOlder("guest");
  const Browser browser = browserOf("guest");
  ASSERT_EQ(1, removeUser("guest"));
  const Browser alice = browserOf("alice");
  ASSERT_EQ(201, ask(alice, "POST", "/users", {{"name", "guest"}, {"password", kPassword}}).status);
  EXPECT_EQ(401, ask(browser, "GET", "/items").status);
  browserOf("alice");
  EXPECT_FALSE(fileExists(sessionFile(browser))) << "cleared away";
}

TEST_F(SessionTest, PasswordThatChangesEndsAllSessionsButTheOneThatChangedIt) {
  makeAccountOlder("alice");
  const Browser here = browserOf("alice");
  const Browser there = browserOf("alice");
  const Json change = {{"oldPassword", kPassword}, {"newPassword", "Xyzuvw9#k"}};
  ASSERT_EQ(200, ask(here, "PUT", "/users/alice/password", change).status);
  EXPECT_EQ(401, ask(there, "GET", "/items").status);
  EXPECT_EQ(200, ask(here, "GET", "/items").status);
  makeAccountOlder("alice");
  EXPECT_EQ(401, ask(here, "GET", "/items").status) << "changed by another program";
}

TEST_F(SessionTest, NoSessionLastsLongerThanTwelveHoursNorIsMadeLongerByTheClock) {
  for (const int hours : {-13, 1}) {
    const Browser browser = browserOf("alice");
    Json content = Json::parse(readFile(sessionFile(browser)));
    content["opened"] = content["opened"].get<int64_t>() + hours * 3600;
    writeFile(sessionFile(browser), content.dump());
    EXPECT_EQ(401, ask(browser, "GET", "/session").status) << hours;
  }
}

TEST_F(SessionTest, OldestSessionGivesWayToTheSixtyFifth) {
  const Browser first = browserOf("alice");
  makeOlder(sessionFile(first), 60);
  const Browser second = browserOf("guest");
  makeOlder(sessionFile(second), 50);
  api::WebSession session;
  for (int i = 2; i < 64; ++i) api::openSession(shm->config.users[0], session, *shm);
  EXPECT_TRUE(fileExists(sessionFile(first)));
  browserOf("alice");
  EXPECT_EQ(401, ask(first, "GET", "/session").status);
  EXPECT_EQ(200, ask(second, "GET", "/session").status);
}

TEST_F(SessionTest, WithoutTheSuperUserSwitchOneMayOnlyRead) {
  const Browser browser = browserOf("guest");
  EXPECT_EQ(200, ask(browser, "GET", "/items/compression").status);
  EXPECT_EQ(200, ask(browser, "GET", "/confirm").status);
  const api::Reply refused = ask(browser, "PUT", "/items/compression", {{"value", "off"}});
  EXPECT_EQ(403, refused.status);
  EXPECT_EQ(ctl::kNotPermitted, jsonOf(refused)["error"]["exit"]);
  EXPECT_EQ(403, ask(browser, "GET", "/support").status);
  shm->config.users[1].superUser = 1;
  EXPECT_EQ(200, ask(browser, "PUT", "/items/compression", {{"value", "off"}}).status) << "looked at each time";
}

TEST_F(SessionTest, RequestsThatAnotherPageSendsAreRefused) {
  const Browser browser = browserOf("alice");
  const api::Request change = from(browser, request("PUT", "/items/compression", {{"value", "off"}}));
  const uint8_t before = shm->config.compression;
  const auto with = [&](const char* name, const std::string& value) {
    api::Request made = change;
    made.headers[name] = value;
    return api::answer(made).status;
  };
  for (const char* origin :
       {"https://evil.example", "http://192.0.2.1", "null", "https://192.0.2.1.evil.example", ""}) {
    EXPECT_EQ(403, with("origin", origin)) << origin;
  }
  EXPECT_EQ(403, with("sec-fetch-site", "cross-site"));
  EXPECT_EQ(403, with("sec-fetch-site", "same-site"));
  EXPECT_EQ(403, with("x-csrf-token", ""));
  EXPECT_EQ(403, with("x-csrf-token", std::string(64, '0')));
  EXPECT_EQ(421, with("host", "evil.example"));
  EXPECT_EQ(400, with("host", ""));
  EXPECT_EQ(400, with("host", "192.0.2.1:443:1"));
  EXPECT_EQ(401, with("cookie", browser.cookie + "; " + browser.cookie)) << "which of both?";
  EXPECT_EQ(before, shm->config.compression);
  EXPECT_EQ(200, with("origin", "https://192.0.2.1"));
  EXPECT_EQ(SHM_OFF, shm->config.compression);
}

TEST_F(SessionTest, ApplianceIsCalledByItsNamesAndByAddresses) {
  setShmString(SHM_TEXT_SYS_NAME, "branch-7");
  const Browser browser = browserOf("alice");
  for (const char* host :
       {"branch-7", "Branch-7:443", "[2001:db8::1]", "[2001:db8::1]:8443", "192.0.2.77:443", "localhost"}) {
    api::Request made = from(browser, request("GET", "/session"));
    made.headers["host"] = host;
    EXPECT_EQ(200, api::answer(made).status) << host;
    made.headers["host"] = "proxy.example";
    EXPECT_EQ(421, api::answer(made).status);
    EXPECT_EQ(200, api::answer(made, {.names = {"proxy.example"}}).status);
  }
}

TEST_F(SessionTest, SwitchedOffTheWebSaysNothingButThat) {
  const Browser browser = browserOf("alice");
  ASSERT_EQ(200, ask(browser, "PUT", "/items/httpOperState", {{"value", "off"}}).status);
  EXPECT_EQ(403, ask(browser, "GET", "/items").status);
  EXPECT_EQ(403, ask(browser, "GET", "/session").status);
  EXPECT_EQ(403, logInAs("alice").status);
  EXPECT_EQ(403, ask(browser, "PUT", "/items/httpOperState", {{"value", "on"}}).status);
  const api::Reply about = api::answer(request("GET", ""));
  EXPECT_EQ(200, about.status);
  EXPECT_EQ(false, jsonOf(about)["enabled"]);
}

TEST_F(SessionTest, TokensServeProgramsAndAreKeptAsDigests) {
  const std::string reads = api::addToken("watcher", false);
  const std::string changes = api::addToken("deploy", true);
  EXPECT_THAT(readFile("/var/lib/kestrove/api/tokens"), Not(HasSubstr(reads)));
  const auto by = [](const std::string& token, api::Request made) {
    made.headers["authorization"] = "Bearer " + token;
    return api::answer(made).status;
  };
  EXPECT_EQ(200, by(reads, request("GET", "/rules")));
  EXPECT_EQ(403, by(reads, request("PUT", "/items/compression", {{"value", "off"}})));
  EXPECT_EQ(200, by(changes, request("PUT", "/items/compression", {{"value", "off"}})));
  EXPECT_THAT(events(), ElementsAre("10 2 token-deploy"));
  EXPECT_EQ(401, by(std::string(64, '0'), request("GET", "/rules")));
  EXPECT_THROW(api::addToken("deploy", true), ctl::Refusal);
  EXPECT_THROW(api::addToken("../x", true), ctl::Refusal);
  EXPECT_TRUE(api::removeToken("deploy"));
  EXPECT_EQ(401, by(changes, request("GET", "/rules")));
}

TEST_F(SessionTest, ForeignFolderOfSessionsIsNotTrusted) {
  browserOf("alice");
  ASSERT_EQ(0, chmod(api::kSessionFolder, 0777));
  EXPECT_EQ(403, logInAs("alice").status);
}

}  // namespace
}  // namespace kestrove::testing
