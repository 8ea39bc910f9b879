#include "console/console_editor.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <utility>

#include "console/answer_parse.h"
#include "console/text_match.h"
#include "console/text_table.h"
#include "host/doc_state.h"

extern char** environ;

namespace tv::console {

namespace {

using host::RTCAN;
using host::RTNONE;
using host::RTNORM;

std::ostream& NullStream() {
  static std::ostream discard(nullptr);
  return discard;
}

std::string WithoutLeadingNewlines(std::string_view prompt) {
  while (!prompt.empty() && (prompt.front() == '\n' || prompt.front() == '\r')) prompt.remove_prefix(1);
  return std::string(prompt);
}

// The badge beside the cursor, where a console has no cursor: ahead of the prompt's text.
std::string WithBadge(std::string_view prompt) {
  const std::string badge = host::BadgePrefix();
  if (badge.empty()) return std::string(prompt);
  std::size_t text = 0;
  while (text < prompt.size() && (prompt[text] == '\n' || prompt[text] == '\r')) ++text;
  return std::string(prompt.substr(0, text)) + badge + std::string(prompt.substr(text));
}

// One keyword of a getKeyword list: "Yes" (abbreviated by its leading capitals) or "是(Y)".
struct Keyword {
  std::string text;      // as listed; what a match returns
  std::string display;   // "是" of "是(Y)"
  std::string letters;   // "Y" of "是(Y)"
};

std::vector<Keyword> ParseKeywords(std::string_view list) {
  std::vector<std::string> words;
  for (auto& w : SplitBlanks(list)) {
    std::size_t start = 0;
    while (start <= w.size()) {
      std::size_t slash = w.find('/', start);
      std::string part = w.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
      if (!part.empty()) words.push_back(part);
      if (slash == std::string::npos) break;
      start = slash + 1;
    }
  }
  // "local _ global": the answer is the global keyword at the same place.
  std::vector<std::string> globals;
  for (std::size_t i = 0; i < words.size(); ++i)
    if (words[i] == "_") {
      globals.assign(words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
      words.resize(i);
      break;
    }
  std::vector<Keyword> keywords;
  for (std::size_t i = 0; i < words.size(); ++i) {
    Keyword k;
    k.text = i < globals.size() ? globals[i] : words[i];
    const std::string& w = words[i];
    std::size_t open = w.find('('), close = w.rfind(')');
    if (open != std::string::npos && close != std::string::npos && close > open + 1) {
      k.display = w.substr(0, open);
      k.letters = w.substr(open + 1, close - open - 1);
    } else {
      k.display = w;
    }
    keywords.push_back(std::move(k));
  }
  return keywords;
}

// The leading capitals that abbreviate a keyword written like "LAyer"; empty when all of it is one case.
std::string_view Capitals(std::string_view word) {
  std::size_t n = 0;
  while (n < word.size() && ((word[n] >= 'A' && word[n] <= 'Z') || (word[n] >= '0' && word[n] <= '9'))) ++n;
  return n < word.size() ? word.substr(0, n) : std::string_view{};
}

const Keyword* MatchKeyword(const std::vector<Keyword>& keywords, std::string_view answer) {
  for (const Keyword& k : keywords)
    if (EqualsNoCase(answer, k.text) || EqualsNoCase(answer, k.display)) return &k;
  for (const Keyword& k : keywords)
    if (!k.letters.empty() && EqualsNoCase(answer, k.letters)) return &k;
  for (const Keyword& k : keywords) {
    std::string_view caps = Capitals(k.display);
    if (!caps.empty() && answer.size() >= caps.size() && answer.size() <= k.display.size() &&
        EqualsNoCase(answer, std::string_view(k.display).substr(0, answer.size())))
      return &k;
  }
  return nullptr;
}

std::string ExpandHome(std::string path) {
  if (path == "~" || path.starts_with("~/"))
    if (const char* home = std::getenv("HOME")) path = home + path.substr(1);
  return path;
}

}  // namespace

ConsoleEditor::ConsoleEditor(cad::Database& db, std::string path, const SessionOptions& options)
    : db_(db),
      path_(std::move(path)),
      out_(options.out ? options.out : &NullStream()),
      err_(options.err),
      progressEnabled_(options.progress && options.err),
      progressPrefix_(options.progressPrefix),
      terminalEchoes_(options.terminalEchoes),
      yesNoAnswer_(options.yesNoAnswer),
      answers_(options.answers, options.terminal),
      variables_(db, path_, Point2d{options.screenWidth, options.screenHeight}),
      hostFolders_(CurrentHostFolders()) {
  for (auto& [name, value] : HostFolderPreferences(hostFolders_)) env_[name] = value;
  addHostCommand("-PLOTSTAMP", [this](const std::vector<std::string>& args) { return plotStampCommand(args); });
  addHostCommand("-PLOT", [this](const std::vector<std::string>& args) { return plotCommand(args); });
  addHostCommand("ERASE", [this](const std::vector<std::string>& args) { return eraseCommand(args); });
  addHostCommand("CLOSE", [this](const std::vector<std::string>&) {
    requestClose();
    return RTNORM;
  });
  addMenuCommands();
}

ConsoleEditor::~ConsoleEditor() {
  progress_.reset();
  reapViewers();
}

// ---- command line and prompts -----------------------------------------------------------------------

void ConsoleEditor::print(std::string_view text) { *out_ << text; }

std::optional<std::string> ConsoleEditor::ask(std::string_view prompt) {
  // Once a run has run out of answers, its later prompts are cancelled without a word, unless a
  // queued command line has brought answers of its own.
  if (exhausted_ && answers_.listed() == 0) return std::nullopt;
  *out_ << WithBadge(prompt) << std::flush;
  std::optional<AnswerLine> line = answers_.next();
  if (!line) {
    exhausted_ = true;
    const std::string shown = WithoutLeadingNewlines(prompt);
    if (!unanswered_) unanswered_ = shown;
    *out_ << "\n应答已用完，无法回答提示“" << shown << "”，命令已取消。" << std::flush;
    return std::nullopt;
  }
  const bool cancel = IsCancelAnswer(line->text);
  if (!line->typed || !terminalEchoes_) *out_ << (cancel ? std::string("*取消*") : line->text);
  if (cancel) return std::nullopt;
  return std::move(line->text);
}

int ConsoleEditor::getString(std::string_view prompt, std::string& answer) {
  auto reply = ask(prompt);
  if (!reply) return RTCAN;
  // Enter at a text prompt is an empty text, as CAD programs answer it.
  answer = *reply;
  return RTNORM;
}

int ConsoleEditor::getInteger(std::string_view prompt, std::int32_t& answer) {
  while (true) {
    auto reply = ask(prompt);
    if (!reply) return RTCAN;
    if (TrimBlanks(*reply).empty()) return RTNONE;
    if (auto n = ParseInteger(*reply)) {
      answer = *n;
      return RTNORM;
    }
    print("\n需要整数值。");
  }
}

int ConsoleEditor::getReal(std::string_view prompt, double& answer) {
  while (true) {
    auto reply = ask(prompt);
    if (!reply) return RTCAN;
    if (TrimBlanks(*reply).empty()) return RTNONE;
    if (auto x = ParseReal(*reply)) {
      answer = *x;
      return RTNORM;
    }
    print("\n需要数值。");
  }
}

int ConsoleEditor::getPoint(std::string_view prompt, const Point3d* base, Point3d& answer) {
  while (true) {
    auto reply = ask(prompt);
    if (!reply) return RTCAN;
    if (TrimBlanks(*reply).empty()) return RTNONE;
    if (auto p = ParsePoint(*reply, base)) {
      answer = *p;
      return RTNORM;
    }
    print("\n需要点。");
  }
}

int ConsoleEditor::getCorner(std::string_view prompt, const Point3d& base, Point3d& answer) {
  return getPoint(prompt, &base, answer);
}

int ConsoleEditor::getKeyword(std::string_view prompt, std::string_view keywords, std::string& answer) {
  const std::vector<Keyword> list = ParseKeywords(keywords);
  while (true) {
    auto reply = ask(prompt);
    if (!reply) return RTCAN;
    std::string_view given = TrimBlanks(*reply);
    if (given.empty()) return RTNONE;
    if (const Keyword* k = MatchKeyword(list, given)) {
      answer = k->text;
      return RTNORM;
    }
    print("\n无效的选项关键字。");
  }
}

// ---- variables, environment, UCS ----------------------------------------------------------------------

std::optional<host::Value> ConsoleEditor::getVar(std::string_view name) { return variables_.get(name); }
bool ConsoleEditor::setVar(std::string_view name, const host::Value& value) {
  const std::optional<host::Value> before = variables_.get(name);
  if (!variables_.set(name, value)) return false;
  if (before != variables_.get(name)) host::SystemVariableChanged(name);
  return true;
}

std::optional<std::string> ConsoleEditor::getEnv(std::string_view name) {
  auto it = env_.find(std::string(name));
  if (it == env_.end()) return std::nullopt;
  return it->second;
}
void ConsoleEditor::setEnv(std::string_view name, std::string_view value) { env_[std::string(name)] = value; }
void ConsoleEditor::prepareUserFolders() { CreateHostFolders(hostFolders_); }

Matrix3d ConsoleEditor::currentUcs() { return variables_.ucs().toWorld(); }
bool ConsoleEditor::setCurrentUcs(const Matrix3d& ucsToWorld) { return variables_.setUcs(ucsToWorld); }

// ---- message boxes and forms ------------------------------------------------------------------------------

host::MessageAnswer ConsoleEditor::messageBox(std::string_view text, std::string_view caption,
                                              host::MessageButtons buttons) {
  using host::MessageAnswer;
  using host::MessageButtons;
  std::string shown = "\n";
  if (!caption.empty()) {
    shown += '[';
    shown += caption;
    shown += "] ";
  }
  shown += text;
  print(shown);
  messages_.emplace_back(text);
  if (buttons == MessageButtons::Ok) {
    notices_.emplace_back(text);
    return MessageAnswer::Ok;
  }

  std::string_view prompt;
  switch (buttons) {
    case MessageButtons::YesNo: prompt = "\n是(Y)/否(N): "; break;
    case MessageButtons::OkCancel: prompt = "\n确定(O)/取消(C): "; break;
    default: prompt = "\n是(Y)/否(N)/取消(C): "; break;
  }
  const bool yesNo = buttons != MessageButtons::OkCancel;
  const bool canCancel = buttons != MessageButtons::YesNo;
  if (yesNo && yesNoAnswer_) {
    print(std::string(prompt) + (*yesNoAnswer_ ? "Y" : "N"));
    return *yesNoAnswer_ ? MessageAnswer::Yes : MessageAnswer::No;
  }
  while (true) {
    auto reply = ask(prompt);
    if (!reply) return MessageAnswer::Cancel;
    const std::string a = AsciiUpper(TrimBlanks(*reply));
    // Enter presses the first button, as in a dialog.
    if (yesNo) {
      if (a.empty() || a == "Y" || a == "YES" || a == "是") return MessageAnswer::Yes;
      if (a == "N" || a == "NO" || a == "否") return MessageAnswer::No;
    } else {
      if (a.empty() || a == "O" || a == "OK" || a == "确定") return MessageAnswer::Ok;
    }
    if (canCancel && (a == "C" || a == "CANCEL" || a == "取消")) return MessageAnswer::Cancel;
    print("\n无效的选项关键字。");
  }
}

std::optional<int> ConsoleEditor::chooseItem(std::string_view title, const std::vector<std::string>& items,
                                             int defaultItem) {
  std::string listing = "\n" + std::string(title);
  for (std::size_t i = 0; i < items.size(); ++i) {
    listing += "\n  " + std::to_string(i + 1) + ". " + items[i];
    if (static_cast<int>(i) == defaultItem) listing += " <默认>";
  }
  print(listing);
  if (items.empty()) return std::nullopt;
  const bool hasDefault = defaultItem >= 0 && defaultItem < static_cast<int>(items.size());
  const std::string prompt =
      hasDefault ? "\n输入编号或名称 <" + std::to_string(defaultItem + 1) + ">: " : std::string("\n输入编号或名称: ");
  while (true) {
    auto reply = ask(prompt);
    if (!reply) return std::nullopt;
    if (TrimBlanks(*reply).empty()) {
      if (hasDefault) return defaultItem;
      return std::nullopt;
    }
    if (auto n = ParseInteger(*reply); n && *n >= 1 && *n <= static_cast<int>(items.size())) return *n - 1;
    for (std::size_t i = 0; i < items.size(); ++i)
      if (items[i] == *reply) return static_cast<int>(i);
    print("\n无效的编号。");
  }
}

std::optional<std::string> ConsoleEditor::askOpenPath(std::string_view title, std::string_view) {
  auto reply = ask("\n" + std::string(title) + ": ");
  if (!reply || TrimBlanks(*reply).empty()) return std::nullopt;
  return ExpandHome(std::string(TrimBlanks(*reply)));
}

std::optional<std::string> ConsoleEditor::askSavePath(std::string_view title, std::string_view defaultName,
                                                      std::string_view extension) {
  std::string prompt = "\n" + std::string(title);
  if (!defaultName.empty()) prompt += " <" + std::string(defaultName) + ">";
  prompt += ": ";
  auto reply = ask(prompt);
  if (!reply) return std::nullopt;
  std::string path(TrimBlanks(*reply));
  if (path.empty()) path = defaultName;
  if (path.empty()) return std::nullopt;
  path = ExpandHome(std::move(path));
  // A save dialog adds the type's extension to a name typed without it.
  if (!extension.empty()) {
    const std::string ext = std::filesystem::path(path).extension().string();
    if (!EqualsNoCase(ext, "." + std::string(extension))) path += "." + std::string(extension);
  }
  return path;
}

std::optional<std::string> ConsoleEditor::askFolder(std::string_view title, std::string_view) {
  auto reply = ask("\n" + std::string(title) + ": ");
  if (!reply || TrimBlanks(*reply).empty()) return std::nullopt;
  return ExpandHome(std::string(TrimBlanks(*reply)));
}

void ConsoleEditor::reapViewers() {
  std::erase_if(viewers_, [](pid_t pid) { return waitpid(pid, nullptr, WNOHANG) != 0; });
}

void ConsoleEditor::showList(std::string_view title, const std::vector<std::string>& columns,
                             const std::vector<std::vector<std::string>>& rows) {
  lastListRows_ = static_cast<int>(rows.size());
  TextTable table;
  table.addRow(columns);
  for (const auto& row : rows) {
    std::vector<std::string> cells;
    cells.reserve(row.size());
    for (const std::string& cell : row) cells.push_back(Printable(cell));
    table.addRow(std::move(cells));
  }
  std::ostringstream text;
  text << "\n" << title << "\n";
  table.print(text);
  std::string listing = text.str();
  if (!listing.empty() && listing.back() == '\n') listing.pop_back();
  print(listing);
}

bool ConsoleEditor::shellOpen(std::string_view path) {
  reapViewers();
  const std::string file(path);
  std::error_code ec;
  if (file.empty() || !std::filesystem::exists(file, ec)) return false;
  const bool desktop = std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY");
  if (answers_.hasTerminal() && desktop) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSID);
    std::string program = "xdg-open";
    std::string argument = file;
    char* argv[] = {program.data(), argument.data(), nullptr};
    pid_t pid = 0;
    const int rc = posix_spawnp(&pid, "xdg-open", &actions, &attr, argv, environ);
    posix_spawnattr_destroy(&attr);
    posix_spawn_file_actions_destroy(&actions);
    if (rc == 0) {
      viewers_.push_back(pid);  // reaped later; the viewer is not waited for
      return true;
    }
  }
  print("\n请用阅读器打开：" + file);
  return true;
}

// ---- the document, the view, progress ---------------------------------------------------------------------

std::string ConsoleEditor::documentPath() { return path_; }
void ConsoleEditor::setModified(bool modified) { modified_ = modified; }
bool ConsoleEditor::modified() { return modified_; }
void ConsoleEditor::regen() {}
void ConsoleEditor::setView(Point3d centre, double height) { variables_.setView(centre, height); }

void ConsoleEditor::progressBegin(std::string_view text, int range) {
  progress_.reset();
  progressRange_ = range;
  // The host's progress counts items (sheets, frames): the count is shown with the percentage.
  if (progressEnabled_) progress_ = std::make_unique<ProgressLine>(*err_, true, progressPrefix_ + std::string(text), true);
}

void ConsoleEditor::progressSet(int position) {
  if (progress_ && progressRange_ > 0 && position >= 0)
    progress_->update(static_cast<std::uint64_t>(position), static_cast<std::uint64_t>(progressRange_));
}

void ConsoleEditor::progressEnd() {
  if (progress_) progress_->finish();
  progress_.reset();
  progressRange_ = 0;
}

}  // namespace tv::console
