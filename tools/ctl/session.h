// What every command of kestrovectl shares: output, refusals, the store.
#pragma once

#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>

#include <nlohmann/json.hpp>

namespace ctl {

// Members keep the order in which a command names them: it is the order of the lines for a human reader.
using Json = nlohmann::ordered_json;

enum Exit : int {
  kDone = 0,
  kRefused = 1,   // the library refused; the text of shm_errno says why
  kUsage = 2,     // the command line makes no sense
  kNoStore = 3,   // there is no store, or none of this layout
  kFindings = 4,  // check or kernel found something
  kSystem = 5     // a file or a program failed outside the library
};

// Ends a command: main prints it and exits with its status.
class Refusal : public std::exception {
 public:
  Refusal(Exit exit, std::string message, int code = -1) : exit_(exit), message_(std::move(message)), code_(code) {}
  const char* what() const noexcept override { return message_.c_str(); }
  Exit exit() const { return exit_; }
  int code() const { return code_; }

 private:
  Exit exit_;
  std::string message_;
  int code_;
};

// The refusal that shm_errno explains: "WHAT: TEXT OF THE CODE".
Refusal refusal(const std::string& what);
// Passes a result of 0 or more; throws the refusal otherwise.
int accept(int result, const std::string& what);

struct Session {
  bool json = false;
  uint32_t source = 0;
  std::string user = "--";
  FILE* out = stdout;  // the command's own output: the library's prints are turned to standard error

  const char* userName() const { return user.c_str(); }

  // Prints a result: as JSON, or for a human reader as lines, lists and tables.
  void show(const Json& result) const;
  // Prints that a change was made.
  void done(const std::string& text) const;
};

// Attaches the store or throws kNoStore. Puts back the state that a loader left behind when it died.
void requireStore();

std::string addressText(uint32_t address);
std::string address6Text(const uint8_t (&address)[16]);
std::string hardwareText(const uint8_t (&address)[6]);
// A dotted quad, checked strictly; throws kUsage with what the library says of it.
uint32_t parseAddress(const std::string& text);
void parseAddress6(const std::string& text, uint8_t (&out)[16]);
// "A.B.C.D/LENGTH" or "A.B.C.D MASK" forms: the mask of a prefix length or of a dotted mask.
uint32_t parseMask(const std::string& text);
const char* switchText(uint32_t value);

// A text field of the store, bounded by its width.
template <size_t N>
std::string text(const char (&field)[N]) {
  size_t length = 0;
  while (length < N && field[length]) ++length;
  return {field, length};
}

}  // namespace ctl
