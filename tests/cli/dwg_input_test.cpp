// DWG drawings as users give them to `tvplot`: the converter installed by scripts/setup.sh, run
// on the corpus DWGs of every version, and stand-in converters (small node scripts chosen through
// $TVPLOT_DWG_CONVERTER) that hang, grow, crash or write a drawing built here. Every run gets a
// private TMPDIR, which must be empty afterwards.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <memory>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "../support/corpus.h"
#include "../support/frame_drawings.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"

#include "cad/drawing_file.h"
#include "cad/dxf_writer.h"
#include "cad/codepage.h"
#include "cli/subcommand.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test_support::FilesIn;
using test_support::Has;
using test_support::ReadFile;
using test_support::RunProgram;
using test_support::RunResult;
using test_support::ScopedEnv;
using test_support::TempDir;
using test_support::WriteFile;

// Runs tvplot with TMPDIR pointing at a folder of the test's own, and checks it is left empty.
class DwgRun {
 public:
  RunResult operator()(const std::vector<std::string>& args, const std::string& input = {}) {
    ScopedEnv tmp("TMPDIR", tmp_.path().string());
    RunResult r = RunProgram(TV_TVPLOT_PATH, args, input);
    EXPECT_TRUE(FilesIn(tmp_.path()).empty()) << "the converter's folder is removed: " << args[0];
    return r;
  }

 private:
  TempDir tmp_{"tv_dwg_tmp"};
};

// ---------------------------------------------------------------------------------------------
// The real converter on the corpus.

fs::path Acadsharp() { return test_support::CorpusDir() / "acadsharp"; }

// The corpus DWG versions, each with the corpus DXF of the same or the nearest version, and what
// the converter is known to drop (model space, by entity kind: how many of the DXF's are lost).
// R14 cannot hold the newer kinds; R2004's classes are read as garbage, so the class-based
// entities go; ATTRIBs of one block reference are lost in R14 and R2000. Where the newer kinds
// go, the sheet found around them (number 6) comes out at another size.
struct CorpusVersion {
  const char* dwg;
  const char* dxf;
  const char* release;
  std::map<std::string, int> lost;
  std::vector<int> sheetsChanged = {};
};
const std::vector<CorpusVersion>& CorpusVersions() {
  static const std::vector<CorpusVersion> kVersions = {
      {"AC1014", "AC1015", "R14",
       {{"MULTILEADER", 15}, {"ACAD_TABLE", 2}, {"MESH", 2}, {"WIPEOUT", 1}, {"PDFUNDERLAY", 1}, {"ATTRIB", 2}},
       {6}},
      {"AC1015", "AC1015", "R2000", {{"ATTRIB", 2}}},
      {"AC1018", "AC1018", "R2004",
       {{"MULTILEADER", 15}, {"ACAD_TABLE", 2}, {"MESH", 2}, {"IMAGE", 1}, {"PDFUNDERLAY", 1}, {"WIPEOUT", 1}},
       {6}},
      {"AC1021", "AC1024", "R2007", {}},
      {"AC1024", "AC1024", "R2010", {}},
      {"AC1027", "AC1032", "R2013", {}},
      {"AC1032", "AC1032", "R2018", {}},
  };
  return kVersions;
}

json Json(const RunResult& r) { return json::parse(r.out, nullptr, false); }

// The sheets of a listing without their file names, which follow the drawing's own name.
json SheetsWithoutNames(json sheets) {
  for (json& sheet : sheets) sheet.erase("fileName");
  return sheets;
}

// Entity counts by space label ("Model", layout names) and kind.
std::map<std::string, std::map<std::string, int>> SpaceCounts(const json& info) {
  std::map<std::string, std::map<std::string, int>> spaces;
  for (const auto& space : info["entities"]["spaces"])
    for (const auto& [kind, n] : space["counts"].items()) spaces[space["layout"].get<std::string>()][kind] = n.get<int>();
  return spaces;
}

// Equal, numbers within 1e-9 relative: the converter prints coordinates with 16 digits.
bool Near(const json& a, const json& b) {
  if (a.is_number() && b.is_number()) {
    const double x = a.get<double>(), y = b.get<double>();
    return std::abs(x - y) <= 1e-9 * std::max({1.0, std::abs(x), std::abs(y)});
  }
  if (a.type() != b.type() || a.size() != b.size()) return false;
  if (a.is_array()) {
    for (std::size_t i = 0; i < a.size(); ++i)
      if (!Near(a[i], b[i])) return false;
    return true;
  }
  if (a.is_object()) {
    for (const auto& [key, value] : a.items())
      if (!b.contains(key) || !Near(value, b[key])) return false;
    return true;
  }
  return a == b;
}

std::vector<std::string> LayoutNames(const json& info) {
  std::vector<std::string> names;
  for (const auto& l : info["layouts"]) names.push_back(l["name"].get<std::string>());
  return names;
}

TEST(DwgConverter, IsInstalledBySetUp) {
  // Set-up installs it; a machine without it is a broken set-up, not a reason to skip.
  EXPECT_TRUE(fs::exists(fs::path(TV_SOURCE_DIR) / "tools/dwg/node_modules/@mlightcad/libredwg-web/wasm/libredwg-web.wasm"))
      << "run scripts/setup.sh";
  EXPECT_EQ(RunProgram("/usr/bin/env", {"node", "--version"}).exitCode, 0) << "node is missing: run scripts/setup.sh";
}

// One run of `info` and one of `sheets` per version: the corpus files are converted once each.
TEST(DwgConverter, EveryCorpusVersionGivesTheSheetsLayoutsAndEntitiesOfItsDxf) {
  TV_SKIP_WITHOUT_CORPUS(Acadsharp());
  DwgRun run;
  std::map<std::string, std::pair<json, json>> dxfs;  // version → info, sheets
  for (const CorpusVersion& v : CorpusVersions()) {
    SCOPED_TRACE(v.dwg);
    const std::string dwg = (Acadsharp() / ("sample_" + std::string(v.dwg) + ".dwg")).string();
    const std::string dxf = (Acadsharp() / ("sample_" + std::string(v.dxf) + "_ascii.dxf")).string();
    if (!dxfs.count(v.dxf))
      dxfs[v.dxf] = {Json(RunProgram(TV_TVPLOT_PATH, {"info", "--json", dxf})),
                     Json(RunProgram(TV_TVPLOT_PATH, {"sheets", "--json", dxf}))};
    const auto& [dxfInfo, dxfSheets] = dxfs[v.dxf];
    ASSERT_TRUE(dxfInfo.is_object() && dxfSheets.is_object());

    const RunResult info = run({"info", "--json", dwg});
    ASSERT_EQ(info.exitCode, kExitOk) << info.err;
    const json dwgInfo = Json(info);
    ASSERT_TRUE(dwgInfo.is_object()) << info.out;
    EXPECT_EQ(dwgInfo["version"]["acadver"], v.dwg);
    EXPECT_EQ(dwgInfo["source"]["format"], "DWG");
    EXPECT_EQ(dwgInfo["source"]["acadver"], v.dwg);
    EXPECT_EQ(dwgInfo["source"]["release"], v.release);
    EXPECT_TRUE(Has(dwgInfo["source"]["converter"].get<std::string>(), "LibreDWG 0.13.3 (@mlightcad/libredwg-web 0.7.14)"));
    EXPECT_EQ(LayoutNames(dwgInfo), LayoutNames(dxfInfo));
    EXPECT_EQ(dwgInfo["source"]["layerStatesKnown"], std::string(v.dwg) != "AC1014");

    auto dwgSpaces = SpaceCounts(dwgInfo), dxfSpaces = SpaceCounts(dxfInfo);
    for (const auto& [kind, n] : v.lost) {
      int& left = dxfSpaces["Model"][kind];
      left -= n;
      if (left == 0) dxfSpaces["Model"].erase(kind);
    }
    EXPECT_EQ(dwgSpaces, dxfSpaces);

    const RunResult sheets = run({"sheets", "--json", dwg});
    ASSERT_EQ(sheets.exitCode, kExitOk) << sheets.err;
    json dwgSheets = Json(sheets), expected = dxfSheets;
    ASSERT_TRUE(dwgSheets.is_object()) << sheets.out;
    ASSERT_EQ(dwgSheets["count"], expected["count"]);
    for (auto n = v.sheetsChanged.rbegin(); n != v.sheetsChanged.rend(); ++n) {
      dwgSheets["sheets"].erase(static_cast<std::size_t>(*n - 1));
      expected["sheets"].erase(static_cast<std::size_t>(*n - 1));
    }
    dwgSheets["sheets"] = SheetsWithoutNames(dwgSheets["sheets"]);
    expected["sheets"] = SheetsWithoutNames(expected["sheets"]);
    EXPECT_TRUE(Near(dwgSheets, expected)) << dwgSheets.dump(1) << "\n---\n" << dxfSheets.dump(1);
  }
}

// Damaged input of the kinds users meet; each row is one run.
TEST(DwgConverter, BadDwgFilesExitWithTheFileNamedAndNothingLeft) {
  TempDir dir("tv_dwg_bad");
  std::string random = "AC1032";
  for (unsigned i = 0; i < 20000; ++i) random += static_cast<char>((i * 2654435761u) >> 13);
  struct Case {
    const char* name;
    std::string bytes;
    const char* says;
  };
  std::vector<Case> cases = {
      {"empty.dwg", "", "empty.dwg"},
      {"random.dwg", random, "转换失败"},
  };
  const fs::path r2018 = Acadsharp() / "sample_AC1032.dwg";
  if (fs::exists(r2018)) cases.push_back({"truncated.dwg", ReadFile(r2018).substr(0, 40000), "转换失败"});
  DwgRun run;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = (dir / c.name).string();
    WriteFile(path, c.bytes);
    const RunResult r = run({"info", path});
    EXPECT_EQ(r.exitCode, kExitUnreadable) << r.err;
    EXPECT_TRUE(Has(r.err, path)) << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
  }
  EXPECT_EQ(FilesIn(dir.path()).size(), cases.size()) << "nothing is written beside the drawing";
}

// A drawing saved on Chinese Windows keeps its text in GBK, with the code page in the file header.
// Made here from the corpus R2000 file: a text of 32 ASCII bytes becomes 16 Chinese characters in
// GBK (LibreDWG reads past the object's now wrong checksum) and the header says ANSI_936.
TEST(DwgConverter, AGbkDrawingKeepsItsChineseText) {
  const fs::path r2000 = Acadsharp() / "sample_AC1015.dwg";
  TV_SKIP_WITHOUT_CORPUS(r2000);
  std::string bytes = ReadFile(r2000);
  const std::string ascii = "Hello this is a single line text";
  const std::string chinese = "建筑施工图设计说明第一页共十二页";
  const std::string gbk = *cad::Utf8ToCodePage(chinese, "ANSI_936");
  ASSERT_EQ(gbk.size(), ascii.size());
  const auto at = bytes.find(ascii);
  ASSERT_NE(at, std::string::npos);
  bytes.replace(at, ascii.size(), gbk);
  bytes[0x13] = 39;  // the header's code page number of ANSI_936
  TempDir dir("tv_dwg_gbk");
  const std::string path = (dir.path() / "说明.dwg").string();
  WriteFile(path, bytes);

  TempDir tmp("tv_dwg_gbk_tmp");
  ScopedEnv env("TMPDIR", tmp.path().string());
  const cad::DxfReadResult read = cad::ReadDrawing(path);
  ASSERT_TRUE(read.ok()) << read.error;
  EXPECT_EQ(read.db->codePage(), "ANSI_936");
  bool found = false;
  read.db->forEachEntity(*read.db->modelSpace(), [&](const cad::Entity& e) {
    if (const auto* t = dynamic_cast<const cad::Text*>(&e)) found = found || t->text == chinese;
  });
  EXPECT_TRUE(found) << "the GBK text is read as Chinese";
  EXPECT_TRUE(FilesIn(tmp.path()).empty());
}

// An R14 file spells block and layer names in capitals ("*MODEL_SPACE", "*PAPER_SPACE0") and
// keys its layout dictionary "MODEL", "LAYOUT1" while the layouts stay "Model", "Layout1". CAD
// compares such names without regard to case, so the sheets are the same as with the usual names.
TEST(DwgNames, CapitalisedNamesOfAnR14FileGiveTheSameSheetsAndLayouts) {
  TempDir dir("tv_dwg_names");
  const std::string usual = (dir / "usual.dxf").string(), capitals = (dir / "capitals.dxf").string();
  ASSERT_TRUE(cad::WriteDxf(samples::BuildSampleDrawing(), usual).ok);
  cad::Database db = samples::BuildSampleDrawing();
  auto upper = [](std::string& name) {
    for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  };
  for (auto& b : db.blocks) upper(b->name);
  for (auto& l : db.layers) upper(l->name);
  ASSERT_NE(db.namedDictionary("ACAD_LAYOUT"), nullptr);
  for (auto& [key, id] : db.namedDictionary("ACAD_LAYOUT")->entries) upper(key);
  ASSERT_TRUE(cad::WriteDxf(db, capitals).ok);
  ASSERT_TRUE(Has(ReadFile(capitals), "*MODEL_SPACE"));

  for (const char* command : {"sheets", "info"}) {
    SCOPED_TRACE(command);
    const RunResult a = RunProgram(TV_TVPLOT_PATH, {command, "--json", usual});
    const RunResult b = RunProgram(TV_TVPLOT_PATH, {command, "--json", capitals});
    ASSERT_EQ(a.exitCode, kExitOk) << a.err;
    ASSERT_EQ(b.exitCode, kExitOk) << b.err;
    if (std::string(command) == "sheets") {
      EXPECT_EQ(Json(a)["count"], Json(b)["count"]) << b.out;
      EXPECT_EQ(SheetsWithoutNames(Json(a)["sheets"]), SheetsWithoutNames(Json(b)["sheets"]));
    } else {
      EXPECT_EQ(LayoutNames(Json(a)), LayoutNames(Json(b)));
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Stand-in converters.

class DwgStandIn : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(dir_.path().empty());
    dwg_ = (dir_ / "平面.dwg").string();
    WriteFile(dwg_, "AC1032" + std::string(200, '\0'));
  }
  // A bridge whose body is `script`; it gets the bridge's arguments (-y -o OUT IN).
  void Converter(const std::string& script) {
    const fs::path path = dir_ / "bridge.mjs";
    WriteFile(path, "const out = process.argv[process.argv.indexOf('-o') + 1];\n" + script + "\n");
    env_.emplace_back(std::make_unique<ScopedEnv>("TVPLOT_DWG_CONVERTER", path.string()));
  }
  void Env(const char* name, const std::string& value) { env_.emplace_back(std::make_unique<ScopedEnv>(name, value)); }
  // Last set, first restored: a variable set twice gets back its value from before the test.
  void TearDown() override {
    while (!env_.empty()) env_.pop_back();
  }

  TempDir dir_{"tv_dwg_standin"};
  std::string dwg_;
  DwgRun run_;
  std::vector<std::unique_ptr<ScopedEnv>> env_;
};

TEST_F(DwgStandIn, ConvertersThatFailAreBoundedAndNamed) {
  struct Case {
    const char* name;
    const char* script;
    const char* timeout;
    const char* maxMb;
    const char* says;
  };
  const Case cases[] = {
      {"hangs", "for (;;) {}", "1", "1024", "超过 1 秒仍未完成"},
      {"hangs with a child", "(await import('node:child_process')).spawn('sleep', ['617'], {stdio: 'inherit'}); for (;;) {}",
       "1", "1024", "超过 1 秒仍未完成"},
      {"grows", "const kept = []; for (;;) kept.push(Buffer.alloc(16 << 20, 1));", "60", "200", "内存超过 200 MB"},
      {"talks without end", "const line = 'x'.repeat(1000) + '\\n'; for (;;) process.stderr.write(line);", "1", "1024",
       "超过 1 秒仍未完成"},
      {"crashes", "process.kill(process.pid, 'SIGSEGV');", "60", "1024", "异常终止"},
      {"cannot read", "process.stderr.write('LibreDWG could not read it (error 2048)\\n'); process.exit(2);", "60", "1024",
       "无法读取此文件：LibreDWG could not read it (error 2048)"},
      {"writes nothing", "process.exit(0);", "60", "1024", "未写出 DXF"},
      {"writes garbage", "(await import('node:fs')).writeFileSync(out, 'not a drawing');", "60", "1024", "平面.dwg"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Converter(c.script);
    Env("TVPLOT_DWG_TIMEOUT", c.timeout);
    Env("TVPLOT_DWG_MAX_RSS_MB", c.maxMb);
    const RunResult r = run_({"sheets", dwg_});
    EXPECT_EQ(r.exitCode, kExitUnreadable) << r.err;
    EXPECT_TRUE(Has(r.err, dwg_)) << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
    EXPECT_EQ(FilesIn(dir_.path()), (std::vector<std::string>{"bridge.mjs", "平面.dwg"}));
  }
  // The stand-in with a child: nothing of its group is left running.
  bool left = false;
  std::error_code ec;
  for (const auto& p : fs::directory_iterator("/proc", ec))
    left = left || ReadFile(p.path() / "cmdline") == std::string("sleep\0" "617\0", 10);
  EXPECT_FALSE(left);
}

TEST_F(DwgStandIn, WithoutAConverterTheMessageSaysHowToInstallIt) {
  Env("TVPLOT_DWG_CONVERTER", (dir_ / "none.mjs").string());
  const RunResult r = run_({"info", dwg_});
  EXPECT_EQ(r.exitCode, kExitUnreadable);
  EXPECT_TRUE(Has(r.err, dwg_) && Has(r.err, "本机未安装 DWG 转换程序") && Has(r.err, "scripts/setup.sh")) << r.err;
}

// Each command that opens a drawing opens a DWG: the stand-in writes a drawing built here, with a
// report like the real bridge's.
TEST_F(DwgStandIn, EveryCommandOpensADwg) {
  const std::string dxf = (dir_ / "built.dxf").string(), titles = (dir_ / "titles.dxf").string();
  ASSERT_TRUE(cad::WriteDxf(test_support::FramesInARow({{42000, 29700}}), dxf).ok);
  ASSERT_TRUE(cad::WriteDxf(samples::BuildTitleBlockDrawing(), titles).ok);
  const std::string tk = (dir_ / "titles.tk").string();
  ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk, false));
  Converter(
      "const fs = await import('node:fs');\n"
      "fs.copyFileSync(process.env.TV_TEST_DXF, out);\n"
      "fs.writeFileSync(out.replace(/\\.dxf$/, '.json'), JSON.stringify({converter: 'Stand-in 1.0', readProblems: ['UNHANDLEDCLASS'],"
      " repairs: {layerOnOff: 3, trueColours: 0, lineBreaks: 0}, dropped: {entities: {MESH: 2}, objects: {}}, stubs: {ACAD_TABLE: 1}}));");
  Env("TV_TEST_DXF", dxf);
  const fs::path out = dir_ / "out";

  RunResult r = run_({"info", dwg_});
  EXPECT_EQ(r.exitCode, kExitOk) << r.err;
  for (const char* line : {"来源: DWG AC1032 (R2018)，经 Stand-in 1.0 转换", "转换修复: 3 个图层的开关状态",
                           "未能转换的实体: MESH 2", "只转换了空壳: ACAD_TABLE 1", "转换程序读取时报告: UNHANDLEDCLASS"})
    EXPECT_TRUE(Has(r.out, line)) << line << '\n' << r.out;
  r = run_({"info", "--json", dwg_});
  EXPECT_EQ(Json(r)["source"]["dropped"]["entities"]["MESH"], 2) << r.out;
  r = run_({"sheets", dwg_});
  EXPECT_EQ(r.exitCode, kExitOk) << r.err;
  EXPECT_TRUE(Has(r.out, "1 张")) << r.out;
  r = run_({"plot", dwg_, "--out", out.string()});
  EXPECT_EQ(r.exitCode, kExitOk) << r.err;
  EXPECT_EQ(FilesIn(out).size(), 1u);
  r = run_({"run", dwg_, "_-plotstamp", "--answer", "ON"});
  EXPECT_EQ(r.exitCode, kExitOk) << r.err;
  r = run_({"console", dwg_}, "_-plotstamp\nOFF\n");
  EXPECT_EQ(r.exitCode, kExitOk) << r.err;
  Env("TV_TEST_DXF", titles);
  r = run_({"titleblock", dwg_, "--tk", tk});
  EXPECT_EQ(r.exitCode, kExitOk) << r.err;
  EXPECT_FALSE(r.out.empty());
}

}  // namespace
}  // namespace tv::cli
