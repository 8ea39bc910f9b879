#include "cli/loaded_module.h"

#include <unistd.h>

#include <utility>

#include "host/module_entry.h"

namespace tv::cli {

namespace {

console::SessionOptions Options(CliStreams& io, std::vector<std::string> answers, std::istream* terminal) {
  // Results stay alone on `out`.
  console::SessionOptions options;
  options.out = &io.err;
  options.answers = std::move(answers);
  options.terminal = terminal;
  options.terminalEchoes = terminal && isatty(STDIN_FILENO) == 1;
  return options;
}

}  // namespace

ModuleScope::ModuleScope() { host::OnLoad(); }
ModuleScope::~ModuleScope() { host::OnUnload(); }

LoadedModule::LoadedModule(CliStreams& io, std::vector<std::string> answers, std::istream* terminal)
    : session_(cad::Database::createDefault(), std::string(), Options(io, std::move(answers), terminal)) {}

LoadedModule::~LoadedModule() = default;

}  // namespace tv::cli
