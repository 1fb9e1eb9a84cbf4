// SPDX-License-Identifier: Apache-2.0
// Prints the offset table of the shared store, each member with its remark in layout.h.
#include <inttypes.h>
#include <stdio.h>

#include <fstream>
#include <map>
#include <string>

#include "kestrove/layout.h"
#include "kestrove/library.h"
#include "store/layout_table.h"

using namespace kestrove;

namespace {

constexpr std::string_view kRecord = "typedef struct ";
constexpr std::string_view kOpening = " /* ";
constexpr std::string_view kClosing = " */";

std::string fullName(std::string_view record, std::string_view member) {
  return std::string(record).append(".").append(member);
}

// The remarks of a header, by "Record.member". Formatted sources have a member and its remark in one line.
class Remarks {
 public:
  explicit Remarks(const char* header) {
    std::ifstream file(header);
    for (std::string line; std::getline(file, line);) look(line);
  }
  const std::string* find(const std::string& name) const {
    auto found = remarks_.find(name);
    return found == remarks_.end() ? nullptr : &found->second;
  }

 private:
  void look(std::string_view line) {
    if (line.starts_with(kRecord)) record_ = line.substr(kRecord.size(), line.rfind(' ') - kRecord.size());
    size_t opening = line.find(kOpening);
    if (opening == line.npos || !line.ends_with(kClosing)) return;
    std::string_view declaration = line.substr(0, line.find_first_of("[;"));
    std::string_view text = line.substr(opening + kOpening.size());
    text.remove_suffix(kClosing.size());
    remarks_[fullName(record_, declaration.substr(declaration.rfind(' ') + 1))] = text;
  }

  std::string record_;
  std::map<std::string, std::string> remarks_;
};

void printIntroduction() {
  printf("# Layout of the shared store\n\n");
  printf("System V key %d, %d bytes. Written by `kestrove-layout`; a test compares it with the code.\n", SHM_KEY,
         SHM_SIZE);
  printf("Records are packed to 4 bytes in 32-bit and 64-bit programs alike. Layout hash: `%016" PRIx64 "`.\n",
         kestrove_layout_hash());
}

void printRecord(const LayoutRow& row) {
  printf("\n## %s, %" PRIu32 " bytes\n\n| Offset | Bytes | Member | Meaning |\n|---:|---:|---|---|\n", row.record,
         row.bytes);
}

void printMember(const LayoutRow& row, const char* remark) {
  printf("| %" PRIu32 " | %" PRIu32 " | `%s` | %s |\n", row.offset, row.bytes, row.member, remark);
}

// Null for a member that says nothing; reserved bytes need not.
const char* remarkOf(const LayoutRow& row, const Remarks& remarks) {
  if (const std::string* remark = remarks.find(fullName(row.record, row.member))) return remark->c_str();
  return std::string_view(row.member).starts_with("reserved") ? "zero" : nullptr;
}

// False, and says so, when the header has no remark for the row.
bool print(const LayoutRow& row, const Remarks& remarks) {
  if (!row.member) {
    printRecord(row);
    return true;
  }
  const char* remark = remarkOf(row, remarks);
  printMember(row, remark ? remark : "");
  if (!remark) fprintf(stderr, "%s.%s has no remark\n", row.record, row.member);
  return remark != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: kestrove-layout include/kestrove/layout.h\n");
    return 2;
  }
  const Remarks remarks(argv[1]);
  bool whole = true;
  printIntroduction();
  for (const LayoutRow& row : layoutRows()) whole = print(row, remarks) && whole;
  return whole && fflush(stdout) == 0 ? 0 : 1;
}
