#include "console/session.h"

#include <utility>

#include "console/console_editor.h"
#include "console/text_match.h"
#include "host/cad_binding.h"
#include "host/doc_state.h"
#include "host/editor.h"

namespace tv::console {

namespace {

// A command that queues itself again and again would never give the command line back.
constexpr int kMaxQueuedRuns = 1000;

}  // namespace

struct Session::State {
  State(cad::Database d, std::string p) : db(std::move(d)), path(std::move(p)) {}
  cad::Database db;
  std::string path;
  std::unique_ptr<ConsoleEditor> editor;

  // Runs a command with the words after its name as answers to its prompts. False for an unknown name.
  bool run(const std::vector<std::string>& words) {
    if (words.empty()) return true;
    ConsoleEditor& e = *editor;
    if (e.hasHostCommand(words.front()) || e.findCommand(words.front())) {
      e.command(words);
      std::string_view name = words.front();
      while (!name.empty() && (name.front() == '_' || name.front() == '.')) name.remove_prefix(1);
      host::CommandEnded(name);
      return true;
    }
    e.print("\n未知命令“" + words.front() + "”。");
    return false;
  }
};

Session::Session(cad::Database db, std::string path, SessionOptions options)
    : state_(std::make_unique<State>(std::move(db), std::move(path))) {
  host::SetWorkingDatabase(&state_->db);
  state_->editor = std::make_unique<ConsoleEditor>(state_->db, state_->path, options);
  host::SetEditor(state_->editor.get());
  host::Working().onEntityChange = [editor = state_->editor.get()](const cad::Entity& e) { editor->noteEntityChange(e); };
  host::Working().onOutputFile = [editor = state_->editor.get()](std::string_view path, bool written, std::string_view why) {
    editor->noteOutputFile(path, written, why);
  };
  // A module loaded already tracks the document from now on; one loaded later enters it at load.
  host::DocumentCreated(host::CurrentDocument());
}

Session::~Session() {
  if (host::WorkingDatabase() == &state_->db) host::DocumentToBeDestroyed(host::CurrentDocument());
  if (host::HasEditor() && &host::CurrentEditor() == state_->editor.get()) host::SetEditor(nullptr);
  if (host::WorkingDatabase() == &state_->db) host::SetWorkingDatabase(nullptr);
}

ConsoleEditor& Session::editor() { return *state_->editor; }
cad::Database& Session::database() { return state_->db; }
const std::string& Session::path() const { return state_->path; }

bool Session::runCommandLine(std::string_view line) {
  state_->editor->print("\n命令: " + std::string(line));
  return runTypedLine(line);
}

bool Session::runTypedLine(std::string_view line) {
  const bool known = state_->run(SplitBlanks(line));
  if (known) runQueued();
  return known;
}

void Session::runQueued() {
  ConsoleEditor& e = *state_->editor;
  int runs = 0;
  while (e.hasQueued()) {
    if (runs == kMaxQueuedRuns) {
      e.clearQueued();
      e.print("\n排队执行的命令已达 " + std::to_string(kMaxQueuedRuns) + " 次，其余命令已放弃。");
      return;
    }
    std::string text = *e.takeQueued();
    // Ctrl+C cancels whatever command is active when the text arrives; here none is.
    std::erase(text, '\x03');
    const std::vector<std::string> words = SplitBlanks(text);
    if (words.empty()) continue;
    ++runs;
    e.print("\n命令: " + words.front());
    state_->run(words);
  }
}

std::optional<std::string> Session::unansweredPrompt() const { return state_->editor->unansweredPrompt(); }
bool Session::closeRequested() const { return state_->editor->closeRequested(); }
void Session::requestClose() { state_->editor->requestClose(); }

}  // namespace tv::console
