// SPDX-License-Identifier: Apache-2.0
#include "store/lines.h"

#include "kestrove/text.h"
#include "store/fail.h"

namespace kestrove {

int readDelimitedLine(char* buf, int size, int squeeze, FILE* stream, char delimiter) {
  if (!buf || !stream || size < 1) return fail(SHM_EINVAL);
  if (feof(stream)) return fail(SHM_EEOF);
  LineBuffer line(buf, size, squeeze != 0);
  int c;
  while ((c = getc_unlocked(stream)) != EOF && static_cast<char>(c) != delimiter) line.add(static_cast<char>(c));
  int length = line.finish();
  if (ferror(stream)) return fail(SHM_ESYSTEM);
  return line.truncated() ? size : length;
}

}  // namespace kestrove

using namespace kestrove;

int readLine(char* buf, int size, FILE* stream) { return readDelimitedLine(buf, size, 0, stream, '\n'); }

int readCommandLine(char* buf, int size, FILE* stream) { return readDelimitedLine(buf, size, 1, stream, '\n'); }

void ReadFilter_init(ReadFilter* f, FILE* stream, int squeeze, char delimiter) {
  if (f) *f = {stream, squeeze, delimiter, 0};
}

int ReadFilter_readLine(ReadFilter* f, char* buf, int size) {
  if (!f) return fail(SHM_EINVAL);
  int result = readDelimitedLine(buf, size, f->squeeze, f->stream, f->delimiter);
  if (result >= 1) ++f->lineCount;
  return result;
}
