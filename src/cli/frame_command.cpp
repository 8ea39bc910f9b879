#include "cli/frame_command.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string_view>

#include "aids/frame_fit.h"
#include "cli/action_options.h"
#include "cli/json_output.h"
#include "cli/library_import.h"
#include "cli/loaded_module.h"
#include "cli/option_values.h"
#include "cli/session_launch.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/command_prologue.h"
#include "host/entity.h"
#include "host/frame_files.h"
#include "host/wrappers.h"
#include "settings/config.h"
#include "titleblock/frame_library.h"

namespace tv::cli {

namespace fs = std::filesystem;
using console::OneLine;
using console::Printable;

namespace {

constexpr const char* kProgram = "tvplot frame: ";
constexpr const char* kActions = "list、add、delete、rename、redefine、preview 或 place";

// The options, with the actions that take each.
constexpr ActionOption kActionOptions[] = {
    {"--all", nullptr, "add、redefine：取模型空间的全部图形", "add、redefine"},
    {"--json", nullptr, "list：以 JSON 输出", "list"},
    {"--folder", "文件夹", "图框所在文件夹（默认为设置中的图框文件夹）", "list、add、delete、rename、redefine、preview、place"},
    {"--name", "图框名", "add：新图框的名称；place：要放置的图框", "add、place"},
    {"--window", "X1,Y1 X2,Y2", "add、redefine：取完全位于此窗口内的图形", "add、redefine"},
    {"--layer", "图层", "add、redefine：取此图层上的图形", "add、redefine"},
    {"--corners", "X1,Y1 X2,Y2", "place：图框的绘图区域放在这两个角点之间（点取放置图框的两个角点）", "place"},
    {"--around", "X1,Y1 X2,Y2", "place：图框套住完全位于此窗口内的图形（选取需要套图框的图形）", "place"},
    {"--out", "文件", "preview：预览图片（.png）；place：结果另存为该图纸", "preview、place"},
};

std::string Folder(const ParsedArgs& args) { return args.value("--folder").value_or(settings::FrameFolder()); }

std::optional<std::pair<Point3d, Point3d>> ParseCorners(const std::string& text) {
  std::istringstream words(text);
  std::string a, b, rest;
  if (!(words >> a >> b) || (words >> rest)) return std::nullopt;
  const auto corner = [](const std::string& w) -> std::optional<Point3d> {
    const std::size_t comma = w.find(',');
    if (comma == std::string::npos) return std::nullopt;
    const auto x = ParseNumber(std::string_view(w).substr(0, comma)), y = ParseNumber(std::string_view(w).substr(comma + 1));
    if (!x || !y) return std::nullopt;
    return Point3d{*x, *y, 0};
  };
  const auto p = corner(a), q = corner(b);
  if (!p || !q || p->x == q->x || p->y == q->y) return std::nullopt;
  return std::pair{*p, *q};
}

// "--window X1,Y1 X2,Y2" and its kind: the second corner may come as a word of its own, the one
// past the positional words the action takes.
std::optional<std::string> CornerOption(const ParsedArgs& args, const char* name, std::vector<std::string>& positional,
                                        std::size_t expected, std::optional<std::pair<Point3d, Point3d>>& corners) {
  std::optional<std::string> given = args.value(name);
  if (!given) return std::nullopt;
  std::string text = *given;
  if (text.find(' ') == std::string::npos && positional.size() == expected + 1 && text.find(',') != std::string::npos) {
    text += " " + positional.back();
    positional.pop_back();
  }
  corners = ParseCorners(text);
  if (!corners) return std::string(name) + " " + Printable(text) + " 无效，应为 " + name + " X1,Y1 X2,Y2（宽度和高度不为 0）";
  return std::nullopt;
}

std::string Failed(const titleblock::FrameFailure& f) { return f.caption + "：" + OneLine(f.text); }

int ReportFailure(const titleblock::FrameFailure& f, CliStreams& io) {
  io.err << kProgram << Failed(f) << '\n';
  return f.text == "图框重名 !" ? kExitFrameNameTaken : kExitWriteFailed;
}

std::optional<std::size_t> FindFrame(const titleblock::FrameLibrary& library, const std::string& name, CliStreams& io) {
  const std::optional<std::size_t> index = library.find(name);
  if (!index) io.err << kProgram << "图框文件夹 " << Printable(library.folder()) << " 中没有图框 " << Printable(name) << '\n';
  return index;
}

bool SameNameNoCase(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
           return std::tolower(x) == std::tolower(y);
         });
}

// What of the model space goes into a frame: inside the window, on the layer, or all.
struct Picking {
  std::optional<std::pair<Point3d, Point3d>> window;
  std::optional<std::string> layer;
};

std::optional<std::string> ReadPicking(const ParsedArgs& args, std::vector<std::string>& positional, std::size_t expected,
                                       Picking& picking) {
  const int given = int(args.value("--window").has_value()) + int(args.value("--layer").has_value()) + int(args.has("--all"));
  if (given != 1) return "须给出 --window、--layer 或 --all 之一";
  if (auto error = CornerOption(args, "--window", positional, expected, picking.window)) return error;
  picking.layer = args.value("--layer");
  return std::nullopt;
}

ObjectIdArray Picked(const Picking& picking) {
  ObjectIdArray all, picked;
  host::CollectSpaceIds(host::ModelSpaceId(), all);
  for (ObjectId id : all) {
    const host::Entity e = host::OpenEntity(id);
    if (!e) continue;
    if (picking.window) {
      const std::optional<Extents3d> box = e.geomExtents();
      const auto& [p, q] = *picking.window;
      if (!box || box->min.x < std::min(p.x, q.x) || box->min.y < std::min(p.y, q.y) || box->max.x > std::max(p.x, q.x) ||
          box->max.y > std::max(p.y, q.y))
        continue;
    }
    if (picking.layer) {
      const std::optional<host::LayerFacts> layer = host::ReadLayer(e.layer());
      if (!layer || !SameNameNoCase(layer->name, *picking.layer)) continue;
    }
    picked.push_back(id);
  }
  return picked;
}

std::optional<std::string> CheckCount(const std::vector<std::string>& positional, std::size_t count, const char* missing) {
  if (positional.size() < count) return missing;
  if (positional.size() > count) return "多余的参数 " + Printable(positional[count]);
  return std::nullopt;
}

int RunList(const ParsedArgs& args, CliStreams& io) {
  if (auto error = CheckCount(args.positional, 1, "")) return args.usage(io, *error);
  LoadedModule module(io, {}, nullptr);
  const titleblock::FrameLibrary library(Folder(args));
  if (args.has("--json")) {
    Json frames = Json::array();
    std::size_t n = 0;
    for (const titleblock::FrameEntry& e : library.entries())
      frames.push_back({{"number", ++n}, {"name", titleblock::ShownFrameName(e)}, {"file", e.file_name}, {"path", e.path}});
    PrintJson(io.out, {{"folder", library.folder()}, {"frames", frames}}, {{}, {"frames"}});
    return kExitOk;
  }
  if (library.entries().empty()) {
    io.out << "图框文件夹中没有图框：" << Printable(library.folder()) << '\n';
    return kExitOk;
  }
  io.out << "图框文件夹：" << Printable(library.folder()) << "，共 " << library.entries().size() << " 个图框\n";
  console::TextTable table;
  table.addRow(titleblock::FrameListColumns());
  for (const auto& row : library.rows()) table.addRow({row[0], Printable(row[1]), row[2], row[3]});
  table.print(io.out);
  return kExitOk;
}

// The drawing of `add`, `redefine` and `place` in a session of its own; `work` runs with the
// module loaded and returns the exit code.
template <class Work>
int WithDrawing(const std::string& path, CliStreams& io, std::vector<std::string> answers, Work&& work,
                const std::optional<std::string>& saveAs = std::nullopt) {
  std::optional<cad::Database> db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;
  std::ostringstream transcript;
  console::SessionOptions options = TranscriptOptions(transcript, io);
  options.answers = std::move(answers);
  console::Session session(std::move(*db), path, std::move(options));
  const NoticesToErr notices(io);
  const int result = [&] {
    const ModuleScope module;
    return work();
  }();
  if (result != kExitOk || !saveAs) return result;
  if (!SaveDrawingAs(session.database(), *saveAs, io)) return kExitNotSaved;
  io.out << *saveAs << '\n';
  return kExitOk;
}

int RunAdd(const ParsedArgs& args, CliStreams& io) {
  std::vector<std::string> positional = args.positional;
  Picking picking;
  if (auto error = ReadPicking(args, positional, 2, picking)) return args.usage(io, *error);
  if (auto error = CheckCount(positional, 2, "缺少图纸文件")) return args.usage(io, *error);
  const std::optional<std::string> name = args.value("--name");
  if (!name || name->empty()) return args.usage(io, "缺少 --name（新图框的名称）");
  return WithDrawing(positional[1], io, {}, [&] {
    const ObjectIdArray ids = Picked(picking);
    if (ids.empty()) {
      io.err << kProgram << "没有选中图形，图框库未改变\n";
      return kExitNothingSelected;
    }
    titleblock::FrameLibrary library(Folder(args));
    if (const auto failure = library.AddFrame(ids, *name)) return ReportFailure(*failure, io);
    io.out << "已录入图框 " << Printable(*name) << "（" << ids.size() << " 个图形）：" << Printable(library.entries().back().path)
           << '\n';
    return kExitOk;
  });
}

int RunRedefine(const ParsedArgs& args, CliStreams& io) {
  std::vector<std::string> positional = args.positional;
  Picking picking;
  if (auto error = ReadPicking(args, positional, 3, picking)) return args.usage(io, *error);
  if (auto error = CheckCount(positional, 3, "须给出图框名和图纸文件")) return args.usage(io, *error);
  return WithDrawing(positional[2], io, {}, [&] {
    titleblock::FrameLibrary library(Folder(args));
    const std::optional<std::size_t> index = FindFrame(library, positional[1], io);
    if (!index) return kExitUnreadable;
    const ObjectIdArray ids = Picked(picking);
    if (ids.empty()) {
      io.err << kProgram << "没有选中图形，图框未改变\n";
      return kExitNothingSelected;
    }
    if (const auto failure = library.RedefineFrame(*index, ids)) return ReportFailure(*failure, io);
    io.out << "已重新定义图框 " << Printable(positional[1]) << "（" << ids.size() << " 个图形）\n";
    return kExitOk;
  });
}

int RunDelete(const ParsedArgs& args, CliStreams& io) {
  if (auto error = CheckCount(args.positional, 2, "缺少图框名")) return args.usage(io, *error);
  LoadedModule module(io, {}, nullptr);
  titleblock::FrameLibrary library(Folder(args));
  const std::optional<std::size_t> index = FindFrame(library, args.positional[1], io);
  if (!index) return kExitUnreadable;
  if (const auto failure = library.DeleteFrame(*index)) return ReportFailure(*failure, io);
  io.out << "已删除图框 " << Printable(args.positional[1]) << "，图框文件夹现有 " << library.entries().size() << " 个图框\n";
  return kExitOk;
}

int RunRename(const ParsedArgs& args, CliStreams& io) {
  if (auto error = CheckCount(args.positional, 3, "须给出原图框名和新图框名")) return args.usage(io, *error);
  if (args.positional[2].empty()) return args.usage(io, "新图框名不能为空");
  LoadedModule module(io, {}, nullptr);
  titleblock::FrameLibrary library(Folder(args));
  const std::optional<std::size_t> index = FindFrame(library, args.positional[1], io);
  if (!index) return kExitUnreadable;
  if (const auto failure = library.RenameFrame(*index, args.positional[2])) return ReportFailure(*failure, io);
  io.out << "已将图框 " << Printable(args.positional[1]) << " 改名为 " << Printable(args.positional[2]) << '\n';
  return kExitOk;
}

int RunPreview(const ParsedArgs& args, CliStreams& io) {
  if (auto error = CheckCount(args.positional, 2, "缺少图框名")) return args.usage(io, *error);
  const std::optional<std::string> out = args.value("--out");
  if (!out || out->empty()) return args.usage(io, "须用 --out 给出预览图片文件（.png）");
  LoadedModule module(io, {}, nullptr);
  titleblock::FrameLibrary library(Folder(args));
  const std::optional<std::size_t> index = FindFrame(library, args.positional[1], io);
  if (!index) return kExitUnreadable;
  std::error_code ec;
  if (fs::equivalent(*out, library.entries()[*index].path, ec)) return args.usage(io, "预览图片不能写在图框文件上");
  library.selected = static_cast<int>(*index);
  if (!library.DrawFramePreview(*out)) {
    io.err << kProgram << "无法读取图框 " << Printable(args.positional[1]) << " 或写入 " << Printable(*out) << "，未生成预览\n";
    return kExitUnreadable;
  }
  io.out << *out << '\n';
  return kExitOk;
}

int RunPlace(const ParsedArgs& args, CliStreams& io) {
  std::vector<std::string> positional = args.positional;
  std::optional<std::pair<Point3d, Point3d>> corners, around;
  if (args.value("--corners").has_value() == args.value("--around").has_value())
    return args.usage(io, "须给出 --corners 或 --around 之一");
  if (auto error = CornerOption(args, "--corners", positional, 2, corners)) return args.usage(io, *error);
  if (auto error = CornerOption(args, "--around", positional, 2, around)) return args.usage(io, *error);
  if (auto error = CheckCount(positional, 2, "缺少图纸文件")) return args.usage(io, *error);
  const std::optional<std::string> name = args.value("--name");
  if (!name) return args.usage(io, "缺少 --name（要放置的图框）");
  const std::optional<std::string> out = args.value("--out");
  std::error_code ec;
  if (!out || out->empty() || *out == positional[1] || fs::equivalent(*out, positional[1], ec))
    return args.usage(io, "须用 --out 给出另一个图纸文件，不覆盖原图纸");
  const auto point = [](Point3d p) {
    char text[80];
    std::snprintf(text, sizeof text, "%.17g,%.17g", p.x, p.y);
    return std::string(text);
  };
  // The answers of the placing: two corners, or a window selection and the empty one that ends it.
  const std::vector<std::string> answers =
      corners ? std::vector<std::string>{point(corners->first), point(corners->second)}
              : std::vector<std::string>{"W " + point(around->first) + " " + point(around->second), ""};
  return WithDrawing(
      positional[1], io, answers,
      [&] {
        const titleblock::FrameLibrary library(Folder(args));
        const std::optional<std::size_t> index = FindFrame(library, *name, io);
        if (!index) return kExitUnreadable;
        host::CommandScope scope;
        std::optional<ObjectIdArray> ids = host::CopyDrawingFileEntities(library.entries()[*index].path);
        if (!ids) {
          io.err << kProgram << "无法读取图框文件 " << Printable(library.entries()[*index].path) << '\n';
          return kExitUnreadable;
        }
        aids::FrameFitState state;
        if (!aids::FindFrameArea(*ids, state)) {
          io.err << kProgram << "未能获得图框的绘图区域，退出 !\n";
          return kExitUnreadable;
        }
        if (!aids::PlaceFrame(state, corners ? 0 : 1, true)) {
          io.err << kProgram << (around ? "窗口内没有图形，" : "") << "图框未放置\n";
          return kExitUnanswered;
        }
        return kExitOk;
      },
      *out);
}

void DefineFrame(CLI::App& app) {
  Describe(app,
           "用法：tvplot frame list [--folder 文件夹] [--json]\n"
           "      tvplot frame add 图纸.dxf --name 图框名 (--window X1,Y1 X2,Y2 | --layer 图层 | --all) [--folder 文件夹]\n"
           "      tvplot frame delete 图框名 [--folder 文件夹]\n"
           "      tvplot frame rename 原图框名 新图框名 [--folder 文件夹]\n"
           "      tvplot frame redefine 图框名 图纸.dxf (--window X1,Y1 X2,Y2 | --layer 图层 | --all) [--folder 文件夹]\n"
           "      tvplot frame preview 图框名 --out 图片.png [--folder 文件夹]\n"
           "      tvplot frame place 图纸.dxf --name 图框名 (--corners X1,Y1 X2,Y2 | --around X1,Y1 X2,Y2) --out 新图纸.dxf\n"
           "  管理图框文件夹（设置中的图框文件夹，或 --folder）：每个图框一个图纸文件（.dxf，也读 .dwg）。\n"
           "  list       列出图框（序号、图框名）\n"
           "  add        把图纸模型空间中的图形（窗口内、图层上或全部）录入为新图框\n"
           "  delete     删除图框文件\n"
           "  rename     图框改名\n"
           "  redefine   用图纸中的图形重新定义图框\n"
           "  preview    把图框画成黑底白线的 PNG 图片\n"
           "  place      把图框放进图纸：绘图区域放在两个角点之间，或套住窗口内的图形；另存为 --out，原图纸不会被改写\n"
           "  失败的操作不改变图框文件夹。\n"
           "  退出码：0 完成，1 用法错误，2 图纸或图框无法读取、图框不存在，3 图框未放置，4 文件无法写入、删除或改名，\n"
           "  5 图纸无法保存，6 图框重名，7 没有选中图形\n");
  AddActionOptions(app, kActionOptions);
}

int RunFrame(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.empty()) return args.usage(io, std::string("缺少操作：") + kActions);
  const std::string& action = args.positional.front();
  if (std::optional<std::string> misplaced = MisplacedOption(args, action, kActionOptions))
    return args.usage(io, *misplaced);
  if (action == "list") return RunList(args, io);
  if (action == "add") return RunAdd(args, io);
  if (action == "delete") return RunDelete(args, io);
  if (action == "rename") return RunRename(args, io);
  if (action == "redefine") return RunRedefine(args, io);
  if (action == "preview") return RunPreview(args, io);
  if (action == "place") return RunPlace(args, io);
  return args.usage(io, "未知操作 " + Printable(action) + "，应为 " + kActions);
}

}  // namespace

const Subcommand& FrameSubcommand() {
  static const Subcommand kFrame{"frame", "列出、录入、删除、改名、重定义、预览图框文件夹中的图框，或把图框放进图纸", &DefineFrame, &RunFrame};
  return kFrame;
}

}  // namespace tv::cli
