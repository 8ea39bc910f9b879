#include "cli/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "console/text_table.h"

namespace tv::cli {

using console::DisplayWidth;
using console::Printable;

namespace {

// Help as the system writes it: the synopsis, the description, then one line per option with
// its value's placeholder, descriptions of several lines kept aligned, then the footer.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string, CLI::AppFormatMode) const override {
    std::vector<std::pair<std::string, std::string>> rows;
    for (const CLI::Option* opt : app->get_options()) {
      if (opt->get_positional() || opt->get_group().empty()) continue;
      std::string name;
      for (const std::string& s : opt->get_snames()) name += "-" + s + ", ";
      for (const std::string& l : opt->get_lnames()) name += "--" + l + ", ";
      name.resize(name.size() - 2);
      if (!opt->get_type_name().empty()) name += " " + opt->get_type_name();
      rows.emplace_back(std::move(name), opt->get_description());
    }
    // The help option last, after the command's own.
    if (!rows.empty() && app->get_help_ptr()) std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    std::size_t width = 0;
    for (const auto& row : rows) width = std::max(width, DisplayWidth(row.first));
    std::string out = app->get_description();
    for (const auto& [name, description] : rows) {
      std::string line = "  " + name + std::string(width - DisplayWidth(name) + 2, ' ');
      const std::string indent(line.size() - name.size() + DisplayWidth(name), ' ');
      std::size_t from = 0;
      for (bool first = true;; first = false) {
        const std::size_t end = description.find('\n', from);
        out += (first ? line : indent) + description.substr(from, end - from) + '\n';
        if (end == std::string::npos) break;
        from = end + 1;
      }
    }
    out += app->get_footer();
    return out;
  }
};

// The subcommand's options declared on a fresh parser.
std::unique_ptr<CLI::App> MakeApp(const Subcommand& command, std::vector<std::string>& positional) {
  auto app = std::make_unique<CLI::App>(std::string(), "tvplot " + std::string(command.name));
  app->formatter(std::make_shared<HelpFormatter>());
  app->set_help_flag("-h,--help", "显示本命令的用法");
  // Every value is kept; the subcommands take the last of a repeated option.
  app->option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  // Unknown options are collected and named in the message below, rather than CLI11's.
  app->allow_extras();
  app->add_option("words", positional)->group("");
  command.define(*app);
  return app;
}

const CLI::Option* ValueOption(const CLI::App& app, const std::string& word) {
  if (!word.starts_with("--")) return nullptr;
  const CLI::Option* opt = app.get_option_no_throw(word);
  return opt && !opt->get_positional() && opt->get_expected_min() > 0 ? opt : nullptr;
}

bool IsFlag(const CLI::App& app, const std::string& word) {
  if (!word.starts_with("--")) return false;
  const CLI::Option* opt = app.get_option_no_throw(word);
  return opt && !opt->get_positional() && opt->get_expected_min() == 0;
}

// "--out X" becomes "--out=X", so that a value that looks like an option ("-plot") stays a value;
// a flag given a value ("--json=false") is refused rather than read as given.
std::optional<std::string> JoinValues(const CLI::App& app, const std::vector<std::string>& args,
                                      std::vector<std::string>& joined) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--") {
      joined.insert(joined.end(), args.begin() + static_cast<std::ptrdiff_t>(i), args.end());
      break;
    }
    if (const std::size_t eq = args[i].find('='); eq != std::string::npos && IsFlag(app, args[i].substr(0, eq)))
      return "选项 " + args[i].substr(0, eq) + " 不带值";
    if (ValueOption(app, args[i])) {
      if (i + 1 >= args.size()) return "选项 " + args[i] + " 缺少值";
      joined.push_back(args[i]);
      // CLI11 reads "--answer=" as no value at all; an empty word after the name is one.
      if (!args[i + 1].empty()) joined.back() += "=" + args[i + 1];
      else joined.emplace_back();
      ++i;
      continue;
    }
    if (args[i].ends_with('=') && ValueOption(app, args[i].substr(0, args[i].size() - 1))) {
      joined.push_back(args[i].substr(0, args[i].size() - 1));
      joined.emplace_back();
      continue;
    }
    joined.push_back(args[i]);
  }
  return std::nullopt;
}

}  // namespace

void Describe(CLI::App& app, const std::string& description, const std::string& footer) {
  app.description(description);
  app.footer(footer);
}

void AddUnlisted(CLI::App& app, const std::string& name) { app.add_option(name)->group(""); }

void AddValue(CLI::App& app, const std::string& name, const std::string& placeholder, const std::string& description) {
  app.add_option(name)->description(description)->type_name(placeholder);
}

void AddFlag(CLI::App& app, const std::string& name, const std::string& description) {
  app.add_flag(name)->description(description);
}

bool ParsedArgs::has(std::string_view flag) const {
  const CLI::Option* opt = app_.get_option_no_throw(std::string(flag));
  return opt && opt->count() > 0;
}

std::optional<std::string> ParsedArgs::value(std::string_view option) const {
  const std::vector<std::string> all = values(option);
  if (all.empty()) return std::nullopt;
  return all.back();
}

std::vector<std::string> ParsedArgs::values(std::string_view option) const {
  const CLI::Option* opt = app_.get_option_no_throw(std::string(option));
  if (!opt) return {};
  return opt->results();
}

int ParsedArgs::usage(CliStreams& io, const std::string& message) const {
  io.err << "tvplot " << command_.name << ": " << message << '\n' << SubcommandHelp(command_);
  return kExitUsage;
}

std::optional<std::string> ParsedArgs::oneDrawingError() const {
  if (positional.empty()) return "缺少图纸文件";
  if (positional.size() > 1) return "多余的参数 " + Printable(positional[1]);
  return std::nullopt;
}

std::string SubcommandHelp(const Subcommand& command) {
  std::vector<std::string> positional;
  return MakeApp(command, positional)->help();
}

int RunSubcommand(const Subcommand& command, const std::vector<std::string>& args, CliStreams& io) {
  std::vector<std::string> positional;
  const std::unique_ptr<CLI::App> app = MakeApp(command, positional);
  const auto fail = [&](const std::string& message) {
    io.err << "tvplot " << command.name << ": " << message << '\n' << app->help();
    return kExitUsage;
  };
  std::vector<std::string> words;
  if (auto error = JoinValues(*app, args, words)) {
    // Help still wins over a missing value, as it does over any other mistake.
    const auto end = std::find(args.begin(), args.end(), std::string("--"));
    if (std::find_if(args.begin(), end, [](const std::string& a) { return a == "-h" || a == "--help"; }) == end)
      return fail(*error);
    words = {"--help"};
  }
  std::reverse(words.begin(), words.end());
  try {
    app->parse(words);
  } catch (const CLI::CallForHelp&) {
    io.out << app->help();
    return kExitOk;
  } catch (const CLI::ParseError& e) {
    return fail(Printable(e.what()));
  }
  // CLI11 also files the "--" that ended the options among the words it did not know.
  for (const std::string& unknown : app->remaining())
    if (unknown != "--") return fail("未知选项 " + Printable(unknown));
  return command.run(ParsedArgs(command, *app, std::move(positional)), io);
}

}  // namespace tv::cli
