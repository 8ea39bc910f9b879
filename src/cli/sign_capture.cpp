#include "cli/sign_capture.h"

#include <cctype>
#include <cstdio>

#include "cli/library_import.h"
#include "cli/option_values.h"
#include "cli/loaded_module.h"
#include "cli/session_launch.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/curve_pieces.h"
#include "host/wrappers.h"
#include "settings/config.h"
#include "signing/sign_add.h"
#include "signing/sign_boundary.h"

namespace tv::cli {

using console::Printable;

namespace {

struct CaptureRequest {
  std::int32_t personId = 0;
  signing::Dlg_SignName form;
  std::optional<Extents3d> window;
  std::optional<std::string> layer;
};

std::optional<Extents3d> ParseWindow(const std::string& text) {
  std::vector<double> values;
  std::size_t from = 0;
  while (true) {
    const std::size_t comma = text.find(',', from);
    const std::optional<double> v = ParseNumber(std::string_view(text).substr(from, comma - from));
    if (!v) return std::nullopt;
    values.push_back(*v);
    if (comma == std::string::npos) break;
    from = comma + 1;
  }
  if (values.size() != 4 || values[0] == values[2] || values[1] == values[3]) return std::nullopt;
  return Extents3d(Point3d(values[0], values[1]), Point3d(values[2], values[3]));
}

// The request from the options; the message for the user when one is missing or bad.
std::optional<std::string> ReadRequest(const ParsedArgs& args, CaptureRequest& request) {
  if (args.positional.size() < 2) return "缺少图纸文件";
  if (args.positional.size() > 2) return "多余的参数 " + Printable(args.positional[2]);
  const std::optional<std::string> id = args.value("--id");
  if (!id) return "缺少 --id（人员编号）";
  const std::optional<std::int32_t> number = ParseWhole(*id, 1, 2147483647);
  if (!number) return "--id 应为 1 到 2147483647 的整数";
  request.personId = *number;
  request.form.name = args.value("--name").value_or("");
  if (const auto code = args.value("--code")) {
    const std::optional<std::int32_t> value = ParseWhole(*code, 0, 999999);
    if (!value) return "--code 应为 0 到 999999 的整数";
    request.form.auth_code = *value;
  }
  if (const auto refusal = request.form.check()) return console::OneLine(refusal->message) + "（--name）";
  if (args.value("--window") && args.value("--layer")) return "--window 和 --layer 只能给出其一";
  if (const auto window = args.value("--window")) {
    request.window = ParseWindow(*window);
    if (!request.window) return "窗口 " + Printable(*window) + " 无效，应为 --window X1,Y1,X2,Y2（宽度和高度不为 0）";
  }
  request.layer = args.value("--layer");
  return std::nullopt;
}

bool SameLayerName(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) return false;
  return true;
}

// The curves of model space the request picks: those lying wholly inside the window, or on the
// layer, or all of them.
ObjectIdArray PickedCurves(const CaptureRequest& request) {
  ObjectIdArray all, picked;
  host::CollectSpaceIds(host::ModelSpaceId(), all);
  for (ObjectId id : all) {
    const std::optional<Extents3d> box = host::CurveExtents(id);
    if (!box) continue;
    const Extents3d* w = request.window ? &*request.window : nullptr;
    if (w && (box->min.x < w->min.x || box->min.y < w->min.y || box->max.x > w->max.x || box->max.y > w->max.y))
      continue;
    if (request.layer) {
      const std::optional<host::LayerFacts> layer = host::ReadLayer(host::OpenEntity(id).layer());
      if (!layer || !SameLayerName(layer->name, *request.layer)) continue;
    }
    picked.push_back(id);
  }
  return picked;
}

}  // namespace

int RunSignCapture(const ParsedArgs& args, CliStreams& io) {
  CaptureRequest request;
  if (std::optional<std::string> error = ReadRequest(args, request)) return args.usage(io, *error);
  const std::string& path = args.positional[1];
  std::optional<cad::Database> db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;

  // The capture's messages are for the user; the result alone goes to `out`.
  console::SessionOptions options;
  options.out = &io.err;
  console::Session session(std::move(*db), path, std::move(options));
  const ModuleScope module;
  const ObjectIdArray curves = PickedCurves(request);

  signing::SignLibrary& library = signing::GlobalSignLibrary();
  const std::string userPath = settings::SignLibraryPath();
  enum class Outcome { Saved, Taken, NoOutline, NotWritten } outcome = Outcome::NotWritten;
  const signing::TV_Sign* added = nullptr;
  UnderFileLock(userPath, [&] {
    // The library as it stands on disk, so that another run's save in the meantime is kept.
    signing::ReadSignFileInto(library, userPath, true);
    if (signing::FindSignById(library, request.personId)) {
      outcome = Outcome::Taken;
      return false;
    }
    auto sign = std::make_unique<signing::TV_Sign>();
    if (curves.empty() || !signing::CaptureSignFrom(*sign, curves)) {
      outcome = Outcome::NoOutline;
      return false;
    }
    request.form.store(*sign);
    sign->person_id = request.personId;
    added = sign.get();
    library.signs.push_back(std::move(sign));
    if (!signing::SaveSignLibrary(library, userPath, true)) return false;
    outcome = Outcome::Saved;
    return true;
  });
  switch (outcome) {
    case Outcome::Taken:
      io.err << "tvplot sign: 签名库中已有人员编号 " << request.personId << " 的签名，未录入\n";
      return kExitPersonTaken;
    case Outcome::NoOutline:
      io.err << "\ntvplot sign: " << (curves.empty() ? "没有选中直线、圆弧、多段线或样条曲线" : "所选曲线未形成封闭的签名轮廓")
             << "，签名库未改变\n";
      return kExitNoOutline;
    case Outcome::NotWritten:
      io.err << "\ntvplot sign: 未能写入 " << Printable(userPath) << '\n';
      return kExitWriteFailed;
    case Outcome::Saved: break;
  }
  char size[96];
  std::snprintf(size, sizeof size, "%g x %g", added->width, added->height);
  io.out << "已录入签名 " << Printable(added->person_name) << "（人员编号 " << added->person_id << "，"
         << added->shapes.size() << " 个轮廓，" << size << "），签名库现有 " << library.signs.size() << " 个签名\n";
  return kExitOk;
}

}  // namespace tv::cli
