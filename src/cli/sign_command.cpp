#include "cli/sign_command.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string_view>

#include "cli/action_options.h"
#include "cli/library_import.h"
#include "cli/loaded_module.h"
#include "cli/sign_capture.h"
#include "cli/sign_drawing_command.h"
#include "console/text_table.h"
#include "settings/config.h"
#include "signing/sign_library.h"

namespace tv::cli {

using console::Printable;

namespace {

// The options of the actions that work on drawings, with the actions that take each.
constexpr ActionOption kActionOptions[] = {
    {"--id", "N", "capture：新签名的人员编号；place、approve：人员编号", "capture、place、approve"},
    {"--name", "姓名", "capture：新签名的姓名；place：签名库中的姓名", "capture、place"},
    {"--code", "N", "capture：授权码，0 到 999999，0 表示无需授权（默认 0）；approve：签名授权码", "capture、approve"},
    {"--window", "X1,Y1,X2,Y2", "capture：只取完全位于此窗口内的曲线", "capture"},
    {"--layer", "图层", "capture：只取此图层上的曲线", "capture"},
    {"--at", "X,Y", "place：第一个角点", "place"},
    {"--to", "X,Y", "place：第二个角点", "place"},
    {"--direction", "D", "place：0 不转，1 逆时针转 90 度，2 顺时针转 90 度", "place"},
    {"--days", "D", "approve：授权期限（天，0 - 2000）", "approve"},
    {"--out", "新图纸.dxf", "place、approve：结果另存为该图纸", "place、approve"},
};

std::string Size(double w, double h) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%g x %g", w, h);
  return buffer;
}

int RunList(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.size() > 1) return args.usage(io, "多余的参数 " + Printable(args.positional[1]));
  LoadedModule module(io, {}, nullptr);
  const signing::SignLibrary& library = signing::GlobalSignLibrary();
  const std::string path = settings::SignLibraryPath();
  if (library.signs.empty()) {
    io.out << "签名库为空：" << Printable(path) << '\n';
    return kExitOk;
  }
  io.out << "签名库：" << Printable(path) << "，共 " << library.signs.size() << " 个签名\n";
  console::TextTable table;
  table.addRow({"序 号", "人员编号", "姓 名", "轮廓数", "尺寸", "授 权 码", "状 态"});
  int row = 0;
  for (const auto& s : library.signs)
    table.addRow({std::to_string(++row), std::to_string(s->person_id), Printable(s->person_name),
                  std::to_string(s->shapes.size()), Size(s->width, s->height), s->auth_code ? "******" : "未设置",
                  s->enabled ? "√ 可用" : "X  禁用"});
  table.print(io.out);
  return kExitOk;
}

int RunExport(const ParsedArgs& args, CliStreams& io) {
  std::string error;
  const std::optional<std::string> path = LibraryFileArgument(args, " .tvlib1 文件", error);
  if (!path) return args.usage(io, error);
  if (args.has("--keep") || args.has("--replace")) return args.usage(io, "export 不接受 --keep 或 --replace");
  LoadedModule module(io, {}, nullptr);
  signing::SignLibrary& library = signing::GlobalSignLibrary();
  if (!signing::SaveSignLibrary(library, *path, true)) {
    io.err << "\ntvplot sign: 未能写入 " << Printable(*path) << '\n';
    return kExitWriteFailed;
  }
  io.out << "已将签名库（" << library.signs.size() << " 个签名）写入 " << Printable(*path) << '\n';
  return kExitOk;
}

int RunImport(const ParsedArgs& args, CliStreams& io) {
  std::string error;
  const std::optional<std::string> path = LibraryFileArgument(args, " .tvlib1 文件", error);
  if (!path) return args.usage(io, error);
  const bool keep = args.has("--keep"), replace = args.has("--replace");
  if (keep && replace) return args.usage(io, "--keep 和 --replace 只能给出其一");

  // The file is looked at before the library is touched: one cut short or no library at all is
  // no import, and leaves the library as it was.
  std::error_code ec;
  const std::optional<signing::LibraryFileFacts> facts =
      std::filesystem::is_regular_file(*path, ec) ? signing::InspectSignLibraryFile(*path) : std::nullopt;
  if (!facts) {
    io.err << "tvplot sign: 无法读取文件 " << Printable(*path) << '\n';
    return kExitUnreadable;
  }
  if (!facts->complete) {
    io.err << "tvplot sign: " << Printable(*path) << " 不是完整的签名库文件\n";
    return kExitUnreadable;
  }

  LoadedModule module(io, KeepAnswers(args), keep || replace ? nullptr : &std::cin);
  signing::SignLibrary& library = signing::GlobalSignLibrary();
  if (!keep && !replace && isatty(STDIN_FILENO) != 1 && !library.signs.empty())
    return args.usage(io, "签名库不为空，标准输入不是终端时须用 --keep 或 --replace 指明是否保留原签名库信息");
  // Asked before the library file is locked: nobody waits on a user's answer.
  const std::optional<bool> keeping = signing::AskKeepSigns(library);
  if (!keeping) {
    io.err << "\ntvplot sign: 未回答是否保留原签名库信息，签名库未改变\n";
    return kExitUnanswered;
  }
  const std::string userPath = settings::SignLibraryPath();
  std::size_t before = 0;
  const bool saved = UnderFileLock(userPath, [&] {
    signing::ReadSignFileInto(library, userPath, true);
    before = *keeping ? library.signs.size() : 0;
    signing::ReadSignFileInto(library, *path, !*keeping);
    return signing::SaveSignLibrary(library, userPath, true);
  });
  if (!saved) {
    io.err << "\ntvplot sign: 未能写入 " << Printable(userPath) << '\n';
    return kExitWriteFailed;
  }
  const std::size_t now = library.signs.size();
  if (*keeping)
    io.out << "已从 " << Printable(*path) << " 导入 " << now - before << " 个签名，签名库现有 " << now << " 个签名\n";
  else
    io.out << "已用 " << Printable(*path) << " 中的 " << now << " 个签名替换签名库\n";
  return kExitOk;
}

void DefineSign(CLI::App& app) {
  Describe(app,
           "用法：tvplot sign list\n"
           "      tvplot sign export 文件.tvlib1\n"
           "      tvplot sign import 文件.tvlib1 [--keep | --replace]\n"
           "      tvplot sign capture 图纸.dxf --id N --name 姓名 [--code N] [--window X1,Y1,X2,Y2 | --layer 图层]\n"
           "      tvplot sign place 图纸.dxf (--name 姓名 | --id 人员编号) --at X1,Y1 --to X2,Y2 [--direction 0|1|2] --out 新图纸.dxf\n"
           "      tvplot sign approve 图纸.dxf --id 人员编号 --code 授权码 --days 天数 --out 新图纸.dxf\n"
           "  管理用户的签名库（数据文件夹中的 Sign.tvlib1，或设置中指定的文件）。\n"
           "  list          列出签名（人员编号、姓名、轮廓数、尺寸、授权码、状态）\n"
           "  export 文件   把签名库写入文件\n"
           "  import 文件   把文件中的签名并入签名库并保存；人员编号相同的保留库中原有的签名\n"
           "  capture 图纸  由模型空间的直线、圆弧、多段线和样条曲线（或窗口内、图层上的）录入新签名\n"
           "  place 图纸    把签名放进图纸（TV_Sign 层），两个角点之间保持比例居中；方向 1、2 转 90 度\n"
           "  approve 图纸  用授权码为图纸中该人员的全部签名授权，有效期自今天起若干天（0 取消授权）\n"
           "  place 和 approve 把结果另存为 --out 给出的图纸，原图纸不会被改写。\n"
           "  签名库不为空而未给出 --keep 或 --replace 时，在终端询问；标准输入不是终端时必须给出其一。\n"
           "  退出码：0 完成，1 用法错误，2 文件无法读取或不是完整的签名库文件，3 提问未得到回答，4 写入失败，\n"
           "  6 签名库中已有该人员编号，7 所选曲线未形成封闭的签名轮廓\n");
  AddFlag(app, "--keep", "导入时保留原签名库信息（回答“是”）");
  AddFlag(app, "--replace", "导入时不保留原签名库信息（回答“否”）");
  AddActionOptions(app, kActionOptions);
}

int RunSign(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.empty()) return args.usage(io, "缺少操作：list、export、import、capture、place 或 approve");
  const std::string& action = args.positional.front();
  if (action != "import" && (args.has("--keep") || args.has("--replace")))
    return args.usage(io, "--keep 和 --replace 只用于 import");
  if (std::optional<std::string> misplaced = MisplacedOption(args, action, kActionOptions))
    return args.usage(io, *misplaced);
  if (action == "list") return RunList(args, io);
  if (action == "export") return RunExport(args, io);
  if (action == "import") return RunImport(args, io);
  if (action == "capture") return RunSignCapture(args, io);
  if (action == "place") return RunSignPlace(args, io);
  if (action == "approve") return RunSignApprove(args, io);
  return args.usage(io, "未知操作 " + Printable(action) + "，应为 list、export、import、capture、place 或 approve");
}

}  // namespace

const Subcommand& SignSubcommand() {
  static const Subcommand kSign{"sign", "显示、导出或导入签名库，或由图纸中的曲线录入新签名", &DefineSign, &RunSign};
  return kSign;
}

}  // namespace tv::cli
