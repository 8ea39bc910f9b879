#include "cli/stamp_command.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>

#include "cli/library_import.h"
#include "cli/loaded_module.h"
#include "console/text_table.h"
#include "host/pictures.h"
#include "settings/config.h"
#include "signing/stamp_form.h"
#include "signing/stamp_library.h"

namespace tv::cli {

using console::Printable;

namespace {

constexpr int kExitNameTaken = 6;

std::string DateText(std::int32_t d, bool overdue) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%d.%d.%d%s", d / 10000, d / 100 % 100, d % 100, overdue ? " (过期)" : "");
  return buffer;
}

std::int32_t Today() {
  const std::chrono::year_month_day d{signing::LocalToday()};
  return static_cast<std::int32_t>(static_cast<int>(d.year()) * 10000 + static_cast<unsigned>(d.month()) * 100 +
                                   static_cast<unsigned>(d.day()));
}

int RunList(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.size() > 1) return args.usage(io, "多余的参数 " + Printable(args.positional[1]));
  LoadedModule module(io, {}, nullptr);
  const signing::StampLibrary& library = signing::GlobalStampLibrary();
  const std::string path = settings::StampLibraryPath();
  if (library.stamps.empty()) {
    io.out << "印章库为空：" << Printable(path) << '\n';
    return kExitOk;
  }
  io.out << "印章库：" << Printable(path) << "，共 " << library.stamps.size() << " 个印章\n";
  console::TextTable table;
  table.addRow({"序号", "印章名", "授权码", "印章有效期", "印章尺寸(mm)", "印章类型", "状态", "图片(字节)"});
  const std::int32_t today = Today();
  int row = 0;
  for (const auto& s : library.stamps) {
    char size[64];
    std::snprintf(size, sizeof size, "%.0f x %.0f", s->width, s->height);
    const bool knownKind = s->stamp_kind >= 0 && s->stamp_kind < 5;
    table.addRow({std::to_string(++row), Printable(s->name), s->auth_code ? "******" : "未设置",
                  DateText(s->valid_until, s->valid_until < today), size,
                  knownKind ? signing::kStampKindNames[s->stamp_kind] : std::to_string(s->stamp_kind),
                  s->enabled ? "√ 可用" : "X  禁用", std::to_string(s->image_size)});
  }
  table.print(io.out);
  return kExitOk;
}

int RunExport(const ParsedArgs& args, CliStreams& io) {
  std::string error;
  const std::optional<std::string> path = LibraryFileArgument(args, " .tvlib2 文件", error);
  if (!path) return args.usage(io, error);
  LoadedModule module(io, {}, nullptr);
  signing::StampLibrary& library = signing::GlobalStampLibrary();
  if (!signing::SaveStampLibrary(library, *path)) {
    io.err << "tvplot stamp: 未能写入 " << Printable(*path) << '\n';
    return kExitWriteFailed;
  }
  io.out << "已将印章库（" << library.stamps.size() << " 个印章）写入 " << Printable(*path) << '\n';
  return kExitOk;
}

int RunImport(const ParsedArgs& args, CliStreams& io) {
  std::string error;
  const std::optional<std::string> path = LibraryFileArgument(args, " .tvlib2 文件", error);
  if (!path) return args.usage(io, error);
  const bool keep = args.has("--keep"), replace = args.has("--replace");
  if (keep && replace) return args.usage(io, "--keep 和 --replace 只能给出其一");

  // A file cut short or no library at all is no import, and leaves the library as it was.
  std::error_code ec;
  const std::optional<signing::LibraryFileFacts> facts =
      std::filesystem::is_regular_file(*path, ec) ? signing::InspectStampLibraryFile(*path) : std::nullopt;
  if (!facts) {
    io.err << "tvplot stamp: 无法读取文件 " << Printable(*path) << '\n';
    return kExitUnreadable;
  }
  if (!facts->complete) {
    io.err << "tvplot stamp: " << Printable(*path) << " 不是完整的印章库文件\n";
    return kExitUnreadable;
  }

  LoadedModule module(io, KeepAnswers(args), keep || replace ? nullptr : &std::cin);
  signing::StampLibrary& library = signing::GlobalStampLibrary();
  if (!keep && !replace && isatty(STDIN_FILENO) != 1 && !library.stamps.empty())
    return args.usage(io, "印章库不为空，标准输入不是终端时须用 --keep 或 --replace 指明是否保留原印章库信息");
  const std::optional<bool> keeping = signing::AskKeepStamps(library);
  if (!keeping) {
    io.err << "\ntvplot stamp: 未回答是否保留原印章库信息，印章库未改变\n";
    return kExitUnanswered;
  }
  const std::string userPath = settings::StampLibraryPath();
  std::size_t before = 0;
  const bool saved = UnderFileLock(userPath, [&] {
    signing::ReadStampFileInto(library, userPath, true);
    before = *keeping ? library.stamps.size() : 0;
    signing::ReadStampFileInto(library, *path, !*keeping);
    return signing::SaveStampLibrary(library, userPath);
  });
  if (!saved) {
    io.err << "\ntvplot stamp: 未能写入 " << Printable(userPath) << '\n';
    return kExitWriteFailed;
  }
  const std::size_t now = library.stamps.size();
  if (*keeping)
    io.out << "已从 " << Printable(*path) << " 导入 " << now - before << " 个印章，印章库现有 " << now << " 个印章\n";
  else
    io.out << "已用 " << Printable(*path) << " 中的 " << now << " 个印章替换印章库\n";
  return kExitOk;
}

// The stamp form's answers from the options; Enter keeps a field's default.
std::optional<std::vector<std::string>> FormAnswers(const ParsedArgs& args, const std::string& image,
                                                    const std::string& name, std::string& error) {
  std::vector<std::string> answers{image, name, args.value("--code").value_or(""), "", args.value("--width").value_or(""),
                                   args.value("--valid-until").value_or("")};
  if (const auto code = args.value("--code")) {
    char* end = nullptr;
    const long v = std::strtol(code->c_str(), &end, 10);
    if (code->empty() || *end || v < 0 || v > 999999) {
      error = "--code 应为 0 到 999999 的整数";
      return std::nullopt;
    }
  }
  if (const auto width = args.value("--width")) {
    char* end = nullptr;
    const double v = std::strtod(width->c_str(), &end);
    if (width->empty() || *end || !(v >= 10.0 && v <= 200.0)) {
      error = "--width 应在 10 到 200 mm 之间";
      return std::nullopt;
    }
  }
  if (const auto kind = args.value("--kind")) {
    for (int k = 0; k < 5; ++k)
      if (*kind == signing::kStampKindNames[k] || *kind == std::to_string(k + 1)) answers[3] = std::to_string(k + 1);
    if (answers[3].empty()) {
      error = "--kind 应为 1 到 5 或 注册章、出图章、项目章、竣工章、不分类";
      return std::nullopt;
    }
  }
  if (const auto date = args.value("--valid-until")) {
    char* end = nullptr;
    const long v = std::strtol(date->c_str(), &end, 10);
    if (date->empty() || *end || !signing::InDatePickerRange(v, signing::LocalToday())) {
      error = "--valid-until 应为今天前后 3650 天以内的日期，写作年月日（20300101）";
      return std::nullopt;
    }
  }
  return answers;
}

int RunAdd(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.size() < 3) return args.usage(io, "缺少印章图片或印章名");
  if (args.positional.size() > 3) return args.usage(io, "多余的参数 " + Printable(args.positional[3]));
  const std::string& image = args.positional[1];
  const std::string& name = args.positional[2];
  if (name.find_first_not_of(" \t") == std::string::npos) return args.usage(io, "印章名不能为空 !");
  std::string error;
  std::optional<std::vector<std::string>> answers = FormAnswers(args, image, name, error);
  if (!answers) return args.usage(io, error);
  std::error_code ec;
  if (!std::filesystem::is_regular_file(image, ec) || !host::OpenPicture(image)) {
    io.err << "tvplot stamp: " << Printable(image) << " 不是可读取的 PNG 或 JPEG 图片\n";
    return kExitUnreadable;
  }

  LoadedModule module(io, std::move(*answers), nullptr);
  signing::StampLibrary& library = signing::GlobalStampLibrary();
  const std::string userPath = settings::StampLibraryPath();
  bool taken = false, answered = true;
  const signing::TV_Stamp* added = nullptr;
  const bool saved = UnderFileLock(userPath, [&] {
    signing::ReadStampFileInto(library, userPath, true);
    const std::size_t before = library.stamps.size();
    if (!signing::AddStampFromImage(library)) {
      answered = false;
      return false;
    }
    // The library keeps the first stamp of a name: a second one would be gone at the next load.
    taken = signing::FindStampByName(library, library.stamps.back()->name) != library.stamps.back().get();
    if (taken) {
      library.stamps.resize(before);
      return false;
    }
    added = library.stamps.back().get();
    return signing::SaveStampLibrary(library, userPath);
  });
  if (taken) {
    io.err << "\ntvplot stamp: 印章库中已有印章 " << Printable(name) << "，未增加\n";
    return kExitNameTaken;
  }
  if (!answered) {
    io.err << "\ntvplot stamp: 印章未录入，印章库未改变\n";
    return kExitUnanswered;
  }
  if (!saved) {
    io.err << "\ntvplot stamp: 未能写入 " << Printable(userPath) << '\n';
    return kExitWriteFailed;
  }
  char size[64];
  std::snprintf(size, sizeof size, "%.0f x %.0f mm", added->width, added->height);
  io.out << "已录入印章 " << Printable(added->name) << "（" << size << "）";
  io.out << "，印章库现有 " << library.stamps.size() << " 个印章\n";
  return kExitOk;
}

void DefineStamp(CLI::App& app) {
  Describe(app,
           "用法：tvplot stamp list\n"
           "      tvplot stamp export 文件.tvlib2\n"
           "      tvplot stamp import 文件.tvlib2 [--keep | --replace]\n"
           "      tvplot stamp add 图片 印章名 [--width MM] [--code N] [--kind 类型] [--valid-until 年月日]\n"
           "  管理用户的印章库（数据文件夹中的 Stamp.tvlib2，或设置中指定的文件）。\n"
           "  list          列出印章（印章名、授权码、有效期、尺寸、类型、状态、图片大小）\n"
           "  export 文件   把印章库写入文件\n"
           "  import 文件   把文件中的印章并入印章库并保存；同名印章保留库中原有的\n"
           "  add 图片 名   由 PNG 或 JPEG 图片录入新印章；高度按图片比例随宽度而定\n",
           "  印章库不为空而导入时未给出 --keep 或 --replace，在终端询问；标准输入不是终端时必须给出其一。\n"
           "  退出码：0 完成，1 用法错误，2 文件无法读取或不是完整的印章库文件、图片无法读取，\n"
           "  3 提问未得到回答，4 写入失败，6 印章库中已有同名印章\n");
  AddFlag(app, "--keep", "导入时保留原印章库信息（回答“是”）");
  AddFlag(app, "--replace", "导入时不保留原印章库信息（回答“否”）");
  AddValue(app, "--width", "MM", "印章宽度，10 到 200 mm（默认 62）");
  AddValue(app, "--code", "N", "授权码，0 到 999999，0 表示无需授权（默认 0）");
  AddValue(app, "--kind", "类型", "1 注册章、2 出图章、3 项目章、4 竣工章、5 不分类（默认 注册章）");
  AddValue(app, "--valid-until", "年月日", "有效期，如 20300101（默认 20250212）");
}

int RunStamp(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.empty()) return args.usage(io, "缺少操作：list、export、import 或 add");
  const std::string& action = args.positional.front();
  if (action != "import" && (args.has("--keep") || args.has("--replace")))
    return args.usage(io, "--keep 和 --replace 只用于 import");
  if (action != "add")
    for (const char* option : {"--width", "--code", "--kind", "--valid-until"})
      if (args.value(option)) return args.usage(io, std::string(option) + " 只用于 add");
  if (action == "list") return RunList(args, io);
  if (action == "export") return RunExport(args, io);
  if (action == "import") return RunImport(args, io);
  if (action == "add") return RunAdd(args, io);
  return args.usage(io, "未知操作 " + Printable(action) + "，应为 list、export、import 或 add");
}

}  // namespace

const Subcommand& StampSubcommand() {
  static const Subcommand kStamp{"stamp", "显示、导出、导入印章库，或由图片录入新印章", &DefineStamp, &RunStamp};
  return kStamp;
}

}  // namespace tv::cli
