#include "cad/dxf_writer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "../support/corpus.h"
#include "../support/entity_builders.h"
#include "../support/run_program.h"
#include "../support/shape_builders.h"
#include "cad/dxf_reader.h"

namespace tv::cad {
namespace {

namespace fs = std::filesystem;

using Pair = std::pair<int, std::string>;
using test_support::FilesIn;

std::vector<Pair> Pairs(const std::string& dxf) {
  std::vector<Pair> pairs;
  std::istringstream in(dxf);
  std::string code, value;
  while (std::getline(in, code) && std::getline(in, value)) pairs.emplace_back(std::stoi(code), value);
  return pairs;
}

// The groups of header variable `name`.
std::vector<Pair> HeaderVar(const std::vector<Pair>& pairs, const std::string& name) {
  std::vector<Pair> groups;
  auto it = std::find(pairs.begin(), pairs.end(), Pair{9, name});
  if (it != pairs.end())
    for (++it; it != pairs.end() && it->first != 9 && it->first != 0; ++it) groups.push_back(*it);
  return groups;
}

// What CAD programs insist on: the sections in order, every object with a handle of its own below
// $HANDSEED, and (for drawings built here) every owner and dictionary entry pointing at a written object.
void ExpectWellFormed(const std::string& dxf, bool referencesResolve) {
  const std::vector<Pair> pairs = Pairs(dxf);
  ASSERT_FALSE(pairs.empty());
  EXPECT_EQ(pairs.back(), (Pair{0, "EOF"}));
  std::vector<std::string> sections;
  for (std::size_t i = 0; i + 1 < pairs.size(); ++i)
    if (pairs[i] == Pair{0, "SECTION"}) sections.push_back(pairs[i + 1].second);
  EXPECT_EQ(sections, (std::vector<std::string>{"HEADER", "CLASSES", "TABLES", "BLOCKS", "ENTITIES", "OBJECTS"}));

  const auto seed = HeaderVar(pairs, "$HANDSEED");
  ASSERT_EQ(seed.size(), 1u);
  const std::uint64_t handseed = std::stoull(seed[0].second, nullptr, 16);
  std::set<std::uint64_t> handles;
  std::size_t start = std::find(pairs.begin(), pairs.end(), Pair{2, "TABLES"}) - pairs.begin();
  for (std::size_t i = start; i + 2 < pairs.size(); ++i) {
    if (pairs[i].first != 0) continue;
    const std::string& what = pairs[i].second;
    if (what == "SECTION" || what == "ENDSEC" || what == "ENDTAB" || what == "EOF") continue;
    const Pair& h = what == "TABLE" ? pairs[i + 2] : pairs[i + 1];
    ASSERT_TRUE(h.first == 5 || h.first == 105) << what << " without a handle at group " << i;
    std::uint64_t value = std::stoull(h.second, nullptr, 16);
    EXPECT_TRUE(handles.insert(value).second) << what << " repeats handle " << h.second;
    EXPECT_LT(value, handseed) << what;
  }
  if (!referencesResolve) return;
  for (const Pair& p : pairs) {
    if (p.first == 330 || p.first == 350 || p.first == 360) {
      EXPECT_TRUE(p.second == "0" || handles.count(std::stoull(p.second, nullptr, 16))) << p.first << " -> " << p.second;
    }
  }
}

// What a write must keep of a drawing.
struct Summary {
  std::map<std::string, std::map<std::string, int>> entities;  // block -> DXF name -> count
  std::set<std::string> layers;
  std::vector<std::string> layouts;  // in tab order
  int dictionaries = 0, xrecords = 0;
};

Summary Summarize(const Database& db) {
  Summary s;
  for (const auto& b : db.blocks) {
    auto& counts = s.entities[b->name];
    db.forEachEntity(*b, [&](const Entity& e) { ++counts[e.dxfName()]; });
  }
  for (const auto& l : db.layers) s.layers.insert(l->name);
  for (const Layout* l : db.layoutsInTabOrder()) s.layouts.push_back(l->name);
  for (const auto& o : db.objects) {
    s.dictionaries += o->type() == ObjectType::Dictionary;
    s.xrecords += o->type() == ObjectType::Xrecord;
  }
  return s;
}

void ExpectSameSummary(const Summary& a, const Summary& b) {
  EXPECT_EQ(a.entities, b.entities);
  EXPECT_EQ(a.layers, b.layers);
  EXPECT_EQ(a.layouts, b.layouts);
  EXPECT_EQ(a.dictionaries, b.dictionaries);
  EXPECT_EQ(a.xrecords, b.xrecords);
}

template <class T>
const T* FirstOf(const Database& db, const BlockRecord& block) {
  const T* found = nullptr;
  db.forEachEntity(block, [&](const Entity& e) {
    if (!found) found = As<T>(&e);
  });
  return found;
}

constexpr double kDeg = kPi / 180;

TEST(DxfWriter, BuiltDrawingReadsBackWithEverythingItHolds) {
  Database db = Database::createDefault();
  BlockRecord& model = *db.modelSpace();
  const ObjectId standard = db.findTextStyle("Standard")->id;

  Linetype& dashDot = db.addLinetype("DASHDOT");
  dashDot.description = "__ . __";
  dashDot.patternLength = 1.0;
  dashDot.dashes = {LinetypeDash{.length = 0.5}, LinetypeDash{.length = -0.25}, LinetypeDash{.length = 0}, LinetypeDash{.length = -0.25}};
  Linetype& gas = db.addLinetype("GAS");
  gas.patternLength = 1.3;
  gas.dashes = {LinetypeDash{.length = 1.0},
                LinetypeDash{.length = -0.3, .shapeFlags = 2, .shapeStyle = standard, .shapeScale = 0.1, .offsetX = -0.1, .offsetY = -0.05, .text = "GAS"}};

  Layer& wall = db.addLayer("墙体");
  wall.colorIndex = 3;
  wall.trueColor = 0x336699;
  wall.on = false;
  wall.setFrozen(true);
  wall.setLocked(true);
  wall.plottable = false;
  wall.linetype = dashDot.id;
  wall.lineweight = 50;

  TextStyle& fangSong = db.addTextStyle("仿宋");
  fangSong.fontFile = "simfang.ttf";
  fangSong.fontFamily = "仿宋";
  fangSong.widthFactor = 0.7;
  fangSong.oblique = 15 * kDeg;
  TextStyle& hz = db.addTextStyle("HZ");
  hz.fontFile = "txt.shx";
  hz.bigFontFile = "gbcbig.shx";
  hz.height = 3.5;

  BlockRecord& door = db.addBlock("DOOR");
  door.basePoint = {1, 2, 0};
  door.blockFlags |= BlockRecord::kHasAttributes;
  db.append(door, std::make_unique<Line>());
  auto attdef = std::make_unique<AttDef>();
  attdef->tag = "NO";
  attdef->prompt = "编号";
  db.append(door, std::move(attdef));
  BlockRecord& anonymous = db.addBlock("*U");
  db.append(anonymous, std::make_unique<Circle>()).radius = 2;
  BlockRecord& xref = db.addBlock("PLAN");
  xref.blockFlags = BlockRecord::kXref;
  xref.xrefPath = "..\\plans\\plan.dxf";

  auto doorInsert = test_support::MakeInsert(door, {});
  for (const char* value : {"D1", "防火门"}) {
    doorInsert->attribs.push_back(test_support::MakeAtt<Attrib>(value, {}, 0));
    doorInsert->attribs.back()->tag = value[0] == 'D' ? "NO" : "TYPE";
  }
  db.append(model, std::move(doorInsert));
  Insert& clipped = db.append(model, test_support::MakeInsert(anonymous, {}));
  SpatialFilter& clip = test_support::AddSpatialClip(db, clipped, {{0, 0}, {10, 5}});
  clip.displayBoundary = true;
  clip.clipTransform = Matrix3d::translation({1, 2, 0});

  Text& text = db.append(model, test_support::MakeText("中文文字 ABC", {}, 3.5));
  text.style = fangSong.id;
  text.layer = wall.id;
  db.erase(db.append(model, std::make_unique<Line>()).id);
  // An entity put into a block by hand has neither handle nor owner: the writer gives it both.
  model.entities.push_back(std::make_unique<Line>());

  Layout& first = *db.findLayout("Layout1");
  first.plot.plotterName = "DWG To PDF.pc3";
  first.plot.paperSize = "ISO_full_bleed_A3_(420.00_x_297.00_MM)";
  first.plot.paperWidth = 420;
  first.plot.paperHeight = 297;
  first.plot.styleSheet = "monochrome.ctb";
  first.plot.rotation = 1;
  db.append(*db.paperSpace(), std::make_unique<Line>());
  Layout& second = db.addLayout("出图2");
  second.plot.paperSize = "ISO_A1_(841.00_x_594.00_MM)";
  second.plot.plotType = 1;
  db.append(*db.blockOf(second), std::make_unique<Circle>());
  db.append(*db.blockOf(second), std::make_unique<Circle>());

  Dictionary& data = db.ensureDictionary(db.ensureDictionary(*db.rootDictionary(), "TV_DATA"), "内层");
  Xrecord& all = db.ensureXrecord(data, "ALL");
  all.data = {Group{1, std::string("字符串")},  Group{40, 2.5},          Group{70, std::int64_t{-3}},
              Group{90, std::int64_t{123456789}}, Group{160, std::int64_t{1} << 40}, Group{330, wall.id},
              Group{310, Bytes{0, 1, 0xAB, 0xFF}}, Group{10, 1.5},         Group{20, -2.0},
              Group{30, 3.0}};

  const std::string dxf = WriteDxfToString(db);
  ExpectWellFormed(dxf, true);
  EXPECT_NE(dxf.find("中文文字 ABC"), std::string::npos) << "R2007 and later files hold UTF-8";
  DxfReadResult read = ReadDxfFromBytes(dxf, "built.dxf");
  ASSERT_TRUE(read.ok()) << read.error;
  const Database& back = *read.db;
  EXPECT_EQ(back.version(), DxfVersion::R2018);
  ExpectSameSummary(Summarize(db), Summarize(back));

  const Layer* wallBack = back.findLayer("墙体");
  ASSERT_NE(wallBack, nullptr);
  EXPECT_FALSE(wallBack->isOn());
  EXPECT_TRUE(wallBack->isFrozen());
  EXPECT_TRUE(wallBack->isLocked());
  EXPECT_FALSE(wallBack->plottable);
  EXPECT_EQ(wallBack->colorIndex, 3);
  EXPECT_EQ(wallBack->trueColor, 0x336699);
  EXPECT_EQ(wallBack->lineweight, 50);
  EXPECT_EQ(wallBack->linetype, dashDot.id);
  EXPECT_TRUE(back.findLayer("0")->isOn());

  ASSERT_NE(back.findLinetype("DASHDOT"), nullptr);
  EXPECT_EQ(back.findLinetype("DASHDOT")->dashes, dashDot.dashes);
  EXPECT_EQ(back.findLinetype("DASHDOT")->description, "__ . __");
  ASSERT_NE(back.findLinetype("GAS"), nullptr);
  EXPECT_EQ(back.findLinetype("GAS")->dashes, gas.dashes);

  const TextStyle* fangSongBack = back.findTextStyle("仿宋");
  ASSERT_NE(fangSongBack, nullptr);
  EXPECT_EQ(fangSongBack->fontFile, "simfang.ttf");
  EXPECT_EQ(fangSongBack->fontFamily, "仿宋");
  EXPECT_DOUBLE_EQ(fangSongBack->widthFactor, 0.7);
  EXPECT_NEAR(fangSongBack->oblique, 15 * kDeg, 1e-12);
  ASSERT_NE(back.findTextStyle("HZ"), nullptr);
  EXPECT_EQ(back.findTextStyle("HZ")->bigFontFile, "gbcbig.shx");
  EXPECT_DOUBLE_EQ(back.findTextStyle("HZ")->height, 3.5);

  const BlockRecord* doorBack = back.findBlock("DOOR");
  ASSERT_NE(doorBack, nullptr);
  EXPECT_EQ(doorBack->basePoint, (Point3d{1, 2, 0}));
  const BlockRecord* anonymousBack = back.findBlock(anonymous.name);
  ASSERT_NE(anonymousBack, nullptr);
  EXPECT_TRUE(anonymousBack->isAnonymous());
  const BlockRecord* xrefBack = back.findBlock("PLAN");
  ASSERT_NE(xrefBack, nullptr);
  EXPECT_TRUE(xrefBack->isXref());
  EXPECT_EQ(xrefBack->xrefPath, "..\\plans\\plan.dxf");

  const auto layouts = back.layoutsInTabOrder();
  ASSERT_EQ(layouts.size(), 3u);
  EXPECT_EQ(layouts[1]->plot, first.plot);
  EXPECT_EQ(layouts[2]->plot, second.plot);
  EXPECT_EQ(back.blockOf(*layouts[1]), back.paperSpace());
  ASSERT_NE(back.blockOf(*layouts[2]), nullptr);
  EXPECT_EQ(back.blockOf(*layouts[2])->entities.size(), 2u);
  EXPECT_EQ(back.paperSpace()->entities.size(), 1u);

  const Dictionary* dataBack = back.namedDictionary("TV_DATA");
  ASSERT_NE(dataBack, nullptr);
  const auto* innerBack = back.objectAs<Dictionary>(dataBack->find("内层"));
  ASSERT_NE(innerBack, nullptr);
  const auto* allBack = back.objectAs<Xrecord>(innerBack->find("ALL"));
  ASSERT_NE(allBack, nullptr);
  EXPECT_EQ(allBack->data, all.data);

  const BlockRecord& modelBack = *back.modelSpace();
  const Insert* doorBackInsert = FirstOf<Insert>(back, modelBack);
  ASSERT_NE(doorBackInsert, nullptr);
  ASSERT_EQ(doorBackInsert->attribs.size(), 2u);
  EXPECT_EQ(doorBackInsert->attribs[1]->tag, "TYPE");
  EXPECT_EQ(doorBackInsert->attribs[1]->text, "防火门");
  const Insert* clippedBack = back.objectAs<Insert>(clipped.id);
  ASSERT_NE(clippedBack, nullptr);
  const SpatialFilter* clipBack = back.spatialFilterOf(*clippedBack);
  ASSERT_NE(clipBack, nullptr);
  EXPECT_EQ(clipBack->boundary, clip.boundary);
  EXPECT_TRUE(clipBack->displayBoundary);
  EXPECT_EQ(clipBack->clipTransform.m, clip.clipTransform.m);

  const Text* textBack = FirstOf<Text>(back, modelBack);
  ASSERT_NE(textBack, nullptr);
  EXPECT_EQ(textBack->text, "中文文字 ABC");
  EXPECT_EQ(textBack->style, fangSong.id);
}

TEST(DxfWriter, HeaderCarriesTheOutputVersionAndWhatCadProgramsNeed) {
  Database db = Database::createDefault();
  std::erase_if(db.header.variables, [](const HeaderVariable& v) { return v.name == "$DWGCODEPAGE" || v.name == "$INSBASE"; });
  db.header.setString("$ACADVER", "AC1015");
  db.header.setHandle("$HANDSEED", ObjectId{1});  // too low: must be raised above every handle

  const auto r2013 = Pairs(WriteDxfToString(db, {DxfVersion::R2013}));
  EXPECT_EQ(r2013[2], (Pair{9, "$ACADVER"}));
  EXPECT_EQ(HeaderVar(r2013, "$ACADVER"), (std::vector<Pair>{{1, "AC1027"}}));
  ASSERT_EQ(HeaderVar(r2013, "$ACADMAINTVER").size(), 1u);
  EXPECT_EQ(HeaderVar(r2013, "$ACADMAINTVER")[0].first, 70);
  for (const char* name : {"$DWGCODEPAGE", "$INSBASE", "$EXTMIN", "$EXTMAX", "$LIMMIN", "$LIMMAX", "$HANDSEED", "$TILEMODE",
                           "$MEASUREMENT", "$INSUNITS", "$LTSCALE", "$CELTSCALE"})
    EXPECT_EQ(std::count(r2013.begin(), r2013.end(), Pair{9, name}), 1) << name;
  EXPECT_EQ(HeaderVar(r2013, "$DWGCODEPAGE"), (std::vector<Pair>{{3, "ANSI_936"}}));

  const std::string r2018 = WriteDxfToString(db);
  ExpectWellFormed(r2018, true);
  EXPECT_EQ(HeaderVar(Pairs(r2018), "$ACADMAINTVER")[0].first, 90);
  DxfReadResult read = ReadDxfFromBytes(r2018);
  ASSERT_TRUE(read.ok()) << read.error;
  EXPECT_EQ(read.db->version(), DxfVersion::R2018);
}

TEST(DxfWriter, CorpusDrawingsReadBackTheSame) {
  const fs::path root = test_support::CorpusDir();
  TV_SKIP_WITHOUT_CORPUS(root);
  int checked = 0;
  for (const fs::path& file : test_support::CorpusDxfFiles(root)) {
    DxfReadResult first = ReadDxf(file.string());
    if (!first.ok()) continue;
    SCOPED_TRACE(file.string());
    ++checked;
    const std::string dxf = WriteDxfToString(*first.db);
    ExpectWellFormed(dxf, false);
    DxfReadResult second = ReadDxfFromBytes(dxf, file.string());
    ASSERT_TRUE(second.ok()) << second.error;
    ExpectSameSummary(Summarize(*first.db), Summarize(*second.db));
  }
  EXPECT_GT(checked, 50);
}

TEST(DxfWriter, FilesAreReplacedWholeOrNotAtAll) {
  const test_support::TempDir temp{"tv_dxf_writer"};
  const fs::path dir = temp.path();
  fs::create_directories(dir / "ro");
  // Large enough to go to disk in several pieces.
  Database db = Database::createDefault();
  constexpr int kLines = 80000;
  for (int i = 0; i < kLines; ++i) {
    db.append(*db.modelSpace(), test_support::MakeLine({}, {i * 1.5, i * 0.25, 0}));
  }

  const fs::path target = dir / "图纸.dxf";
  std::ofstream(target) << "old contents";
  Status ok = WriteDxf(db, target.string());
  ASSERT_TRUE(ok.ok) << ok.message;
  EXPECT_GT(fs::file_size(target), 8u << 20);
  DxfReadResult back = ReadDxf(target.string());
  ASSERT_TRUE(back.ok()) << back.error;
  EXPECT_EQ(back.db->modelSpace()->entities.size(), static_cast<std::size_t>(kLines));
  EXPECT_EQ(WriteDxfToString(*back.db).size(), fs::file_size(target)) << "the same text in pieces or whole";
  EXPECT_EQ(FilesIn(dir), (std::vector<std::string>{"ro", "图纸.dxf"})) << "no temporary file left";

  const std::string missing = (dir / "missing" / "a.dxf").string();
  Status failed = WriteDxf(db, missing);
  EXPECT_FALSE(failed.ok);
  EXPECT_EQ(failed.message.rfind("无法写入文件 " + missing + "：", 0), 0u) << failed.message;

  // Root may write into a read-only folder; sysfs refuses new files to everyone.
  ::chmod((dir / "ro").c_str(), 0555);
  fs::path readOnly = dir / "ro" / "a.dxf";
  if (std::ofstream(dir / "ro" / "probe")) {
    fs::remove(dir / "ro" / "probe");
    readOnly = "/sys/tv_dxf_writer_test.dxf";
  }
  failed = WriteDxf(db, readOnly.string());
  EXPECT_FALSE(failed.ok);
  EXPECT_NE(failed.message.find(readOnly.string()), std::string::npos) << failed.message;
  EXPECT_TRUE(FilesIn(dir / "ro").empty());
  ::chmod((dir / "ro").c_str(), 0755);
}

}  // namespace
}  // namespace tv::cad
