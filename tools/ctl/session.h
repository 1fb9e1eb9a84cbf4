// SPDX-License-Identifier: Apache-2.0
// What every command of kestrovectl shares: output, refusals, the store.
#pragma once

#include <cstdint>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace ctl {

// Members keep the order in which a command names them: it is the order of the lines for a human reader.
using Json = nlohmann::ordered_json;

enum Exit : int {
  kDone = 0,
  kRefused = 1,       // the library refused; the text of shm_errno says why
  kUsage = 2,         // the command line makes no sense
  kNoStore = 3,       // there is no store, or store or library are of another layout
  kFindings = 4,      // something was found, or two things differ
  kSystem = 5,        // a file, a program or standard output failed outside the library
  kLocked = 6,        // another process held the lock for too long
  kNotPermitted = 7,  // the lock file, the segment or a file belongs to others
  kNotSaved = 8,      // the change was made, and the file or the history does not have it
  kPartly = 9,        // of several changes some were made and some refused
  kUnconfirmed = 10   // nobody confirmed the change in time: it is taken back
};

// Ends a command: main prints it and exits with its status.
class Refusal : public std::exception {
 public:
  Refusal(Exit exit, std::string message, int code = -1, int error = 0)
      : exit_(exit), message_(std::move(message)), code_(code), error_(error) {}
  const char* what() const noexcept override { return message_.c_str(); }
  Exit exit() const { return exit_; }
  int code() const { return code_; }    // of shm_errno; -1 where the library gave none
  int error() const { return error_; }  // of errno; 0 where the system gave none

 private:
  Exit exit_;
  std::string message_;
  int code_;
  int error_;
};

// The text of shm_errno, with that of errno where the system failed.
std::string reasonText();
// That errno; 0 where the system did not fail.
int reasonError();
// The refusal that shm_errno explains: "WHAT: TEXT OF THE CODE". Where the library has set no code it says so.
Refusal refusal(const std::string& what);
// The refusal of a file or program that failed: not permitted, or failed with "WHAT: TEXT OF THE ERROR".
Refusal systemRefusal(const std::string& what, int error);
// Passes a result of 0 or more; throws the refusal otherwise.
int accept(int result, const std::string& what);

struct Session {
  bool json = false;
  bool terse = false;
  bool wide = false;
  std::string fields;  // "A,B"; empty for all
  uint32_t source = 0;
  std::string user = "--";
  double waitSeconds = 10;          // for the store's lock
  const char* readsOnly = nullptr;  // why this session may change nothing; null where it may
  bool changes = true;              // whether the command that runs is one that does
  bool keepsRevision = true;        // and whether history is to have it
  std::string comment;              // of the revision that a change makes
  double confirmMinutes = -1;       // after which an unconfirmed change goes back; negative: it stays
  std::vector<std::string> words;   // of the command, as they were given
  std::string loggedIn;             // who logged in to this session; empty: the user of the system
  bool leavesEqual = false;         // what is so already is not set again: nothing is written
  bool tellsWaiting = false;        // a person waits: what for is said
  FILE* out = stdout;               // the command's own output: the library's prints are turned to standard error
  std::optional<size_t> columns;    // of the screen that shows the output, 0 for no limit; else the terminal is asked

  bool toBeConfirmed() const { return confirmMinutes > 0; }
  const char* userName() const { return user.c_str(); }

  // Whether a command may print a text of its own; otherwise it shows its result, of which a program takes what it
  // wants.
  bool forPeople() const { return !json && !terse && fields.empty(); }

  // Prints as it stands. Throws kSystem when standard output cannot be written.
  void print(const std::string& text) const;
  // Prints a result: as JSON, as terse records, or for a human reader as lines, lists and tables.
  void show(const Json& result) const;
  // One of many results, as the line of a stream: JSON in one line, or a terse record.
  std::string recordLine(const Json& record) const;
  // Prints that something was done.
  void done(const std::string& text) const;

 private:
  Json chosen(const Json& result) const;  // what --fields leaves of it
};

// Whole JSON without a control character in it but the line feeds of an indented text; -1 indents nothing.
std::string jsonText(const Json& value, int indent);

// The error as it is printed with --json.
Json errorJson(const Refusal& refusal);
inline Json errorJson(Exit exit, const std::string& message, int code) { return errorJson({exit, message, code}); }

// On standard error.
void warn(const std::string& text);

// Attaches the store, waiting for its lock as long as the session says; throws kNoStore, kLocked or kNotPermitted. Puts
// back the state that a loader left behind when it died.
void attachStore(const Session& session);

// The same for a command: ends, too, what the journal holds of a change that was interrupted or not confirmed.
void requireStore(const Session& session);

// Waits for the lock as long as the session says: for the next call of the library, which then finds it free.
void awaitLock(const Session& session);

std::string addressText(uint32_t address);
std::string address6Text(const uint8_t (&address)[16]);
std::string hardwareText(const uint8_t (&address)[6]);
// "2026-11-21T22:17:46Z", in the zone of the event log; null for 0, which is never.
Json timeJson(int32_t seconds);

// A text field of the store, bounded by its width.
template <size_t N>
std::string text(const char (&field)[N]) {
  size_t length = 0;
  while (length < N && field[length]) ++length;
  return {field, length};
}

}  // namespace ctl

// Each file that has a Json would compile it for itself, a third of its code.
extern template class nlohmann::basic_json<nlohmann::ordered_map>;
