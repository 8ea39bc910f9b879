#pragma once
// The one option grammar of every `tvplot` subcommand, on CLI11: "--name VALUE" or
// "--name=VALUE" (a value option takes the next word whatever it looks like), flags, positional
// words anywhere, "--" ending the options, "-h"/"--help" for the command's help; "-" and negative
// numbers ("-5", "-0.5") are positional. A wrong usage always reads "tvplot NAME: message"
// followed by the command's help on the error stream, and exits with 1.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/subcommand.h"

namespace CLI {
class App;
}

namespace tv::cli {

// What one command line gave, read through the options the subcommand declared.
class ParsedArgs {
 public:
  ParsedArgs(const Subcommand& command, const CLI::App& app, std::vector<std::string> positional)
      : command_(command), app_(app), positional(std::move(positional)) {}

  bool has(std::string_view flag) const;
  // The last value given for the option.
  std::optional<std::string> value(std::string_view option) const;
  // Every value given for the option, in order.
  std::vector<std::string> values(std::string_view option) const;

  // Reports a wrong usage: the message and the command's help on io.err; returns kExitUsage.
  int usage(CliStreams& io, const std::string& message) const;
  // What is wrong with the positional words when the command takes exactly one, the drawing:
  // "缺少图纸文件" or "多余的参数 …"; nothing when they are right.
  std::optional<std::string> oneDrawingError() const;

 private:
  const Subcommand& command_;
  const CLI::App& app_;

 public:
  std::vector<std::string> positional;
};

// The help's text before the options (the synopsis, "用法：tvplot …", and what the command
// does) and after them (the exit codes).
void Describe(CLI::App& app, const std::string& description, const std::string& footer = {});
// Declares an option that takes a value, shown in the help as "--name PLACEHOLDER  description";
// a description may run over several lines.
void AddValue(CLI::App& app, const std::string& name, const std::string& placeholder, const std::string& description);
// Declares a flag.
void AddFlag(CLI::App& app, const std::string& name, const std::string& description);
// Declares an option with a value that the help does not show, so that the command can refuse it
// with a reason of its own.
void AddUnlisted(CLI::App& app, const std::string& name);

// Parses `args` (the words after the subcommand's name) with the options `command` declares and
// runs it; prints the help for -h/--help. Returns the exit code.
int RunSubcommand(const Subcommand& command, const std::vector<std::string>& args, CliStreams& io);

// The help of one subcommand: its synopsis, what it does, its options and exit codes.
std::string SubcommandHelp(const Subcommand& command);

}  // namespace tv::cli
