#include "cli/config_command.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "cli/command_line.h"
#include "console/text_table.h"
#include "host/file_lock.h"
#include "host/text_files.h"
#include "settings/checked_write.h"
#include "settings/config.h"
#include "settings/field_table.h"
#include "settings/folders.h"

namespace tv::cli {

using console::Printable;
using console::TextTable;

namespace {

constexpr int kExitNotWritten = 4;

// The module's folders and the user's files, as a load reads them; nothing is written.
void LoadUserSettings() {
  settings::ComputeFolders();
  settings::GlobalConfig() = settings::Config{};
  settings::LoadConfig(settings::GlobalConfig(), false);
  settings::GlobalIni() = settings::Ini{};
  settings::LoadIni(settings::GlobalIni());
}

// Texts are quoted, so that an empty one and a blank one can be told apart.
template <class Rec>
void AddFields(TextTable& table, const Rec& rec, std::span<const settings::FieldSpec<Rec>> fields) {
  for (const auto& field : fields) {
    std::string value = Printable(settings::FieldValueText(rec, field));
    if (std::holds_alternative<std::string Rec::*>(field.member)) value = "\"" + value + "\"";
    table.addRow({std::string(field.name), std::move(value), std::string(field.meaning)});
  }
}

void Show(std::ostream& out) {
  const settings::Config& config = settings::GlobalConfig();
  const std::string path = settings::ConfigFilePath();
  std::error_code ec;
  out << "配置文件：" << Printable(path) << (std::filesystem::exists(path, ec) ? "" : "（不存在，显示默认值）") << '\n';

  out << "新图纸的默认打印设置：\n";
  TextTable record;
  AddFields(record, config.plot_setting, settings::PlotSettingFields());
  record.print(out);

  out << "快捷命令：\n";
  TextTable shortcuts;
  for (std::size_t i = 0; i < config.shortcut_ids.size() && i < config.shortcut_names.size(); ++i)
    shortcuts.addRow({"TV_BatchPlot_" + std::to_string(config.shortcut_ids[i]), Printable(config.shortcut_names[i])});
  if (shortcuts.empty()) out << "  无\n";
  shortcuts.print(out);

  out << "配置项：\n";
  TextTable fields;
  AddFields(fields, config, settings::ConfigFields());
  fields.print(out);

  out << "记忆项：\n";
  TextTable pairs;
  for (std::size_t i = 0; i < config.remember_keys.size() && i < config.remember_values.size(); ++i)
    pairs.addRow({Printable(config.remember_keys[i]), Printable(config.remember_values[i])});
  if (pairs.empty()) out << "  无\n";
  pairs.print(out);

  const settings::Ini& ini = settings::GlobalIni();
  out << "首次使用标志（" << Printable(settings::IniFilePath()) << "）：\n";
  TextTable flags;
  flags.addRow({"first_run_done", std::to_string(ini.first_run_done), "程序已首次加载"});
  flags.addRow({"single_scale_asked", std::to_string(ini.single_scale_asked), "单张打印已询问过默认比例"});
  flags.addRow({"batch_scale_asked", std::to_string(ini.batch_scale_asked), "批量打印已询问过默认比例"});
  flags.print(out);
}

int Export(const std::string& path, CliStreams& io) {
  if (!settings::SaveConfigTo(settings::GlobalConfig(), path, false)) {
    io.err << settings::WriteFailureText(path) << '\n';
    return kExitNotWritten;
  }
  io.out << "配置已保存到 " << Printable(path) << '\n';
  return kExitOk;
}

// A file that is there and can be opened; whether it is a configuration is read after.
std::optional<std::string> CheckReadable(const std::string& path) {
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) return "配置文件 " + Printable(path) + " 不存在";
  if (std::filesystem::is_directory(path, ec)) return Printable(path) + " 是文件夹，不是配置文件";
  if (!host::ReadFileBytes(path)) return "配置文件 " + Printable(path) + " 无法读取";
  return std::nullopt;
}

int Import(const std::string& path, CliStreams& io) {
  if (auto error = CheckReadable(path)) {
    io.err << "tvplot config: " << *error << '\n';
    return kExitUnreadable;
  }
  const std::string target = settings::ConfigFilePath();
  // An older file keeps the values it lacks from the user's configuration: that is read again
  // under the lock, so that nothing another run saved meanwhile is undone.
  host::FileLock lock(target);
  if (lock.held()) settings::LoadConfig(settings::GlobalConfig(), false);
  // Only a whole configuration replaces the user's: a drawing or a file cut short leaves it as it was.
  std::optional<settings::Config> imported = settings::ReadCompleteConfig(settings::GlobalConfig(), path);
  if (!imported) {
    io.err << "tvplot config: " << Printable(path) << " 不是完整的配置文件\n";
    return kExitUnreadable;
  }
  settings::GlobalConfig() = std::move(*imported);
  if (!lock.held() || !settings::SaveConfigTo(settings::GlobalConfig(), target, false)) {
    io.err << settings::WriteFailureText(target) << '\n';
    return kExitNotWritten;
  }
  io.out << "已读取 " << Printable(path) << "，并保存为用户配置 " << Printable(target) << '\n';
  return kExitOk;
}

void DefineConfig(CLI::App& app) {
  Describe(app,
           "用法：tvplot config show\n"
           "      tvplot config export 文件.cfg\n"
           "      tvplot config import 文件.cfg\n"
           "  show    按文件中的顺序显示用户配置（数据文件夹下的 BPlot_Cfg.cfg）的每一项及其含义，\n"
           "          其中包括新图纸的默认打印设置，以及 Tarvex.Ini 中的首次使用标志\n"
           "  export  将用户配置保存到指定的文件\n"
           "  import  读取指定的配置文件，并保存为用户配置\n",
           "  退出码：0 完成，1 用法错误，2 配置文件无法读取，4 文件写入失败\n");
}

int RunConfig(const ParsedArgs& args, CliStreams& io) {
  const std::vector<std::string>& words = args.positional;
  if (words.empty()) return args.usage(io, "缺少操作：show、export 或 import");
  const std::string& action = words.front();
  const std::size_t wanted = action == "show" ? 1 : 2;
  if (action != "show" && action != "export" && action != "import")
    return args.usage(io, "未知操作 " + Printable(action) + "，应为 show、export 或 import");
  if (words.size() < wanted) return args.usage(io, "缺少配置文件");
  if (words.size() > wanted) return args.usage(io, "多余的参数 " + Printable(words[wanted]));

  LoadUserSettings();
  int code = kExitOk;
  if (action == "show")
    Show(io.out);
  else if (action == "export")
    code = Export(words[1], io);
  else
    code = Import(words[1], io);
  io.out.flush();
  return code;
}

}  // namespace

const Subcommand& ConfigSubcommand() {
  static const Subcommand kConfig{"config", "显示、导出或导入用户配置", &DefineConfig, &RunConfig};
  return kConfig;
}

}  // namespace tv::cli
