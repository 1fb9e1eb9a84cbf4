// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shell/editor.h"

#include <unistd.h>

#include <cstring>

#include "tools/ctl/session.h"
#include "tools/ctl/shell/typed_keys.h"

#ifdef __SANITIZE_ADDRESS__
// libedit never frees its own copies of the names of added functions.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:wcsdup\n"; }
#endif

namespace ctl {
namespace {

constexpr int kRemembered = 1000;

}  // namespace

// Byte by byte: a command that reads standard input finds what stands behind its line.
std::optional<std::string> Editor::readPlainly() const {
  for (char c : prompt_) {
    if (c != kUnseen) fputc(c, terminal_);
  }
  fflush(terminal_);
  std::string line;
  for (char c; ::read(STDIN_FILENO, &c, 1) == 1;) {
    if (c == '\n') return line;
    line += c;
  }
  if (line.empty()) return std::nullopt;
  return line;
}

#ifdef KESTROVE_EDITS_LINES

Editor& Editor::of(EditLine* edit) {
  void* self = nullptr;
  editLibrary()->get(edit, EL_CLIENTDATA, &self);
  return *static_cast<Editor*>(self);
}

Editor::Editor(FILE* terminal, Keys keys) : terminal_(terminal), keys_(std::move(keys)) {
  if (!library_) {
    warn("libedit.so.2 is missing: lines are read without editing, Tab and history");
    return;
  }
  edit_ = library_->init("kestrovectl", stdin, terminal_, stderr);
  history_ = library_->historyInit();
  if (edit_ && history_) bind();
}

Editor::~Editor() {
  if (history_) library_->historyEnd(history_);
  if (edit_) library_->end(edit_);
}

// Ctrl-C and its like are keys while a line is typed, so that no signal ends the shell. The keys for an own command of
// the library are taken away: with it any key could be made to start an editor, and from there a shell.
void Editor::bind() {
  HistEvent event;
  library_->history(history_, &event, H_SETSIZE, kRemembered);
  library_->history(history_, &event, H_SETUNIQUE, 1);
  library_->set(edit_, EL_CLIENTDATA, this);
  library_->set(edit_, EL_EDITOR, "emacs");
  const el_rfunc_t next = [](EditLine* edit, wchar_t* typed) { return of(edit).nextTyped(*typed); };
  library_->set(edit_, EL_GETCFN, next);
  library_->set(edit_, EL_HIST, library_->history, history_);
  library_->set(edit_, EL_SETTY, "-d", "-isig", nullptr);
  char* (*prompt)(EditLine*) = [](EditLine* edit) { return of(edit).prompt_.data(); };
  library_->set(edit_, EL_PROMPT_ESC, prompt, kUnseen);
  using Function = unsigned char (*)(EditLine*, int);
  const Function complete = [](EditLine* edit, int) { return of(edit).answer(of(edit).keys_.tab, false); };
  const Function explain = [](EditLine* edit, int) { return of(edit).answer(of(edit).keys_.question, true); };
  const Function drop = [](EditLine* edit, int) -> unsigned char {
    of(edit).dropped_ = true;
    return CC_NEWLINE;
  };
  library_->set(edit_, EL_ADDFN, "ctl-complete", "Complete the word", complete);
  library_->set(edit_, EL_ADDFN, "ctl-explain", "List what may follow", explain);
  library_->set(edit_, EL_ADDFN, "ctl-drop", "Drop the line", drop);
  library_->set(edit_, EL_BIND, "^I", "ctl-complete", nullptr);
  library_->set(edit_, EL_BIND, "?", "ctl-explain", nullptr);
  library_->set(edit_, EL_BIND, "^C", "ctl-drop", nullptr);
  for (const char* key : {"\\ex", "\\eX", "\\370", "\\330"}) library_->set(edit_, EL_BIND, key, "ed-ignore", nullptr);
}

// Not the library's own: at a signal it would leave the terminal as it is for commands, in the middle of a line.
int Editor::nextTyped(wchar_t& typed) {
  for (;;) {
    const KeyInput input = nextKey(typed);
    if (input != KeyInput::kResized) return input == KeyInput::kKey ? 1 : 0;
    library_->resize(edit_);
  }
}

unsigned char Editor::answer(const Answer& key, bool insertItself) {
  const LineInfo* info = library_->line(edit_);
  const std::string line(info->buffer, info->cursor);
  if (insertItself && TypedLine(line).typed().open) {
    library_->insert(edit_, "?");
    return CC_REFRESH;
  }
  const KeyAnswer made = key(line);
  if (made.erase > 0) library_->erase(edit_, static_cast<int>(made.erase));
  if (!made.insert.empty()) library_->insert(edit_, made.insert.c_str());
  if (made.shown.empty()) return made.insert.empty() ? CC_REFRESH_BEEP : CC_REFRESH;
  fprintf(terminal_, "\n%s", made.shown.c_str());
  fflush(terminal_);
  return CC_REDISPLAY;
}

void Editor::remember(const std::string& line) {
  HistEvent event;
  if (history_) library_->history(history_, &event, H_ENTER, line.c_str());
}

std::optional<std::string> Editor::readEdited() {
  dropped_ = false;
  int length = 0;
  const TypingSignals signals;
  // Otherwise the prompt would stand there before its keys mean what they mean in a line.
  library_->set(edit_, EL_PREP_TERM, 1);
  const char* line = library_->gets(edit_, &length);
  if (dropped_) {
    fputs("^C\n", terminal_);
    fflush(terminal_);
    return "";
  }
  if (!line || length <= 0) return std::nullopt;
  return std::string(line, line[length - 1] == '\n' ? static_cast<size_t>(length) - 1 : static_cast<size_t>(length));
}

std::optional<std::string> Editor::read(const std::string& prompt) {
  prompt_ = prompt;
  return edit_ && history_ ? readEdited() : readPlainly();
}

#else

Editor::Editor(FILE* terminal, Keys keys) : terminal_(terminal), keys_(std::move(keys)) {
  warn("built without line editing: lines are read as they are, without Tab and history");
}

Editor::~Editor() = default;

void Editor::remember(const std::string&) {}

std::optional<std::string> Editor::read(const std::string& prompt) {
  prompt_ = prompt;
  return readPlainly();
}

#endif

}  // namespace ctl
