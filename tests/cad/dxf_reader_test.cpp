#include "cad/dxf_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "../support/corpus.h"
#include "../support/run_program.h"
#include "cad/codepage.h"

namespace tv::cad {
namespace {

namespace fs = std::filesystem;

const fs::path kCorpus = tv::test_support::CorpusDir();
const fs::path kExamples = kCorpus / "ezdxf" / "examples_dxf";

// Test drawings are written one record a line, its groups "code value" apart by " | "; this makes
// the two-line DXF form.
std::string Dxf(std::string_view snippet) {
  std::string out;
  for (std::size_t at = 0; at < snippet.size();) {
    std::size_t end = std::min(snippet.find_first_of("|\n", at), snippet.size());
    std::string_view group = snippet.substr(at, end - at);
    at = end + 1;
    while (!group.empty() && group.front() == ' ') group.remove_prefix(1);
    while (!group.empty() && group.back() == ' ') group.remove_suffix(1);
    if (group.empty()) continue;
    std::size_t sp = group.find(' ');
    out.append(group.substr(0, sp)).append("\n");
    out.append(sp == std::string_view::npos ? std::string_view{} : group.substr(sp + 1)).append("\n");
  }
  return out;
}

using test_support::TempFile;

std::size_t CountEntities(const Database& db) {
  std::size_t n = 0;
  for (const auto& b : db.blocks) n += b->entities.size();
  return n;
}

template <class T>
std::vector<const T*> EntitiesOf(const BlockRecord& block) {
  std::vector<const T*> out;
  for (const auto& e : block.entities)
    if (const T* t = As<T>(e.get())) out.push_back(t);
  return out;
}

template <class T>
std::vector<const T*> EntitiesOf(const Database& db) {
  std::vector<const T*> out;
  for (const auto& b : db.blocks) {
    auto part = EntitiesOf<T>(*b);
    out.insert(out.end(), part.begin(), part.end());
  }
  return out;
}

DxfReadResult ReadSnippet(std::string_view snippet) { return ReadDxfFromBytes(Dxf(snippet), "test.dxf"); }

// ---- real drawings ---------------------------------------------------------------------------

TEST(DxfReader, EveryCorpusDrawingLoadsOrIsRefusedWithAMessage) {
  TV_SKIP_WITHOUT_CORPUS(kCorpus);
  std::vector<std::string> refused;
  std::size_t loaded = 0;
  for (const fs::path& file : tv::test_support::CorpusDxfFiles(kCorpus)) {
    DxfReadResult r = ReadDxf(file.string());
    if (r.ok()) {
      ++loaded;
      EXPECT_NE(r.db->modelSpace(), nullptr) << file;
      EXPECT_NE(r.db->rootDictionary(), nullptr) << file;
    } else {
      EXPECT_NE(r.error.find(file.string()), std::string::npos) << r.error;
      refused.push_back(fs::relative(file, kCorpus).string());
    }
  }
  EXPECT_GT(loaded, 90u);
  EXPECT_EQ(refused, std::vector<std::string>{});
}

TEST(DxfReader, MinimalAndOldDrawings) {
  for (const fs::path& file : {kExamples / "Minimal_DXF_AC1009.dxf", kExamples / "Minimal_DXF_AC1006.dxf",
                               kCorpus / "ezdxf/integration_tests/data/bin_dxf_r2000.dxf"})
    TV_SKIP_WITHOUT_CORPUS(file);
  DxfReadResult r12 = ReadDxf((kExamples / "Minimal_DXF_AC1009.dxf").string());
  ASSERT_TRUE(r12.ok()) << r12.error;
  EXPECT_EQ(r12.db->version(), DxfVersion::R12);  // no header at all
  ASSERT_NE(r12.db->modelSpace(), nullptr);
  EXPECT_TRUE(r12.db->modelSpace()->entities.empty());
  EXPECT_NE(r12.db->findLayer("0"), nullptr);

  const fs::path oldPath = kExamples / "Minimal_DXF_AC1006.dxf";
  std::vector<std::pair<std::uint64_t, std::uint64_t>> progress;
  DxfReadOptions options;
  options.progress = [&](std::uint64_t done, std::uint64_t total) { progress.emplace_back(done, total); };
  DxfReadResult old = ReadDxf(oldPath.string(), options);
  ASSERT_TRUE(old.ok()) << old.error;
  ASSERT_FALSE(progress.empty());
  EXPECT_EQ(progress.back(), std::make_pair(std::uint64_t{fs::file_size(oldPath)}, std::uint64_t{fs::file_size(oldPath)}));
  EXPECT_TRUE(old.warnings.empty()) << old.warnings.front();
  const Database& db = *old.db;
  EXPECT_EQ(db.modelSpace()->entities.size(), 3u);
  EXPECT_EQ(EntitiesOf<Face3d>(db).size(), 2u);
  const Layer* one = db.findLayer("1");
  ASSERT_NE(one, nullptr);
  EXPECT_EQ(db.objectAs<Linetype>(one->linetype), db.findLinetype("CONTINUOUS"));
  for (const auto& e : db.modelSpace()->entities) EXPECT_EQ(e->layer, one->id);

  // Binary files read like ASCII ones.
  DxfReadResult bin = ReadDxf((kCorpus / "ezdxf/integration_tests/data/bin_dxf_r2000.dxf").string());
  ASSERT_TRUE(bin.ok()) << bin.error;
  EXPECT_GT(CountEntities(*bin.db), 0u);
  EXPECT_EQ(bin.db->version(), DxfVersion::R2000);
}

TEST(DxfReader, CorpusSpotChecks) {
  for (const char* file : {"colors.dxf", "xclip.dxf", "viewport_frozen_layers.dxf", "text_fonts.dxf", "image/images.dxf"})
    TV_SKIP_WITHOUT_CORPUS(kExamples / file);
  {
    DxfReadResult r = ReadDxf((kExamples / "colors.dxf").string());
    ASSERT_TRUE(r.ok()) << r.error;
    std::size_t trueColors = 0;
    for (const auto& b : r.db->blocks)
      for (const auto& e : b->entities) trueColors += e->hasTrueColor();
    EXPECT_EQ(trueColors, 8u);  // the file's 420 groups outside the visual styles
  }
  {
    DxfReadResult r = ReadDxf((kExamples / "xclip.dxf").string());
    ASSERT_TRUE(r.ok()) << r.error;
    const SpatialFilter* clip = nullptr;
    for (const Insert* insert : EntitiesOf<Insert>(*r.db))
      if (const SpatialFilter* f = r.db->spatialFilterOf(*insert); f && f->id == ObjectId(0xEC)) clip = f;
    ASSERT_NE(clip, nullptr);
    EXPECT_EQ(clip->boundary.size(), 2u);
    EXPECT_TRUE(clip->displayBoundary);
    EXPECT_FALSE(clip->frontClip);
    EXPECT_TRUE(clip->clipTransform.isIdentity());
    EXPECT_EQ(clip->inverseInsertTransform.m[0][0], 1.0);
    EXPECT_EQ(clip->inverseInsertTransform.translationPart(), (Vector3d{-5, -5, 0}));
  }
  {
    DxfReadResult r = ReadDxf((kExamples / "viewport_frozen_layers.dxf").string());
    ASSERT_TRUE(r.ok()) << r.error;
    std::size_t frozen = 0;
    for (const Viewport* vp : EntitiesOf<Viewport>(*r.db))
      for (ObjectId layer : vp->frozenLayers) {
        EXPECT_NE(r.db->objectAs<Layer>(layer), nullptr);
        ++frozen;
      }
    EXPECT_EQ(frozen, 2u);
  }
  {
    DxfReadResult r = ReadDxf((kExamples / "text_fonts.dxf").string());
    ASSERT_TRUE(r.ok()) << r.error;
    const TextStyle* arial = r.db->findTextStyle("ARIAL");
    ASSERT_NE(arial, nullptr);
    EXPECT_EQ(arial->fontFile, "arial.ttf");
    EXPECT_EQ(arial->fontFamily, "Arial");
    ASSERT_NE(arial->extrasIfAny(), nullptr);
    EXPECT_FALSE(arial->extrasIfAny()->xdata.empty());
  }
  {
    DxfReadResult r = ReadDxf((kExamples / "image/images.dxf").string());
    ASSERT_TRUE(r.ok()) << r.error;
    auto images = EntitiesOf<Image>(*r.db);
    ASSERT_FALSE(images.empty());
    const ImageDef* def = r.db->objectAs<ImageDef>(images.front()->imageDef);
    ASSERT_NE(def, nullptr);
    EXPECT_FALSE(def->fileName.empty());
    EXPECT_GT(def->imageSize.x, 0);
    auto layouts = r.db->layoutsInTabOrder();
    ASSERT_GE(layouts.size(), 2u);
    EXPECT_EQ(layouts[0]->name, "Model");
    EXPECT_EQ(layouts[1]->name, "Layout1");
    for (const Layout* l : layouts) {
      const BlockRecord* block = r.db->blockOf(*l);
      ASSERT_NE(block, nullptr) << l->name;
      EXPECT_EQ(block->layout, l->id);
      EXPECT_NE(l->owner, block->id);  // the first 330 is the owner dictionary, not the block
    }
    EXPECT_EQ(r.db->blockOf(*layouts[0]), r.db->modelSpace());
  }
}

// ---- text encodings --------------------------------------------------------------------------

constexpr std::string_view kChineseR2000 = R"(
  0 SECTION | 2 HEADER
  9 $ACADVER | 1 AC1015
  @CODEPAGE@
  0 ENDSEC
  0 SECTION | 2 TABLES
  0 TABLE | 2 LAYER | 70 1
  0 LAYER | 5 10 | 100 AcDbSymbolTableRecord | 100 AcDbLayerTableRecord | 2 图层一 | 70 0 | 62 -3
  0 ENDTAB
  0 ENDSEC
  0 SECTION | 2 ENTITIES
  0 TEXT | 5 20 | 8 图层一 | 10 0 | 20 0 | 40 2.5 | 1 中文文字
  0 ENDSEC
  0 EOF
)";

std::string WithCodePage(std::string_view codePageLines) {
  std::string s(kChineseR2000);
  s.replace(s.find("@CODEPAGE@"), 10, codePageLines);
  return s;
}

TEST(DxfReader, CodePagesAndEscapes) {
  // GBK bytes, with and without $DWGCODEPAGE (a missing one means GBK).
  for (std::string_view page : {"9 $DWGCODEPAGE\n3 ANSI_936", ""}) {
    auto gbk = Utf8ToCodePage(Dxf(WithCodePage(page)), "ANSI_936");
    ASSERT_TRUE(gbk.has_value());
    DxfReadResult r = ReadDxfFromBytes(*gbk, "gbk.dxf");
    ASSERT_TRUE(r.ok()) << r.error;
    const Layer* layer = r.db->findLayer("图层一");
    ASSERT_NE(layer, nullptr) << page;
    EXPECT_FALSE(layer->on);
    EXPECT_EQ(layer->colorIndex, 3);
    auto texts = EntitiesOf<Text>(*r.db);
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0]->text, "中文文字");
    EXPECT_EQ(texts[0]->layer, layer->id);
    EXPECT_TRUE(r.warnings.empty()) << r.warnings.front();
  }

  // From R2007 on the file is UTF-8 whatever $DWGCODEPAGE says.
  std::string utf8 = WithCodePage("9 $DWGCODEPAGE\n3 ANSI_1252");
  utf8.replace(utf8.find("AC1015"), 6, "AC1032");
  DxfReadResult r2018 = ReadSnippet(utf8);
  ASSERT_TRUE(r2018.ok()) << r2018.error;
  ASSERT_NE(r2018.db->findLayer("图层一"), nullptr);
  EXPECT_EQ(EntitiesOf<Text>(*r2018.db).at(0)->text, "中文文字");

  // \U+ escapes of an R2000 file, in names and text.
  std::string escaped = WithCodePage("9 $DWGCODEPAGE\n3 ANSI_1252");
  for (std::size_t at; (at = escaped.find("图层一")) != std::string::npos;)
    escaped.replace(at, std::string("图层一").size(), "\\U+56FE\\U+5C42\\U+4E00");
  escaped.replace(escaped.find("中文文字"), std::string("中文文字").size(), "A\\U+4E2D\\U+6587 \\P");
  DxfReadResult esc = ReadSnippet(escaped);
  ASSERT_TRUE(esc.ok()) << esc.error;
  const Layer* layer = esc.db->findLayer("图层一");
  ASSERT_NE(layer, nullptr);
  const Text* text = EntitiesOf<Text>(*esc.db).at(0);
  EXPECT_EQ(text->text, "A中文 \\P");  // formatting codes stay
  EXPECT_EQ(text->layer, layer->id);
  EXPECT_TRUE(esc.warnings.empty()) << esc.warnings.front();
}

// ---- sections --------------------------------------------------------------------------------

TEST(DxfReader, HeaderClassesAndTables) {
  DxfReadResult r = ReadSnippet(R"(
    999 written by a test
    0 SECTION | 2 HEADER
    9 $ACADVER | 1 AC1015
    9 $DWGCODEPAGE | 3 ANSI_1252
    9 $INSBASE | 10 1.5 | 20 2.5 | 30 0
    9 $HANDSEED | 5 2000
    9 $LTSCALE | 40 2
    0 ENDSEC
    0 SECTION | 2 CLASSES
    0 CLASS | 1 IMAGEDEF | 2 AcDbRasterImageDef | 3 ISM | 90 0 | 91 2 | 280 0 | 281 0
    0 ENDSEC
    0 SECTION | 2 TABLES
    0 TABLE | 2 LAYER | 5 2 | 102 {ACAD_XDICTIONARY | 360 300 | 102 } | 330 0 | 100 AcDbSymbolTable | 70 2
    0 LAYER | 5 10 | 330 2 | 100 AcDbSymbolTableRecord | 100 AcDbLayerTableRecord | 2 Walls | 70 4 | 62 5
      420 16711680 | 6 DASHED | 290 0 | 370 50
    0 LAYER | 5 11 | 330 2 | 2 WALLS | 70 0 | 62 1
    0 ENDTAB
    0 TABLE | 2 LTYPE | 5 5 | 70 1
    0 LTYPE | 5 14 | 330 5 | 100 AcDbSymbolTableRecord | 100 AcDbLinetypeTableRecord | 2 DASHED | 70 0
      3 Dashed __ __ | 72 65 | 73 2 | 40 0.75 | 49 0.5 | 74 0 | 49 -0.25 | 74 0
    0 ENDTAB
    0 TABLE | 2 STYLE | 5 3 | 70 1
    0 STYLE | 5 15 | 2 Note | 70 0 | 40 0 | 41 0.8 | 50 15 | 71 0 | 42 2.5 | 3 simsun.ttc | 4 | 1001 ACAD
      1000 SimSun | 1071 0
    0 ENDTAB
    0 TABLE | 2 DIMSTYLE | 5 A | 330 0 | 100 AcDbSymbolTable | 70 1 | 100 AcDbDimStyleTable | 71 1 | 340 27
    0 DIMSTYLE | 105 27 | 330 A | 100 AcDbSymbolTableRecord | 100 AcDbDimStyleTableRecord | 2 Standard | 70 0 | 41 2.5
      340 15
    0 ENDTAB
    0 TABLE | 2 BLOCK_RECORD | 5 1 | 70 1
    0 BLOCK_RECORD | 5 1F | 330 1 | 100 AcDbSymbolTableRecord | 100 AcDbBlockTableRecord | 2 *Model_Space | 340 22
      70 4 | 280 1 | 281 0
    0 ENDTAB
    0 ENDSEC
    0 EOF
  )");
  ASSERT_TRUE(r.ok()) << r.error;
  const Database& db = *r.db;

  EXPECT_EQ(db.header.getPoint("$INSBASE"), (Point3d{1.5, 2.5, 0}));
  EXPECT_EQ(db.header.getDouble("$LTSCALE"), 2.0);
  EXPECT_GE(db.header.getHandle("$HANDSEED").value, 0x2000u);
  ASSERT_EQ(db.classes.size(), 1u);
  EXPECT_EQ(db.classes[0].cppName, "AcDbRasterImageDef");
  EXPECT_EQ(db.classes[0].instanceCount, 2);

  // Duplicate names: the first record stays.
  const Layer* walls = db.findLayer("walls");
  ASSERT_NE(walls, nullptr);
  EXPECT_EQ(walls->id, ObjectId(0x10));
  EXPECT_EQ(walls->colorIndex, 5);
  EXPECT_TRUE(walls->isLocked());
  EXPECT_EQ(walls->trueColor, 0xFF0000);
  EXPECT_FALSE(walls->plottable);
  EXPECT_EQ(walls->lineweight, 50);
  EXPECT_EQ(walls->owner, ObjectId(2));
  EXPECT_EQ(std::count(r.warnings.begin(), r.warnings.end(), "LAYER 表中的 WALLS 重复，只保留第一个"), 1) << r.warnings.size();
  EXPECT_EQ(db.tableHeads.at("LAYER").id, ObjectId(2));
  ASSERT_NE(db.tableHeads.at("LAYER").extras, nullptr);
  EXPECT_EQ(db.tableHeads.at("LAYER").extras->extensionDictionary, ObjectId(0x300));

  // The layer's linetype comes from a later table.
  const Linetype* dashed = db.findLinetype("DASHED");
  ASSERT_NE(dashed, nullptr);
  EXPECT_EQ(walls->linetype, dashed->id);
  EXPECT_EQ(dashed->description, "Dashed __ __");
  ASSERT_EQ(dashed->dashes.size(), 2u);
  EXPECT_EQ(dashed->dashes[1].length, -0.25);
  EXPECT_EQ(dashed->patternLength, 0.75);

  const TextStyle* note = db.findTextStyle("NOTE");
  ASSERT_NE(note, nullptr);
  EXPECT_NEAR(note->oblique, 15 * kPi / 180, 1e-12);
  EXPECT_EQ(note->widthFactor, 0.8);
  EXPECT_EQ(note->fontFile, "simsun.ttc");
  EXPECT_EQ(note->fontFamily, "SimSun");

  // DIMSTYLE: handle 105, the head's own groups kept.
  const TableRecord* standard = db.findTableRecord("DIMSTYLE", "Standard");
  ASSERT_NE(standard, nullptr);
  EXPECT_EQ(standard->id, ObjectId(0x27));
  EXPECT_EQ(standard->groups, (Groups{Group{41, 2.5}, Group{340, ObjectId(0x15)}}));
  const Groups& headExtra = db.tableHeads.at("DIMSTYLE").extra;
  ASSERT_NE(FindGroup(headExtra, 340), nullptr);
  EXPECT_EQ(FindGroup(headExtra, 340)->asId(), ObjectId(0x27));

  const BlockRecord* model = db.modelSpace();
  ASSERT_NE(model, nullptr);
  EXPECT_EQ(model->id, ObjectId(0x1F));
  EXPECT_EQ(model->insertUnits, 4);
  EXPECT_FALSE(model->scalable);
}

TEST(DxfReader, BlocksEntitiesAndOwners) {
  DxfReadResult r = ReadSnippet(R"(
    0 SECTION | 2 HEADER
    9 $ACADVER | 1 AC1015
    0 ENDSEC
    0 SECTION | 2 TABLES
    0 TABLE | 2 BLOCK_RECORD | 70 3
    0 BLOCK_RECORD | 5 1F | 2 *Model_Space
    0 BLOCK_RECORD | 5 1B | 2 *Paper_Space
    0 BLOCK_RECORD | 5 30 | 2 Door
    0 ENDTAB
    0 ENDSEC
    0 SECTION | 2 BLOCKS
    0 BLOCK | 5 31 | 330 30 | 100 AcDbEntity | 8 0 | 100 AcDbBlockBegin | 2 Door | 70 2 | 10 1 | 20 2 | 30 0 | 3 Door
      1 | 4 A door
    0 INSERT | 5 32 | 8 Frames | 2 Frame | 10 0 | 20 0
    0 LINE | 5 33 | 330 999 | 8 0 | 10 0 | 20 0 | 11 1 | 21 1
    0 ENDBLK | 5 34 | 330 30 | 8 0
    0 BLOCK | 5 40 | 8 0 | 2 Frame | 70 0 | 10 0 | 20 0
    0 ENDBLK | 5 41
    0 BLOCK | 5 50 | 2 DOOR
    0 LINE | 5 51
    0 ENDBLK | 5 52
    0 ENDSEC
    0 SECTION | 2 ENTITIES
    0 LINE | 5 60 | 330 1B | 8 Frames | 10 0 | 20 0 | 11 1 | 21 0
    0 LINE | 5 61 | 8 Frames | 10 0 | 20 0 | 11 0 | 21 1
    0 INSERT | 5 62 | 330 1F | 8 0 | 2 Door | 10 5 | 20 5
    0 SEQEND | 5 63
    0 CIRCLE | 5 64 | 330 30 | 8 0 | 10 0 | 20 0 | 40 1
    0 ENDSEC
    0 EOF
  )");
  ASSERT_TRUE(r.ok()) << r.error;
  const Database& db = *r.db;
  const BlockRecord* door = db.findBlock("Door");
  ASSERT_NE(door, nullptr);
  EXPECT_EQ(door->id, ObjectId(0x30));
  EXPECT_EQ(door->beginId, ObjectId(0x31));
  EXPECT_EQ(door->endId, ObjectId(0x34));
  EXPECT_EQ(door->basePoint, (Point3d{1, 2, 0}));
  EXPECT_EQ(door->blockFlags, 2);
  EXPECT_EQ(door->description, "A door");
  // Block entities belong to their block whatever their 330 says; an entity of ENTITIES goes
  // where its 330 points; the redefinition "DOOR" is dropped.
  ASSERT_EQ(door->entities.size(), 3u);
  for (const auto& e : door->entities) EXPECT_EQ(e->owner, door->id);
  EXPECT_EQ(door->entities[2]->id, ObjectId(0x64));
  EXPECT_EQ(db.object(ObjectId(0x51)), nullptr);

  // The INSERT in Door uses Frame before its definition: no warning for that.
  const Insert* nested = As<Insert>(door->entities[0].get());
  ASSERT_NE(nested, nullptr);
  const BlockRecord* frame = db.findBlock("Frame");
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(nested->block, frame->id);
  EXPECT_EQ(frame->beginId, ObjectId(0x40));

  ASSERT_EQ(db.paperSpace()->entities.size(), 1u);
  EXPECT_EQ(db.paperSpace()->entities[0]->id, ObjectId(0x60));
  ASSERT_EQ(db.modelSpace()->entities.size(), 2u);
  EXPECT_EQ(db.modelSpace()->entities[0]->id, ObjectId(0x61));
  const Insert* insert = As<Insert>(db.modelSpace()->entities[1].get());
  ASSERT_NE(insert, nullptr);
  EXPECT_EQ(insert->block, door->id);

  // The missing layer is created once and reported once; the stray SEQEND and the block
  // redefinition are reported.
  const Layer* frames = db.findLayer("Frames");
  ASSERT_NE(frames, nullptr);
  EXPECT_EQ(nested->layer, frames->id);
  EXPECT_EQ(db.modelSpace()->entities[0]->layer, frames->id);
  std::vector<std::string> expected = {"图层 Frames 未定义，已创建", "第 193 行的 SEQEND 不属于任何实体，已忽略"};
  std::erase_if(r.warnings, [](const std::string& w) { return w.find("重复定义") != std::string::npos; });
  EXPECT_EQ(r.warnings, expected);
}

TEST(DxfReader, UndeclaredRecordsTakeHandlesFromTheSeed) {
  DxfReadResult r = ReadSnippet(R"(
    0 SECTION | 2 HEADER
    9 $ACADVER | 1 AC1015
    9 $HANDSEED | 5 100
    0 ENDSEC
    0 SECTION | 2 ENTITIES
    0 LINE | 5 20 | 8 Ghost | 10 0 | 20 0 | 11 1 | 21 1
    0 LINE | 5 21 | 8 GHOST | 10 0 | 20 0 | 11 1 | 21 1
    0 ENDSEC
    0 EOF
  )");
  ASSERT_TRUE(r.ok()) << r.error;
  const Database& db = *r.db;
  const Layer* ghost = db.findLayer("Ghost");
  ASSERT_NE(ghost, nullptr);
  EXPECT_GE(ghost->id.value, 0x100u);
  EXPECT_EQ(db.object(ghost->id), ghost);
  for (const auto& e : db.modelSpace()->entities) EXPECT_EQ(e->layer, ghost->id);
  EXPECT_EQ(db.object(ObjectId(0x21)), db.modelSpace()->entities.at(1).get());
  EXPECT_GT(db.header.getHandle("$HANDSEED"), ghost->id);
  EXPECT_EQ(r.warnings, std::vector<std::string>{"图层 Ghost 未定义，已创建"});
}

TEST(DxfReader, R12LayoutBlocksAndPaperSpace) {
  DxfReadResult r = ReadSnippet(R"(
    0 SECTION | 2 BLOCKS
    0 BLOCK | 8 0 | 2 $MODEL_SPACE | 70 0 | 10 0 | 20 0
    0 ENDBLK
    0 BLOCK | 8 0 | 2 $PAPER_SPACE | 70 0 | 10 0 | 20 0
    0 ENDBLK
    0 ENDSEC
    0 SECTION | 2 ENTITIES
    0 LINE | 8 0 | 67 1 | 10 0 | 20 0 | 11 1 | 21 1
    0 LINE | 8 0 | 10 0 | 20 0 | 11 1 | 21 1
    0 ENDSEC
    0 EOF
  )");
  ASSERT_TRUE(r.ok()) << r.error;
  const Database& db = *r.db;
  EXPECT_EQ(db.blocks.size(), 2u);
  ASSERT_NE(db.modelSpace(), nullptr);
  ASSERT_NE(db.paperSpace(), nullptr);
  EXPECT_EQ(CountEntities(db), 2u);
  for (const auto& b : db.blocks)
    for (const auto& e : b->entities) EXPECT_FALSE(e->id.isNull());
}

TEST(DxfReader, Objects) {
  DxfReadResult r = ReadSnippet(R"(
    0 SECTION | 2 HEADER
    9 $ACADVER | 1 AC1015
    0 ENDSEC
    0 SECTION | 2 OBJECTS
    0 DICTIONARY | 5 C | 330 0 | 100 AcDbDictionary | 281 1 | 3 ACAD_LAYOUT | 350 1A | 3 NO_VALUE | 3 MY_DATA | 350 E0
      3 WITH_DEFAULT | 350 E1
    0 DICTIONARY | 5 1A | 102 {ACAD_REACTORS | 330 C | 102 } | 330 C | 100 AcDbDictionary | 281 1 | 3 Model | 350 22
    0 XRECORD | 5 E0 | 330 C | 100 AcDbXrecord | 280 1 | 1 text | 40 1.5 | 70 7 | 330 C | 310 0A0B
    0 ACDBDICTIONARYWDFLT | 5 E1 | 330 C | 100 AcDbDictionary | 3 Normal | 350 E2 | 100 AcDbDictionaryWithDefault
      340 E2
    0 LAYOUT | 5 22 | 330 1A | 100 AcDbPlotSettings | 1 Setup | 2 DWG To PDF.pc3 | 4 ISO_A3_(420.00_x_297.00_MM)
      44 420 | 45 297 | 72 1 | 73 1 | 74 5 | 100 AcDbLayout | 1 Model | 70 1 | 71 0 | 10 0 | 20 0 | 11 420 | 21 297
      330 1F
    0 ACDBPLACEHOLDER | 5 E2 | 330 E1
    0 IMAGEDEF | 5 E3 | 330 C | 100 AcDbRasterImageDef | 90 0 | 1 photo.jpg | 10 640 | 20 480 | 11 1 | 21 1 | 280 1
      281 2
    0 ENDSEC
    0 EOF
  )");
  ASSERT_TRUE(r.ok()) << r.error;
  const Database& db = *r.db;
  EXPECT_EQ(db.rootDictionaryId, ObjectId(0xC));
  const Dictionary* root = db.rootDictionary();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->find("NO_VALUE"), ObjectId{});
  EXPECT_EQ(root->find("MY_DATA"), ObjectId(0xE0));

  const Xrecord* x = db.objectAs<Xrecord>(ObjectId(0xE0));
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(x->cloning, 1);
  EXPECT_EQ(x->data, (Groups{Group{1, std::string("text")}, Group{40, 1.5}, Group{70, std::int64_t{7}},
                             Group{330, ObjectId(0xC)}, Group{310, Bytes{0x0A, 0x0B}}}));

  const Dictionary* wd = db.objectAs<Dictionary>(ObjectId(0xE1));
  ASSERT_NE(wd, nullptr);
  EXPECT_TRUE(wd->withDefault);
  EXPECT_EQ(wd->defaultEntry, ObjectId(0xE2));

  const Layout* model = db.objectAs<Layout>(ObjectId(0x22));
  ASSERT_NE(model, nullptr);
  EXPECT_EQ(model->owner, ObjectId(0x1A));
  EXPECT_EQ(model->blockRecord, ObjectId(0x1F));
  EXPECT_EQ(model->plot.plotterName, "DWG To PDF.pc3");
  EXPECT_EQ(model->plot.paperWidth, 420);
  EXPECT_EQ(model->plot.rotation, 1);
  EXPECT_EQ(model->limitsMax, (Point2d{420, 297}));

  const auto* placeholder = db.objectAs<GenericObject>(ObjectId(0xE2));
  ASSERT_NE(placeholder, nullptr);
  EXPECT_EQ(placeholder->name, "ACDBPLACEHOLDER");
  EXPECT_EQ(placeholder->owner, ObjectId(0xE1));

  const ImageDef* image = db.objectAs<ImageDef>(ObjectId(0xE3));
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->fileName, "photo.jpg");
  EXPECT_EQ(image->imageSize, (Vector2d{640, 480}));
  EXPECT_EQ(image->resolutionUnits, 2);
}

// ---- damaged and foreign files ---------------------------------------------------------------

constexpr std::string_view kSmall = R"(
  0 SECTION | 2 ENTITIES
  0 LINE | 8 0 | 10 0 | 20 0 | 11 1 | 21 1
  0 ENDSEC
  0 EOF
)";

TEST(DxfReader, Errors) {
  const std::string missing = (fs::temp_directory_path() / "tv_dxf_reader_no_such_file.dxf").string();
  DxfReadResult r = ReadDxf(missing);
  EXPECT_FALSE(r.ok());
  EXPECT_EQ(r.error.rfind("无法读取图纸文件 " + missing + "：", 0), 0u) << r.error;

  const std::string dir = fs::temp_directory_path().string();
  r = ReadDxf(dir);
  EXPECT_EQ(r.error.rfind("无法读取图纸文件 " + dir + "：", 0), 0u) << r.error;
  EXPECT_NE(r.error.find("不是文件"), std::string::npos) << r.error;

  TempFile empty("");
  EXPECT_EQ(ReadDxf(empty.path()).error, "图纸文件 " + empty.path() + " 是空文件");

  TempFile text("Dear customer,\nthis is a letter.\n", "letter.txt");
  EXPECT_EQ(ReadDxf(text.path()).error, text.path() + " 不是 DXF 文件");
  EXPECT_EQ(ReadDxfFromBytes(Dxf("0 LINE\n8 0"), "x.dxf").error, "x.dxf 不是 DXF 文件");

  const std::string full = Dxf(kSmall);
  // Cut after the value of "8 0": 8 whole lines, inside ENTITIES.
  TempFile cut(full.substr(0, full.find("10\n")));
  EXPECT_EQ(ReadDxf(cut.path()).error, "图纸文件 " + cut.path() + " 不完整：第 8 行处在 ENTITIES 段中意外结束");
  EXPECT_EQ(ReadDxfFromBytes(full.substr(0, full.find("0\nENDSEC")), "cut.dxf").error,
            "图纸文件 cut.dxf 不完整：第 16 行处在 ENTITIES 段中意外结束");
  // Cut between a code and its value: the tokenizer names the line.
  r = ReadDxfFromBytes(full.substr(0, full.find("0\n", full.find("8\n"))), "half.dxf");
  EXPECT_EQ(r.error.rfind("图纸文件 half.dxf 无法读取：第 7 行", 0), 0u) << r.error;

  std::string badCode = full;
  badCode.replace(badCode.find("10\n"), 2, "1O");
  EXPECT_EQ(ReadDxfFromBytes(badCode, "bad.dxf").error, "图纸文件 bad.dxf 无法读取：第 9 行：组码无效：1O");

  const std::string unknownPage = Dxf("0 SECTION\n2 HEADER\n9 $ACADVER\n1 AC1015\n9 $DWGCODEPAGE\n3 ANSI_4711\n0 ENDSEC") + full;
  EXPECT_EQ(ReadDxfFromBytes(unknownPage, "cp.dxf").error, "图纸文件 cp.dxf 的代码页 ANSI_4711 无法识别");

  // No EOF but whole sections: read, with a warning; data after EOF is ignored.
  r = ReadDxfFromBytes(full.substr(0, full.find("0\nEOF")), "noeof.dxf");
  ASSERT_TRUE(r.ok()) << r.error;
  EXPECT_EQ(r.warnings, std::vector<std::string>{"图纸文件 noeof.dxf 缺少 EOF 结束标记"});
  r = ReadDxfFromBytes(full + "garbage \x01\x02 after the end\n", "trash.dxf");
  ASSERT_TRUE(r.ok()) << r.error;
  EXPECT_TRUE(r.warnings.empty());
  EXPECT_EQ(CountEntities(*r.db), 1u);
}

TEST(DxfReader, TruncatedAtEveryByteNeverCrashes) {
  const std::string full = Dxf(R"(
    0 SECTION | 2 HEADER
    9 $ACADVER | 1 AC1015
    9 $DWGCODEPAGE | 3 ANSI_936
    0 ENDSEC
    0 SECTION | 2 TABLES
    0 TABLE | 2 LAYER | 70 1
    0 LAYER | 5 10 | 2 A | 70 0 | 62 1 | 6 Continuous
    0 ENDTAB
    0 ENDSEC
    0 SECTION | 2 BLOCKS
    0 BLOCK | 5 20 | 8 0 | 2 B | 70 0 | 10 0 | 20 0
    0 CIRCLE | 5 21 | 8 A | 10 0 | 20 0 | 40 1
    0 ENDBLK | 5 22
    0 ENDSEC
    0 SECTION | 2 ENTITIES
    0 INSERT | 5 30 | 8 A | 66 1 | 2 B | 10 1 | 20 1
    0 ATTRIB | 5 31 | 8 A | 10 0 | 20 0 | 40 1 | 1 value | 2 TAG
    0 SEQEND | 5 32
    0 LWPOLYLINE | 5 33 | 8 A | 90 2 | 10 0 | 20 0 | 10 1 | 20 1
    0 ENDSEC
    0 SECTION | 2 OBJECTS
    0 DICTIONARY | 5 C | 3 X | 350 40
    0 XRECORD | 5 40 | 330 C | 100 AcDbXrecord | 1 data
    0 ENDSEC
    0 EOF
  )");
  DxfReadResult whole = ReadDxfFromBytes(full);
  ASSERT_TRUE(whole.ok()) << whole.error;
  EXPECT_TRUE(whole.warnings.empty()) << whole.warnings.front();
  for (std::size_t n = 0; n < full.size(); ++n) {
    DxfReadResult r = ReadDxfFromBytes(full.substr(0, n), "cut.dxf");
    EXPECT_NE(r.ok(), !r.error.empty()) << n;
    // A cut inside an entity never passes for a whole drawing.
    if (n > full.find("LWPOLYLINE") && n < full.find("ENDSEC", full.find("LWPOLYLINE"))) {
      EXPECT_FALSE(r.ok()) << n;
    }
  }
}

}  // namespace
}  // namespace tv::cad
