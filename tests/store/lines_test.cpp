// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <string.h>

#include "kestrove/text.h"
#include "sys/stream.h"
#include "tests/support/store.h"

using kestrove::sys::Stream;

namespace {

// A stream over a text.
Stream over(const std::string& text) {
  Stream stream(tmpfile());
  fwrite(text.data(), 1, text.size(), stream.get());
  rewind(stream.get());
  return stream;
}

using Reader = int (*)(char*, int, FILE*);

struct Line {
  int result;
  std::string text;
};
bool operator==(const Line& a, const Line& b) { return a.result == b.result && a.text == b.text; }
void PrintTo(const Line& line, std::ostream* out) { *out << line.result << " \"" << line.text << '"'; }

Line next(Reader reader, FILE* stream, int size = 64) {
  char buf[64];
  memset(buf, '#', sizeof buf);
  int result = reader(buf, size, stream);
  return {result, result < 0 ? "" : buf};
}

Line only(Reader reader, const std::string& text, int size = 64) { return next(reader, over(text).get(), size); }

TEST(Lines, AreReadWithoutTheirNewline) {
  Stream stream = over("one\n\n two \t\nlast");
  EXPECT_EQ((Line{3, "one"}), next(readLine, stream.get()));
  EXPECT_EQ((Line{0, ""}), next(readLine, stream.get()));
  EXPECT_EQ((Line{6, " two \t"}), next(readLine, stream.get()));
  EXPECT_EQ((Line{4, "last"}), next(readLine, stream.get()));
  shm_errno = 0;
  EXPECT_EQ(-1, next(readLine, stream.get()).result);
  EXPECT_EQ(uint32_t{SHM_EEOF}, shm_errno);
}

TEST(Lines, FirstReadOfAnEmptyFileGivesNothing) {
  Stream stream = over("");
  EXPECT_EQ((Line{0, ""}), next(readLine, stream.get()));
  EXPECT_EQ(-1, next(readLine, stream.get()).result);
}

TEST(Lines, LineThatFillsTheBufferIsWhole) {
  EXPECT_EQ((Line{4, "abcd"}), only(readLine, "abcd\n", 5));
  EXPECT_EQ((Line{5, "abcd"}), only(readLine, "abcde\n", 5));
  EXPECT_EQ((Line{1, ""}), only(readLine, "a\n", 1));
  EXPECT_EQ((Line{0, ""}), only(readLine, "\n", 1));
}

TEST(Lines, RestOfALongLineIsDropped) {
  Stream stream = over("abcdefgh\nnext\n");
  EXPECT_EQ((Line{5, "abcd"}), next(readLine, stream.get(), 5));
  EXPECT_EQ((Line{4, "next"}), next(readLine, stream.get()));
}

TEST(CommandLines, BlanksAreSqueezed) {
  EXPECT_EQ((Line{3, "a b"}), only(readCommandLine, "  a \t b  \n"));
  EXPECT_EQ((Line{0, ""}), only(readCommandLine, " \t \n"));
  EXPECT_EQ((Line{5, "a b c"}), only(readCommandLine,
                                     "a\x01\x7f"
                                     "b\xff\x80"
                                     "c\n"));
  EXPECT_EQ((Line{1, "a"}), only(readCommandLine, "\r a \r\n"));
}

TEST(CommandLines, BlankWithoutRoomTruncates) {
  EXPECT_EQ((Line{3, "ab"}), only(readCommandLine, "ab \n", 3));
  EXPECT_EQ((Line{2, "ab"}), only(readCommandLine, "ab\n", 3));
  EXPECT_EQ((Line{2, "ab"}), only(readCommandLine, "ab  \n", 4));
  EXPECT_EQ((Line{4, "ab"}), only(readCommandLine, "ab c\n", 4));
}

TEST(CommandLines, LongLineGivesTheSize) { EXPECT_EQ((Line{4, "abc"}), only(readCommandLine, "  abcdef\n", 4)); }

TEST(Lines, BadArgumentsAreRefused) {
  Stream stream = over("abc\n");
  char buf[8] = "kept";
  EXPECT_FAILS_WITH(SHM_EINVAL, readLine(buf, 0, stream.get()));
  EXPECT_FAILS_WITH(SHM_EINVAL, readLine(buf, -1, stream.get()));
  EXPECT_FAILS_WITH(SHM_EINVAL, readLine(nullptr, 8, stream.get()));
  EXPECT_FAILS_WITH(SHM_EINVAL, readLine(buf, 8, nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, readCommandLine(buf, 0, stream.get()));
  EXPECT_STREQ("kept", buf);
  EXPECT_EQ((Line{3, "abc"}), next(readLine, stream.get()));
}

TEST(Lines, BadSizeGoesBeforeEndOfFile) {
  Stream stream = over("");
  char buf[8];
  readLine(buf, 8, stream.get());
  EXPECT_FAILS_WITH(SHM_EINVAL, readLine(buf, 0, stream.get()));
}

TEST(Lines, StreamErrorIsASystemError) {
  Stream directory(fopen("/", "r"));
  ASSERT_TRUE(directory);
  char buf[8];
  EXPECT_FAILS_WITH(SHM_ESYSTEM, readLine(buf, 8, directory.get()));
}

TEST(ReadFilters, CountLinesThatHoldSomething) {
  Stream stream = over("a\n\nb\n");
  ReadFilter filter;
  ReadFilter_init(&filter, stream.get(), 0, '\n');
  char buf[8];
  EXPECT_EQ(1, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_EQ(0, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_EQ(1, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_EQ(0, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_FAILS_WITH(SHM_EEOF, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_EQ(2, filter.lineCount);
}

TEST(ReadFilters, UseTheirOwnDelimiterAndSqueeze) {
  Stream stream = over("  a  b;\nc\xff;");
  ReadFilter filter;
  memset(&filter, 0x5A, sizeof filter);
  ReadFilter_init(&filter, stream.get(), 1, ';');
  EXPECT_EQ(0, filter.lineCount);
  char buf[8];
  EXPECT_EQ(3, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_STREQ("a b", buf);
  EXPECT_EQ(1, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_STREQ("c", buf);
}

TEST(ReadFilters, DelimiterMayBeAnyByte) {
  Stream stream = over(
      "a\xff"
      "b");
  ReadFilter filter;
  ReadFilter_init(&filter, stream.get(), 0, '\xff');
  char buf[8];
  EXPECT_EQ(1, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_EQ(1, ReadFilter_readLine(&filter, buf, 8));
  EXPECT_STREQ("b", buf);
}

TEST(ReadFilters, TruncatedLineCounts) {
  Stream stream = over("abcdef\n");
  ReadFilter filter;
  ReadFilter_init(&filter, stream.get(), 0, '\n');
  char buf[3];
  EXPECT_EQ(3, ReadFilter_readLine(&filter, buf, 3));
  EXPECT_EQ(1, filter.lineCount);
}

TEST(ReadFilters, NullIsRefused) {
  char buf[8];
  ReadFilter_init(nullptr, stdin, 0, '\n');
  EXPECT_FAILS_WITH(SHM_EINVAL, ReadFilter_readLine(nullptr, buf, 8));
  ReadFilter filter;
  ReadFilter_init(&filter, nullptr, 0, '\n');
  EXPECT_FAILS_WITH(SHM_EINVAL, ReadFilter_readLine(&filter, buf, 8));
}

}  // namespace
