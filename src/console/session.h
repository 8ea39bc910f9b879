#pragma once
// The console host: one drawing open in a command line, with an editor that takes its answers
// from a script, from options or from the terminal. While a Session lives, its drawing and its
// editor stand behind the host seam.
#include <deque>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "cad/database.h"

namespace tv::console {

class ConsoleEditor;

struct SessionOptions {
  std::ostream* out = nullptr;       // the command line; required
  std::ostream* err = nullptr;       // progress; nullptr = none
  bool progress = false;             // show a progress line on `err`
  // Put before every progress label: which drawing of a run over several ("[2/5] 平面.dxf").
  std::string progressPrefix;
  // Answers for prompts, selections, message boxes and forms, one per line, used in order.
  std::vector<std::string> answers;
  // When the answers run out: read further lines from here (interactive), or, when null, cancel
  // the waiting prompt and report it (unattended).
  std::istream* terminal = nullptr;
  // The terminal shows what is typed (a real terminal rather than a pipe), so answers read from
  // it are not echoed again.
  bool terminalEchoes = false;
  // Answers every Yes/No question (true Yes, false No) without taking one of `answers`.
  std::optional<bool> yesNoAnswer;
  // Screen of the console, for SCREENSIZE and the view proportion.
  double screenWidth = 1600, screenHeight = 900;
};

class Session {
 public:
  // Installs `db` as the working drawing and the console editor; `path` is the drawing's file.
  Session(cad::Database db, std::string path, SessionOptions options);
  // Uninstalls both.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  ConsoleEditor& editor();
  cad::Database& database();
  const std::string& path() const;

  // Runs one line as typed on the command line: a command name (or shortcut, any case) followed
  // by answers for its prompts, then every command it queued with sendStringToExecute. False when
  // the name is no command ("未知命令“%s”。" is printed).
  bool runCommandLine(std::string_view line);
  // The same for a line the user has just typed after the console's own "命令: " prompt: it
  // is already on the screen, so it is not printed again.
  bool runTypedLine(std::string_view line);
  // Runs the queued command lines; the interactive loop calls this after each typed line.
  void runQueued();

  // The first prompt that an unattended run could not answer, if any.
  std::optional<std::string> unansweredPrompt() const;
  // True once "_CLOSE" (or the console's "QUIT") asked to end the session.
  bool closeRequested() const;
  void requestClose();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tv::console
