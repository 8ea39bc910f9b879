#include "cli/tk_define.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "cli/option_values.h"
#include "cli/loaded_module.h"
#include "cli/session_launch.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/entity.h"
#include "host/wrappers.h"
#include "paper/new_paper_form.h"
#include "paper/paper.h"
#include "titleblock/name_rule.h"
#include "titleblock/tk_library.h"
#include "titleblock/tk_set_form.h"

namespace tv::cli {

using console::Printable;

namespace {

constexpr int kExitNotDefined = 3;
constexpr int kExitWriteFailed = 4;

// The names --area takes: as the definition form labels its buttons, or the rule's letters.
struct AreaName {
  const char* name;
  const char* letter;
  int slot;
};
constexpr AreaName kAreaNames[] = {
    {"图号", "A", 1},     {"版次", "B", 2},     {"图名", "C", 3},     {"日期", "D", 4},
    {"信息1", "E", 5},    {"信息2", "F", 6},    {"注册章", "", 7},    {"出图章", "", 8},
    {"项目章", "", 9},    {"竣工章", "", 10},   {"打印范围", "", titleblock::kSetSlotPrint},
};

std::optional<int> SlotOf(const std::string& name) {
  for (const AreaName& a : kAreaNames)
    if (name == a.name || (*a.letter && name == a.letter)) return a.slot;
  return std::nullopt;
}

std::optional<Point3d> ParsePoint(const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos || text.find(',', comma + 1) != std::string::npos) return std::nullopt;
  const std::optional<double> x = ParseNumber(std::string_view(text).substr(0, comma));
  const std::optional<double> y = ParseNumber(std::string_view(text).substr(comma + 1));
  if (!x || !y) return std::nullopt;
  return Point3d{*x, *y, 0};
}

struct AreaRequest {
  int slot;
  Point3d a, b;  // block coordinates
};

struct DefineRequest {
  std::string drawing, block;
  std::vector<AreaRequest> areas;
  std::optional<std::string> rule;
  std::optional<paper::MyPaper> paper;  // a custom paper, "自定义纸张"
  std::optional<std::int32_t> digits;   // "序号位数"
};

std::optional<std::string> ReadRequest(const ParsedArgs& args, DefineRequest& request) {
  if (args.positional.size() < 2) return "缺少图纸文件";
  request.drawing = args.positional[1];
  const std::optional<std::string> block = args.value("--block");
  if (!block || block->empty()) return "缺少 --block（图框对应的图块名）";
  request.block = *block;
  const std::vector<std::string> names = args.values("--area");
  // The corners of each --area stand after the drawing, two for each area in order.
  const std::size_t corners = args.positional.size() - 2;
  if (corners != 2 * names.size())
    return "每个 --area 之后应有两个角点 X1,Y1 X2,Y2（给出了 " + std::to_string(names.size()) + " 个范围、" +
           std::to_string(corners) + " 个点）";
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::optional<int> slot = SlotOf(names[i]);
    if (!slot) return "未知的范围 " + Printable(names[i]) + "，应为 图号、版次、图名、日期、信息1、信息2（或 A 至 F）、注册章、出图章、项目章、竣工章、打印范围";
    const std::string& p1 = args.positional[2 + 2 * i];
    const std::string& p2 = args.positional[3 + 2 * i];
    const std::optional<Point3d> a = ParsePoint(p1), b = ParsePoint(p2);
    if (!a || !b) return "范围 " + names[i] + " 的角点 " + Printable(a ? p2 : p1) + " 无效，应为 X,Y";
    request.areas.push_back({*slot, *a, *b});
  }
  request.rule = args.value("--rule");
  if (const std::optional<std::string> typed = args.value("--paper")) {
    const auto sides = titleblock::ParsePaperSides(*typed);
    if (!sides) return "--paper 应为两边的毫米数，如 841x594";
    // The custom paper form's checks; a side under 50 mm, which the form asks about, is refused.
    paper::Dlg_New_Paper form;
    form.length = sides->first;
    form.width = sides->second;
    std::string message;
    if (!form.Validate(message)) return "--paper " + Printable(*typed) + "：" + message;
    request.paper = paper::MyPaper{std::max(form.customLength, form.customWidth),
                                   std::min(form.customLength, form.customWidth), false};
  }
  if (const std::optional<std::string> typed = args.value("--digits")) {
    request.digits = ParseWhole(*typed, 1, 9);
    if (!request.digits) return "--digits 应为 1 至 9 的整数";
  }
  if (args.has("--keep") || args.has("--json")) return "define 不接受 --keep 或 --json";
  return std::nullopt;
}

// The first insert of the block in model space; a dynamic block's copies count as the block.
ObjectId FirstInsertOf(const std::string& block) {
  ObjectIdArray ids;
  host::CollectSpaceIds(host::ModelSpaceId(), ids);
  for (ObjectId id : ids) {
    const host::Entity e = host::OpenEntity(id);
    if (e && e.kind() == host::EntityClass::BlockReference && host::BlockName(e.dynamicBlockTableRecord()) == block)
      return id;
  }
  return {};
}

// A box of the block's own coordinates as it lies on the drawing for `insert`.
Extents3d OnDrawing(const host::Entity& insert, Point3d a, Point3d b) {
  return Extents3d(a, b).transformed(insert.blockTransform());
}

}  // namespace

int RunTkDefine(const ParsedArgs& args, CliStreams& io) {
  DefineRequest request;
  if (std::optional<std::string> error = ReadRequest(args, request)) return args.usage(io, *error);
  std::optional<cad::Database> db = LoadDrawing(request.drawing, io);
  if (!db) return kExitUnreadable;

  // The capture's prompts and messages are for the user; the result alone goes to `out`.
  console::SessionOptions options;
  options.out = &io.err;
  console::Session session(std::move(*db), request.drawing, std::move(options));
  const ModuleScope module;
  const ObjectId insertId = FirstInsertOf(request.block);
  if (!insertId) {
    io.err << "tvplot tk: 图纸 " << Printable(request.drawing) << " 的模型空间中没有图块 " << Printable(request.block)
           << " 的插入\n";
    return kExitNotDefined;
  }
  // The insert is picked as a user picks it, by its handle at the selection prompt.
  session.editor().answers().pushFront({"H " + insertId.handleText()});
  titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  auto definition = std::make_unique<titleblock::TK_Customization>();
  if (!titleblock::PickFrameBlock(*definition)) {
    io.err << "\ntvplot tk: 图块 " << Printable(request.block) << " 的插入不能作为图框\n";
    return kExitNotDefined;
  }
  const host::Entity insert = host::OpenEntity(insertId);
  std::string message;
  {
    titleblock::Dlg_TK_Set form(*definition, library, false);
    if (request.paper) {
      definition->paper = *request.paper;
      form.paperByHand = true;  // the print extents don't choose it again
    }
    if (request.digits) definition->serial_digits = *request.digits;
    for (const auto& area : request.areas) {
      const Extents3d box = OnDrawing(insert, area.a, area.b);
      const bool stored = area.slot == titleblock::kSetSlotPrint ? form.storePrintExtents(box.min, box.max, message)
                                                                 : form.storeArea(area.slot, box.min, box.max, message);
      if (!stored) {
        io.err << "tvplot tk: " << titleblock::SetSlotName(area.slot) << "：" << message << '\n';
        return kExitNotDefined;
      }
    }
    titleblock::Dlg_TK_Name rule = titleblock::Dlg_TK_Name::Open(request.rule.value_or(""), library);
    std::string cleaned;
    if (!rule.ok(library, cleaned, message)) {
      io.err << "tvplot tk: " << message << "（--rule）\n";
      return kExitNotDefined;
    }
    definition->name_rule = cleaned;
    if (!form.ok(message)) {
      io.err << "tvplot tk: " << message << '\n';
      return kExitNotDefined;
    }
  }

  // Added to the file as it stands under its lock; a known block is replaced only when asked.
  const bool replace = args.has("--replace");
  bool known = false;
  const titleblock::TK_Customization* added = definition.get();
  const bool saved = titleblock::UpdateTkFile(
      library,
      [&](titleblock::TK_Library& current) {
        if (titleblock::TK_Customization* old = titleblock::FindDefinition(current, request.block)) {
          known = true;
          if (!replace) return false;
          std::erase_if(current.definitions, [&](const auto& d) { return d.get() == old; });
        }
        // The rule confirmed is the one the next definition starts from, as in the form.
        current.DefaultNameRule = added->name_rule;
        current.definitions.push_back(std::move(definition));
        return true;
      },
      true);
  if (known && !replace) {
    io.err << "tvplot tk: 图框信息库中已有图块 " << Printable(request.block)
           << " 的定义，未改变；要重新录入请加 --replace\n";
    return kExitNotDefined;
  }
  if (!saved) {
    // What the file does not hold is not kept.
    titleblock::LoadTkFile(library, false);
    io.err << "\ntvplot tk: 未能写入 " << Printable(titleblock::DefaultTkPath()) << '\n';
    return kExitWriteFailed;
  }
  io.out << "已将图框 " << Printable(added->block_name) << " 的定义加入图框信息库 "
         << Printable(titleblock::DefaultTkPath()) << "（纸张 " << paper::PaperDisplayName(added->paper, true, false)
         << "，命名规则 " << Printable(added->name_rule) << "），共 " << library.definitions.size() << " 个图框\n";
  return kExitOk;
}

}  // namespace tv::cli
