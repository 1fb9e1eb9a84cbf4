// SPDX-License-Identifier: Apache-2.0
// Lines as a person types them: with keys for editing, a history, Tab and "?".
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tools/ctl/shell/edit_library.h"
#include "tools/ctl/shell/typed_line.h"

namespace ctl {

// What a key does to the line in front of the cursor: some characters go, others come, and a text is shown below.
struct KeyAnswer {
  size_t erase = 0;
  std::string insert = {};
  std::string shown = {};
};

// Stands around what takes no column of a prompt.
inline constexpr char kUnseen = '\1';

class Editor {
 public:
  using Answer = std::function<KeyAnswer(const std::string& line)>;

  struct Keys {
    Answer tab;
    Answer question;
  };

  Editor(FILE* terminal, Keys keys);
  ~Editor();
  Editor(const Editor&) = delete;
  Editor& operator=(const Editor&) = delete;

  // What stands in the history from the start.
  void remember(const std::string& line);

  // The next line without its end; empty where it was dropped with Ctrl-C; none when there are no more.
  std::optional<std::string> read(const std::string& prompt);

 private:
  std::optional<std::string> readPlainly() const;

  FILE* terminal_;
  Keys keys_;
  std::string prompt_;
#ifdef KESTROVE_EDITS_LINES
  int nextTyped(wchar_t& typed);
  unsigned char answer(const Answer& key, bool insertItself);
  void bind();
  std::optional<std::string> readEdited();
  static Editor& of(EditLine* edit);

  const EditLibrary* library_ = editLibrary();
  EditLine* edit_ = nullptr;
  History* history_ = nullptr;
  bool dropped_ = false;
#endif
};

}  // namespace ctl
