// SPDX-License-Identifier: Apache-2.0
// The numbered texts: a table, and its exported accessors.
#include <string.h>

#include "kestrove/codes.h"
#include "kestrove/items.h"
#include "kestrove/persistence.h"
#include "store/fail.h"
#include "store/lock.h"
#include "store/text.h"

namespace kestrove {
namespace {

constexpr size_t kTextSize = 256;
using TextField = char (ConfigRecord::*)[kTextSize];

struct TextItem {
  int id;
  TextField field;
  bool settable = false;
};

#define TEXT(number, member, ...) {.id = number, .field = &ConfigRecord::member, __VA_ARGS__},
#define SETTABLE .settable = true,

constexpr TextItem kTexts[] = {
#include "items/items.def"
};

const TextItem* findText(int id) {
  for (const TextItem& text : kTexts) {
    if (text.id == id) return &text;
  }
  return nullptr;
}

}  // namespace
}  // namespace kestrove

using namespace kestrove;

int getShmString(int id, char* buffer, int size) {
  if (!buffer || size < static_cast<int>(kTextSize)) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  const TextItem* text = findText(id);
  if (!text) return fail(SHM_EINVAL);
  // A text of the field's whole width comes without a terminator when the buffer is no longer than that.
  std::string_view value = fieldView(shm->config.*text->field);
  memmove(buffer, value.data(), value.size());  // the buffer may be the field
  if (value.size() < static_cast<size_t>(size)) buffer[value.size()] = '\0';
  return 0;
}

int setShmString(int id, const char* text) {
  if (!text) return fail(SHM_EINVAL);
  StoreLock lock;
  if (!lock) return -1;
  const TextItem* item = findText(id);
  if (!item || !item->settable || strnlen(text, kTextSize + 1) > kTextSize) return fail(SHM_EINVAL);
  char(&field)[kTextSize] = shm->config.*item->field;
  if (fieldView(field) == text) return 0;
  setField(field, text);
  save_shared_memory();  // its failure leaves a code; the text is set all the same
  return 0;
}
