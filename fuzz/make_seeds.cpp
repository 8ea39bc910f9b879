// make_fuzz_seeds OUTDIR: writes the starting inputs of the fuzz targets, OUTDIR/<target>/<name>,
// through the system's own writers: small drawings with every kind of sheet, title-block
// libraries, configurations and typed answers. Kept small, so that each run of a target is quick.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "cad/dxf_tokenizer.h"
#include "cad/dxf_writer.h"
#include "examples/sample_kit.h"
#include "examples/sample_library.h"
#include "fuzz/fuzz_targets.h"
#include "settings/config.h"
#include "titleblock/tk_library.h"

namespace {

namespace fs = std::filesystem;
using namespace tv::cad;
using namespace tv::samples::kit;

bool g_ok = true;

void WriteBytes(const fs::path& path, std::string_view bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out.flush()) {
    std::fprintf(stderr, "无法写入 %s\n", path.string().c_str());
    g_ok = false;
  }
}

// A polyline frame, a frame block inserted with its attributes and a frame of loose lines in
// model space, each with a drawing; a layout with a frame and a viewport; the drawing's plot record.
Database SheetsDrawing() {
  Database db = Database::createDefault();
  db.header.setInt("$INSUNITS", 4);
  const ObjectId frame = AddLayer(db, "图框", 7, "Continuous", 50).id;
  const ObjectId text = AddLayer(db, "文字", 3).id;
  const ObjectId wall = AddLayer(db, "WALL", 2).id;
  const FrameStyle style{frame, text, ObjectId{}};
  BlockRecord& ms = *db.modelSpace();

  AddRectangle(db, ms, {0, 0}, {42000, 29700}, frame);
  AddLine(db, ms, {5000, 5000}, {30000, 20000}, wall);
  AddCircle(db, ms, {20000, 15000}, 3000, wall);

  BlockRecord& a4 = MakeFrameBlock(db, style, "A4图框", kA4.portrait());
  AddInsert(db, ms, a4, {50000, 0}, 50, frame, AttributeValues({"建施-01", "平面图", "1:50", "2024.03"}));
  AddLine(db, ms, {52000, 3000}, {58000, 12000}, wall);

  DrawFrame(db, ms, style, {0, -40000}, kA3, 100, true, {"结施-02", "详图", "1:100", "2024.03"});
  AddText(db, ms, "说明", {8000, -30000}, text, ObjectId{});

  Layout* layout = db.findLayout("Layout1");
  if (!layout) layout = &db.addLayout("Layout1");
  BlockRecord& paper = *db.blockOf(*layout);
  AddRectangle(db, paper, {0, 0}, {420, 297}, frame);
  auto vp = std::make_unique<Viewport>();
  vp->number = 2;
  vp->status = 2;
  vp->center = Point3d{200, 150, 0};
  vp->width = 300;
  vp->height = 200;
  vp->viewCenter = {21000, 14850};
  vp->viewHeight = 20000;
  db.append(paper, std::move(vp));

  Dictionary& tarvex = db.ensureDictionary(*db.rootDictionary(), "TARVEX");
  db.ensureXrecord(tarvex, "VERSION").data = {Group{90, std::int64_t{20240329}}};
  Dictionary& plot = db.ensureDictionary(tarvex, "PLOT");
  db.ensureXrecord(plot, "DEFAULT").data = {Group{1, std::string("A3")}, Group{1, std::string("monochrome.ctb")},
                                            Group{40, 100.0}, Group{70, std::int64_t{1}}};
  return db;
}

// The same groups in the binary form of the file.
std::string ToBinary(std::string ascii) {
  std::string out("AutoCAD Binary DXF\r\n\x1a\0", 22);
  auto put = [&out](const void* p, std::size_t n) { out.append(static_cast<const char*>(p), n); };
  DxfTokenizer tokens = DxfTokenizer::fromBytes(std::move(ascii));
  DxfGroup g;
  while (tokens.next(g)) {
    const auto code = static_cast<std::uint16_t>(g.code);
    put(&code, 2);
    switch (g.kind) {
      case GroupKind::Double: put(&g.real, 8); break;
      case GroupKind::Int16: { const auto v = static_cast<std::int16_t>(g.integer); put(&v, 2); break; }
      case GroupKind::Int32: { const auto v = static_cast<std::int32_t>(g.integer); put(&v, 4); break; }
      case GroupKind::Int64: put(&g.integer, 8); break;
      case GroupKind::Bool: out += static_cast<char>(g.integer ? 1 : 0); break;
      case GroupKind::Binary: {
        // The ASCII form holds hex digits; the binary one a length byte and the bytes.
        std::string bytes;
        for (std::size_t i = 0; i + 1 < g.text.size(); i += 2)
          bytes += static_cast<char>(std::stoi(std::string(g.text.substr(i, 2)), nullptr, 16));
        out += static_cast<char>(bytes.size());
        out += bytes;
        break;
      }
      default: out.append(g.text); out += '\0'; break;
    }
    tokens.release();
  }
  return out;
}

void WriteDrawings(const fs::path& dir) {
  const Database sheets = SheetsDrawing();
  const std::string r2018 = WriteDxfToString(sheets);
  WriteBytes(dir / "sheets_r2018.dxf", r2018);
  WriteBytes(dir / "sheets_r2013.dxf", WriteDxfToString(sheets, {DxfVersion::R2013}));
  WriteBytes(dir / "sheets_binary.dxf", ToBinary(r2018));
  WriteBytes(dir / "empty.dxf", WriteDxfToString(Database::createDefault()));
}

void WriteLibrary(const tv::titleblock::TK_Library& library, const fs::path& path) {
  if (!tv::titleblock::SaveTkFileTo(library, path.string(), false)) {
    std::fprintf(stderr, "无法写入 %s\n", path.string().c_str());
    g_ok = false;
  }
}

void WriteLibraries(const fs::path& dir) {
  WriteLibrary(tv::samples::BuildTitleBlockLibrary(), dir / "sample.tk");
  WriteLibrary(tv::titleblock::TK_Library{}, dir / "empty.tk");
}

void WriteConfig(const tv::settings::Config& config, const fs::path& path) {
  if (!tv::settings::SaveConfigTo(config, path.string(), false)) {
    std::fprintf(stderr, "无法写入 %s\n", path.string().c_str());
    g_ok = false;
  }
}

void WriteConfigs(const fs::path& dir) {
  WriteConfig(tv::settings::Config{}, dir / "default.cfg");
  tv::settings::Config config;
  config.shortcut_ids = {1, 4, 17};
  config.shortcut_names = {"BP", "TK", "批量 打印"};
  config.last_plot_style = "monochrome.ctb";
  config.frame_folder = "/home/用户/图框 库";
  config.sign_library_path = "/tmp/签名.lib";
  tv::settings::SetRemembered(config, "上次 文件夹", "/home/用户/输出");
  tv::settings::SetRemembered(config, "key", "");
  WriteConfig(config, dir / "custom.cfg");
}

void WriteAnswers(const fs::path& dir) {
  static constexpr std::string_view kAnswers[] = {
      "12", "-3", "+4", "2147483648", "2.5", "-1e3", ".5", "1e308", "inf", "nan", "0x10",
      "100,200", "1.5,-2,3", " @10 , 20 ", "@-5,5,1e2", "1,2,3,4", ",", "@", "",
  };
  int n = 0;
  for (std::string_view answer : kAnswers) WriteBytes(dir / ("answer" + std::to_string(++n)), answer);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 || std::strncmp(argv[1], "-", 1) == 0) {
    std::fputs("用法：make_fuzz_seeds 输出文件夹\n", stderr);
    return 1;
  }
  const fs::path out = argv[1];
  for (const tv::fuzz::FuzzTarget& target : tv::fuzz::FuzzTargets()) {
    std::error_code ec;
    fs::create_directories(out / target.name, ec);
    if (ec) {
      std::fprintf(stderr, "无法创建文件夹 %s: %s\n", (out / target.name).string().c_str(), ec.message().c_str());
      return 2;
    }
  }
  WriteDrawings(out / "dxf");
  WriteLibraries(out / "tk");
  WriteConfigs(out / "config");
  WriteAnswers(out / "answers");
  return g_ok ? 0 : 2;
}
