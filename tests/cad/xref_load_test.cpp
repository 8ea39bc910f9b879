// External references loaded into the drawing that refers to them: where their files are found,
// the names they join under, what nested references carry, and that each file is read once.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "../support/corpus.h"
#include "../support/run_program.h"
#include "../support/xref_drawings.h"

#include "cad/drawing_file.h"
#include "examples/sample_kit.h"
#include "cad/xref_load.h"
#include "cad/xref_path.h"

namespace tv::cad {
namespace {

namespace fs = std::filesystem;

using test_support::AddXrefBlock;
using test_support::Place;
using test_support::Referring;
using test_support::TempDir;
using test_support::WriteDrawing;

std::size_t Count(const std::vector<std::string>& texts, const std::string& part) {
  return std::count_if(texts.begin(), texts.end(), [&](const std::string& t) { return t.find(part) != std::string::npos; });
}

std::size_t EntityCount(const Database& db, const std::string& block) {
  const BlockRecord* b = db.findBlock(block);
  return b ? b->entities.size() : 0;
}

// Reads `path` and loads its references, as every command does.
struct Loaded {
  Database db;
  XrefLoadResult xrefs;
};
Loaded Load(const std::string& path) {
  DxfReadResult read = ReadDrawing(path);
  EXPECT_TRUE(read.ok()) << read.error;
  Loaded loaded{read.ok() ? std::move(*read.db) : Database::createDefault(), {}};
  loaded.xrefs = LoadXrefs(loaded.db, path);
  return loaded;
}

// A drawing of one line on a layer of its own.
Database OneLine(const std::string& layerName) {
  Database db = Database::createDefault();
  auto line = std::make_unique<Line>();
  line->end = {100, 50, 0};
  line->layer = db.addLayer(layerName).id;
  db.append(*db.modelSpace(), std::move(line));
  return db;
}

TEST(XrefPathTest, SavedPathThenTheNameBesideTheDrawing) {
  TempDir dir("tv_xref_path");
  const fs::path project = dir / "项目";
  WriteDrawing(project / "xref" / "图框A1.dxf", OneLine("a"));
  WriteDrawing(project / "建施" / "平面.dxf", OneLine("b"));
  WriteDrawing(project / "建施" / "图框A1.DXF", OneLine("c"));
  fs::create_directories(project / "建施" / "目录.dxf");
  test_support::WriteFile(project / "建施" / "说明.txt", "not a drawing");
  const std::string folder = (project / "建施").string();
  const std::string frame = (project / "xref" / "图框A1.dxf").string();
  const std::string sibling = (project / "建施" / "平面.dxf").string();

  struct Case {
    std::string saved, expected;
  };
  for (const Case& c : std::vector<Case>{
           {"..\\xref\\图框A1.dxf", frame},                   // relative, Windows separators
           {"../xref/图框A1.dxf", frame},                      // relative, forward slashes
           {frame, frame},                                      // absolute
           {"D:\\工程\\旧项目\\平面.dxf", sibling},            // another machine's drive: the name beside
           {"\\\\server\\share\\平面.dxf", sibling},           // a network share: the name beside
           {"/nowhere/平面.dxf", sibling},                      // absolute but gone
           {".\\平面.dxf", sibling},
           {"图框A1.DXF", (project / "建施" / "图框A1.DXF").string()},  // the extension in any case
           {"D:\\missing\\没有.dxf", ""},
           {"目录.dxf", ""},                                    // a folder is no drawing
           {"说明.txt", ""},                                    // neither is a text file
           {"", ""},
       }) {
    SCOPED_TRACE(c.saved);
    EXPECT_EQ(ResolveXrefPath(c.saved, folder), c.expected);
  }
}

TEST(XrefLoadTest, ModelSpaceBecomesTheBlockAndNamesJoinUnderTheXrefName) {
  TempDir dir("tv_xref_load");
  Database plan = Database::createDefault();
  Layer& wall = plan.addLayer("墙");
  wall.colorIndex = 3;
  Layer& hidden = plan.addLayer("辅助");
  hidden.on = false;
  hidden.setFrozen(true);
  hidden.plottable = false;
  Linetype& dashed = plan.addLinetype("DASHED");
  dashed.dashes.resize(2);
  dashed.dashes[0].length = 5;
  dashed.dashes[1].length = -2;
  wall.linetype = dashed.id;
  TextStyle& hz = plan.addTextStyle("HZ");
  BlockRecord& door = plan.addBlock("门");
  auto leaf = std::make_unique<Line>();
  leaf->layer = wall.id;
  plan.append(door, std::move(leaf));
  Place(plan, door, {10, 10, 0});
  auto text = std::make_unique<Text>();
  text->text = "一层平面图";
  text->style = hz.id;
  text->layer = plan.findLayer("0")->id;
  plan.append(*plan.modelSpace(), std::move(text));
  auto line = std::make_unique<Line>();
  line->layer = wall.id;
  plan.append(*plan.modelSpace(), std::move(line));
  plan.header.setPoint("$INSBASE", {5, 5, 0});
  WriteDrawing(dir / "平面.dxf", plan);
  const std::string host = WriteDrawing(dir / "A-101.dxf", Referring("平面", "平面.dxf"));

  Loaded l = Load(host);
  ASSERT_EQ(l.xrefs.xrefs.size(), 1u);
  EXPECT_EQ(l.xrefs.xrefs[0].state, XrefState::Loaded);
  EXPECT_TRUE(l.xrefs.notices.empty());
  const BlockRecord* xref = l.db.findBlock("平面");
  ASSERT_NE(xref, nullptr);
  ASSERT_EQ(xref->entities.size(), 3u);
  EXPECT_EQ(xref->basePoint, (Point3d{5, 5, 0}));

  const Layer* joined = l.db.findLayer("平面|墙");
  ASSERT_NE(joined, nullptr);
  EXPECT_EQ(joined->colorIndex, 3);
  const Linetype* lt = l.db.objectAs<Linetype>(joined->linetype);
  ASSERT_NE(lt, nullptr);
  EXPECT_EQ(lt->name, "平面|DASHED");
  EXPECT_EQ(lt->dashes.size(), 2u);
  const Layer* off = l.db.findLayer("平面|辅助");
  ASSERT_NE(off, nullptr);
  EXPECT_FALSE(off->isOn());
  EXPECT_TRUE(off->isFrozen());
  EXPECT_FALSE(off->plottable);
  EXPECT_EQ(l.db.findLayer("平面|0"), nullptr) << "layer 0 stays the drawing's own";
  EXPECT_EQ(l.db.findLinetype("平面|Continuous"), nullptr);

  // Every reference of the copied entities leads to the joined names.
  const auto* insert = As<Insert>(xref->entities[0].get());
  ASSERT_NE(insert, nullptr);
  const auto* block = l.db.objectAs<BlockRecord>(insert->block);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->name, "平面|门");
  EXPECT_EQ(block->entities.size(), 1u);
  EXPECT_EQ(l.db.objectAs<Layer>(block->entities[0]->layer), joined);
  const auto* copiedText = As<Text>(xref->entities[1].get());
  ASSERT_NE(copiedText, nullptr);
  EXPECT_EQ(l.db.objectAs<TextStyle>(copiedText->style)->name, "平面|HZ");
  EXPECT_EQ(l.db.objectAs<Layer>(copiedText->layer)->name, "0");
  EXPECT_EQ(l.db.objectAs<Layer>(xref->entities[2]->layer), joined);
  EXPECT_EQ(l.db.ownerBlock(*xref->entities[2]), xref);
  EXPECT_EQ(l.db.entity(xref->entities[2]->id), xref->entities[2].get());
  EXPECT_EQ(l.db.externalFiles, std::vector<std::string>{(dir / "平面.dxf").string()});
}

TEST(XrefLoadTest, DimensionsKeepTheirOwnBlocksBesideTheDrawingsAnonymousBlocks) {
  namespace kit = samples::kit;
  TempDir dir("tv_xref_dims");
  Database plan = Database::createDefault();
  kit::DimensionStyle style;
  style.layer = kit::AddLayer(plan, "标注", 3).id;
  style.defpointsLayer = plan.addLayer("Defpoints").id;
  style.textStyle = plan.addTextStyle("HZ").id;
  style.dimStyle = plan.findTableRecord("DIMSTYLE", "Standard")->id;
  for (int i = 0; i < 5; ++i)
    kit::AddLinearDimension(plan, *plan.modelSpace(), {0, i * 1000.0}, {3000, i * 1000.0}, true, 500, style);
  WriteDrawing(dir / "平面.dxf", plan);
  // The drawing has dimension blocks of its own under the same names.
  Database host = Referring("平面", "平面.dxf");
  kit::DimensionStyle own = style;
  own.layer = host.addLayer("标注").id;
  own.defpointsLayer = host.addLayer("Defpoints").id;
  own.textStyle = host.findTextStyle("Standard")->id;
  own.dimStyle = host.findTableRecord("DIMSTYLE", "Standard")->id;
  for (int i = 0; i < 3; ++i) kit::AddLinearDimension(host, *host.modelSpace(), {0, 0}, {1000, 0}, true, 300, own);
  Loaded l = Load(WriteDrawing(dir / "A-101.dxf", host));

  std::set<std::string> names;
  for (const auto& e : l.db.findBlock("平面")->entities) {
    const auto* d = As<Dimension>(e.get());
    ASSERT_NE(d, nullptr);
    const auto* block = l.db.objectAs<BlockRecord>(d->block);
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(block->isAnonymous());
    EXPECT_FALSE(block->entities.empty());
    names.insert(block->name);
    EXPECT_EQ(l.db.objectAs<TableRecord>(d->dimStyle)->name, "平面|Standard");
    EXPECT_EQ(l.db.objectAs<Layer>(e->layer)->name, "平面|标注");
  }
  EXPECT_EQ(names.size(), 5u);
  for (const auto& e : l.db.modelSpace()->entities)
    if (const auto* d = As<Dimension>(e.get())) {
      EXPECT_FALSE(names.contains(l.db.objectAs<BlockRecord>(d->block)->name));
    }
  EXPECT_NE(l.db.findLayer("Defpoints"), nullptr);
  EXPECT_EQ(l.db.findLayer("平面|Defpoints"), nullptr);
}

TEST(XrefLoadTest, EachFileIsReadOnceWhateverReachesIt) {
  TempDir dir("tv_xref_once");
  WriteDrawing(dir / "xref" / "图框.dxf", OneLine("框"));
  // Two plans that both place the frame, and a host that places the frame, both plans and the
  // frame again under a second name, in model space and on layouts.
  for (const char* plan : {"平面一", "平面二"}) {
    Database db = Database::createDefault();
    Place(db, AddXrefBlock(db, "图框", "..\\xref\\图框.dxf"), {});
    WriteDrawing(dir / "plans" / (std::string(plan) + ".dxf"), db);
  }
  Database host = Database::createDefault();
  BlockRecord& frame = AddXrefBlock(host, "图框", "xref\\图框.dxf");
  BlockRecord& again = AddXrefBlock(host, "图框2", "D:\\旧\\xref\\图框.dxf");  // not beside: not found
  BlockRecord& one = AddXrefBlock(host, "平面一", "plans/平面一.dxf");
  BlockRecord& two = AddXrefBlock(host, "平面二", "plans/平面二.dxf");
  for (int i = 0; i < 3; ++i) {
    Layout& layout = host.addLayout("布局" + std::to_string(i));
    BlockRecord* space = host.blockOf(layout);
    Place(host, frame, {}, 1, space);
    Place(host, one, {}, 1, space);
    Place(host, two, {}, 1, space);
  }
  Place(host, again, {});
  const std::string path = WriteDrawing(dir / "A-101.dxf", host);

  Loaded l = Load(path);
  EXPECT_EQ(l.xrefs.fileReads, 3u);
  EXPECT_EQ(l.xrefs.filesRead.size(), 3u);
  EXPECT_EQ(EntityCount(l.db, "图框"), 1u);
  EXPECT_EQ(EntityCount(l.db, "平面一|图框"), 1u);
  EXPECT_EQ(EntityCount(l.db, "平面二|图框"), 1u);
  EXPECT_NE(l.db.findLayer("图框|框"), nullptr);
  EXPECT_EQ(Count(l.xrefs.notices, "外部参照 图框2 未找到（D:\\旧\\xref\\图框.dxf）"), 1u);
}

TEST(XrefLoadTest, NestedAttachmentsAreCarriedOverlaysAreNot) {
  TempDir dir("tv_xref_nested");
  WriteDrawing(dir / "轴网.dxf", OneLine("AXIS"));
  WriteDrawing(dir / "底图.dxf", OneLine("BASE"));
  Database plan = OneLine("墙");
  Place(plan, AddXrefBlock(plan, "轴网", "轴网.dxf"), {});
  Place(plan, AddXrefBlock(plan, "底图", "底图.dxf", true), {});
  WriteDrawing(dir / "平面.dxf", plan);
  // The host overlays the plan: an overlay of the drawing itself is loaded.
  const std::string host = WriteDrawing(dir / "A-101.dxf", Referring("平面", "平面.dxf", true));

  Loaded l = Load(host);
  EXPECT_EQ(EntityCount(l.db, "平面"), 3u);
  EXPECT_EQ(EntityCount(l.db, "平面|轴网"), 1u);
  EXPECT_NE(l.db.findLayer("轴网|AXIS"), nullptr);
  EXPECT_EQ(EntityCount(l.db, "平面|底图"), 0u);
  EXPECT_EQ(l.db.findLayer("底图|BASE"), nullptr);
  EXPECT_EQ(l.xrefs.fileReads, 2u);
  ASSERT_EQ(l.xrefs.xrefs.size(), 3u);
  EXPECT_EQ(l.xrefs.xrefs[1].name, "平面|轴网");
  EXPECT_EQ(l.xrefs.xrefs[1].state, XrefState::Loaded);
  EXPECT_EQ(l.xrefs.xrefs[1].depth, 2);
  EXPECT_EQ(l.xrefs.xrefs[2].name, "平面|底图");
  EXPECT_EQ(l.xrefs.xrefs[2].state, XrefState::Overlay);
  EXPECT_TRUE(l.xrefs.notices.empty());
}

TEST(XrefLoadTest, CyclesAreRefusedWithANotice) {
  TempDir dir("tv_xref_cycle");
  struct Case {
    const char* what;
    std::string host;
  };
  // A -> B -> A, and a drawing that refers to itself.
  Database a = OneLine("a");
  Place(a, AddXrefBlock(a, "B", "B.dxf"), {});
  Database b = OneLine("b");
  Place(b, AddXrefBlock(b, "A", "A.dxf"), {});
  WriteDrawing(dir / "B.dxf", b);
  const std::string self = WriteDrawing(dir / "self.dxf", Referring("自身", "self.dxf"));
  for (const Case& c : {Case{"A-B-A", WriteDrawing(dir / "A.dxf", a)}, Case{"self", self}}) {
    SCOPED_TRACE(c.what);
    Loaded l = Load(c.host);
    EXPECT_EQ(Count(l.xrefs.notices, "循环引用"), 1u);
    EXPECT_TRUE(std::any_of(l.xrefs.xrefs.begin(), l.xrefs.xrefs.end(),
                            [](const XrefInfo& x) { return x.state == XrefState::Cycle; }));
  }
}

TEST(XrefLoadTest, AFileThatIsNoDrawingIsToldAndLeftOut) {
  TempDir dir("tv_xref_bad");
  test_support::WriteFile(dir / "坏.dxf", "this is no drawing at all\n");
  const std::string host = WriteDrawing(dir / "A-101.dxf", Referring("坏", "坏.dxf"));
  Loaded l = Load(host);
  ASSERT_EQ(l.xrefs.xrefs.size(), 1u);
  EXPECT_EQ(Count(l.xrefs.notices, "外部参照 坏 无法读取"), 1u);
  EXPECT_EQ(EntityCount(l.db, "坏"), 0u);
}

TEST(XrefLoadTest, AnXrefTheDrawingNeverPlacesIsListedButNotTold) {
  // As CAD programs list the xrefs nested in an xref: a path from the xref's folder.
  TempDir dir("tv_xref_listed");
  Database host = Referring("平面", "D:\\旧\\平面.dxf");
  AddXrefBlock(host, "轴网", "..\\共用\\轴网.dxf");
  const std::string path = WriteDrawing(dir / "A-101.dxf", host);
  Loaded l = Load(path);
  ASSERT_EQ(l.xrefs.xrefs.size(), 2u);
  EXPECT_EQ(l.xrefs.xrefs[1].state, XrefState::NotFound);
  EXPECT_EQ(l.xrefs.notices, std::vector<std::string>{"外部参照 平面 未找到（D:\\旧\\平面.dxf）"});
}

TEST(XrefLoadTest, DrawingsOfOtherProgramsAreXrefsToo) {
  const fs::path corpus = test_support::CorpusDir() / "acadsharp";
  TV_SKIP_WITHOUT_CORPUS(corpus);
  TempDir dir("tv_xref_corpus");
  for (const char* name : {"sample_AC1032_ascii.dxf", "sample_AC1018_ascii.dxf", "sample_AC1032.dwg"}) {
    SCOPED_TRACE(name);
    const std::string file = (corpus / name).string();
    const std::string host = WriteDrawing(dir / "A-101.dxf", Referring("样例", file));
    Loaded l = Load(host);
    ASSERT_EQ(l.xrefs.xrefs.size(), 1u);
    const XrefInfo& x = l.xrefs.xrefs[0];
    EXPECT_TRUE(fs::equivalent(x.resolvedPath, file)) << x.resolvedPath;
    // The set-up installs the DWG converter, so a DWG xref loads like a DXF one.
    ASSERT_EQ(x.state, XrefState::Loaded) << (l.xrefs.notices.empty() ? "" : l.xrefs.notices[0]);
    EXPECT_GT(EntityCount(l.db, "样例"), 0u);
    EXPECT_TRUE(std::any_of(l.db.layers.begin(), l.db.layers.end(),
                            [](const auto& layer) { return layer->name.starts_with("样例|"); }));
    EXPECT_TRUE(l.xrefs.notices.empty());
  }
}

TEST(XrefLoadTest, ADrawingWithoutXrefsIsLeftAsItWas) {
  TempDir dir("tv_xref_none");
  const std::string path = WriteDrawing(dir / "plain.dxf", OneLine("a"));
  Loaded l = Load(path);
  EXPECT_TRUE(l.xrefs.xrefs.empty());
  EXPECT_EQ(l.xrefs.fileReads, 0u);
  EXPECT_TRUE(l.db.externalFiles.empty());
  EXPECT_EQ(WriteDxfToString(l.db), WriteDxfToString(*ReadDrawing(path).db));
}

TEST(XrefLoadTest, ASavedDrawingLeavesTheXrefContentToItsFile) {
  TempDir dir("tv_xref_save");
  WriteDrawing(dir / "平面.dxf", OneLine("墙"));
  const std::string host = WriteDrawing(dir / "A-101.dxf", Referring("平面", "平面.dxf"));
  Loaded l = Load(host);
  ASSERT_EQ(EntityCount(l.db, "平面"), 1u);
  const std::string saved = WriteDrawing(dir / "again.dxf", l.db);
  Loaded again = Load(saved);
  EXPECT_EQ(EntityCount(again.db, "平面"), 1u) << "loaded once more from its file, not doubled";
}

}  // namespace
}  // namespace tv::cad
