// The console editor's commands: the stack of registered commands, the host's own commands and
// the queue of command lines sent to execute later.
#include <exception>

#include "console/console_editor.h"
#include "console/text_match.h"

namespace tv::console {

namespace {

using host::RTCAN;
using host::RTERROR;
using host::RTNORM;

// Command names compare without regard to case, and "_" (the global name) and "." (the
// built-in, not a redefinition) in front change nothing here.
std::string NormalisedName(std::string_view name) {
  while (!name.empty() && (name.front() == '_' || name.front() == '.')) name.remove_prefix(1);
  return AsciiUpper(name);
}

bool SameCommandName(std::string_view a, std::string_view b) {
  return !a.empty() && !b.empty() && NormalisedName(a) == NormalisedName(b);
}

}  // namespace

void ConsoleEditor::addCommand(std::string_view group, std::string_view globalName, std::string_view localName,
                               int flags, host::CommandBody body) {
  RegisteredCommand c{std::string(group), std::string(globalName),
                      std::string(localName.empty() ? globalName : localName), flags, body};
  std::erase_if(commands_, [&](const RegisteredCommand& old) {
    return SameCommandName(old.globalName, c.globalName) || SameCommandName(old.globalName, c.localName) ||
           SameCommandName(old.localName, c.globalName) || SameCommandName(old.localName, c.localName);
  });
  commands_.push_back(std::move(c));
}

bool ConsoleEditor::removeGroup(std::string_view group) {
  return std::erase_if(commands_, [&](const RegisteredCommand& c) { return EqualsNoCase(c.group, group); }) > 0;
}

const ConsoleEditor::RegisteredCommand* ConsoleEditor::findCommand(std::string_view name) const {
  for (const RegisteredCommand& c : commands_)
    if (SameCommandName(c.globalName, name) || SameCommandName(c.localName, name)) return &c;
  return nullptr;
}

void ConsoleEditor::runCommandBody(const RegisteredCommand& command) {
  if (!command.body) return;
  // What an earlier command measured may have been edited since.
  plotIndexes_.clear();
  selectionIndexes_.clear();
  try {
    command.body();
    settlePrintJobs(true);
  } catch (const std::exception& e) {
    print("\n命令“" + command.globalName + "”出错：" + e.what());
  } catch (...) {
    print("\n命令“" + command.globalName + "”出错。");
  }
}

void ConsoleEditor::addHostCommand(std::string_view name, HostCommand body) {
  hostCommands_[NormalisedName(name)] = std::move(body);
}

bool ConsoleEditor::hasHostCommand(std::string_view name) const {
  return hostCommands_.contains(NormalisedName(name));
}

int ConsoleEditor::command(const std::vector<std::string>& args) {
  if (args.empty()) return RTERROR;
  const std::string& name = args.front();
  if (auto it = hostCommands_.find(NormalisedName(name)); it != hostCommands_.end()) {
    // Copied: a host command may add or replace host commands while it runs.
    HostCommand body = it->second;
    return body(args);
  }
  if (const RegisteredCommand* c = findCommand(name)) {
    // Its arguments answer its prompts; whatever it leaves unused is dropped with it.
    const RegisteredCommand copy = *c;
    const std::size_t before = answers_.listed();
    answers_.pushFront({args.begin() + 1, args.end()});
    runCommandBody(copy);
    if (answers_.listed() > before) answers_.dropFront(answers_.listed() - before);
    return RTNORM;
  }
  print("\n未知命令“" + name + "”。");
  return RTERROR;
}

int ConsoleEditor::plotStampCommand(const std::vector<std::string>& args) {
  std::string option;
  if (args.size() > 1) {
    option = args[1];
  } else {
    auto reply = ask("\n输入选项 [开(ON)/关(OFF)]: ");
    if (!reply) return RTCAN;
    option = *reply;
  }
  const std::string o = AsciiUpper(TrimBlanks(option));
  if (o == "O" || o == "ON" || o == "开") {
    plotStamp_ = true;
    return RTNORM;
  }
  if (o == "OFF" || o == "关") {
    plotStamp_ = false;
    return RTNORM;
  }
  print("\n无效的选项关键字。");
  return RTERROR;
}

void ConsoleEditor::sendStringToExecute(std::string_view text) { queued_.emplace_back(text); }

std::optional<std::string> ConsoleEditor::takeQueued() {
  if (queued_.empty()) return std::nullopt;
  std::string text = std::move(queued_.front());
  queued_.pop_front();
  return text;
}

}  // namespace tv::console
