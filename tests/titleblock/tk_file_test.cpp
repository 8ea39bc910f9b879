// The tk file: what is written, what is read back, how older versions and damaged files read, and
// how an import merges into the library.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/text_files.h"
#include "settings/value_text.h"
#include "tk_test_support.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {
namespace {

namespace fs = std::filesystem;
using test_support::ReadFile;
using test_support::WriteFile;
using testing::DataFolderTest;
using testing::DialogEditor;

Extents3d Box(double x0, double y0, double x1, double y1) {
  Extents3d e;
  e.min = {x0, y0, 0};
  e.max = {x1, y1, 0};
  return e;
}

void ExpectArea(const Extents3d& actual, const Extents3d& expected) {
  EXPECT_DOUBLE_EQ(actual.min.x, expected.min.x);
  EXPECT_DOUBLE_EQ(actual.min.y, expected.min.y);
  EXPECT_DOUBLE_EQ(actual.max.x, expected.max.x);
  EXPECT_DOUBLE_EQ(actual.max.y, expected.max.y);
  EXPECT_EQ(actual.min.z, 0.0);
  EXPECT_EQ(actual.max.z, 0.0);
}

std::unique_ptr<TK_Customization> Definition(const std::string& name, std::int32_t length = 420) {
  auto d = std::make_unique<TK_Customization>();
  d->block_name = name;
  d->paper.length = length;
  return d;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t end = text.find('\n', at);
    lines.push_back(text.substr(at, end - at));
    if (end == std::string::npos) break;
    at = end + 1;
  }
  return lines;
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& l : lines) text += l + "\n";
  return text;
}

// ---- a file of any version, written here value by value as the format lays it out ----------------

void AddArea(std::vector<std::string>& l, double half) {
  for (double v : {-half, -half, half, half}) l.push_back(settings::FormatReal(v));
}

void AddRecord(std::vector<std::string>& l, std::int32_t version, const std::string& name) {
  for (const char* v : {"alias", name.c_str(), "A_B"}) l.push_back(v);
  for (const char* v : {"0.5", "2", "594", "420"}) l.push_back(v);
  for (int area = 0; area < 10; ++area) AddArea(l, 100 + area);
  l.push_back("3");  // serial_digits
  l.push_back("4");  // sort_priority
  if (version >= 20200629) AddArea(l, 7);
  if (version >= 20200726) l.push_back("1");
  if (version >= 20220607) AddArea(l, 9);
}

void AddTrailer(std::vector<std::string>& l, std::int32_t version) {
  for (const char* v : {"Style2", "a.shx", "b.shx", "250", "0.7", "0", "200", "0.9", "3", "TEXT", "5", "Dashed", "25"})
    l.push_back(v);
  for (const char* v : {"0", "800", "2", "100", "200", "2", "7", "8"}) l.push_back(v);
  for (const char* v : {"1", "P-", "5", "<><", "3", "1", "0", "1", "0", "0", "1"}) l.push_back(v);
  if (version > 20210124) {
    l.push_back("T_C");
    l.push_back("/");
  }
  if (version > 20210907) {
    l.push_back("4");
    l.push_back("77");
  }
}

std::string FileOfVersion(std::int32_t version, const std::vector<std::string>& names) {
  std::vector<std::string> l{std::to_string(version), std::to_string(names.size())};
  for (const auto& n : names) AddRecord(l, version, n);
  AddTrailer(l, version);
  return Joined(l);
}

class TkFileTest : public DataFolderTest {
 protected:
  void SetUp() override {
    DataFolderTest::SetUp();
    // Only what the library shows counts, not the start-up checks of the folders.
    editor_.boxes.clear();
  }

  TK_Library Load(const std::string& text) {
    WriteFile(file("in.tk"), text);
    TK_Library library;
    EXPECT_TRUE(LoadTkFileFrom(library, file("in.tk"), false));
    return library;
  }

  DialogEditor editor_;
};

// ---- writing and reading back ---------------------------------------------------------------------------

TEST_F(TkFileTest, EveryFieldSurvivesARoundTripExceptThePickCentreAndTheStandardFlag) {
  TK_Library out;
  auto d = Definition("TK A1");
  d->alias_name = "";
  d->name_rule = "A_B T";
  d->rotation = 1.5;
  d->scale = 2.5;
  d->paper = {841, 594, true};
  d->pick_centre = {10, 20, 0};
  // Every area its own box, (4k+1, 4k+2)-(4k+3, 4k+4).
  constexpr Extents3d TK_Customization::*kAreas[] = {
      &TK_Customization::frame_extents,  &TK_Customization::area_drawing_no, &TK_Customization::area_revision,
      &TK_Customization::area_title,     &TK_Customization::area_date,       &TK_Customization::area_info1,
      &TK_Customization::area_info2,     &TK_Customization::print_extents,   &TK_Customization::stamp_register,
      &TK_Customization::stamp_issue,    &TK_Customization::stamp_project,   &TK_Customization::stamp_completed};
  const auto areaBox = [](int k) { return Box(4 * k + 1, 4 * k + 2, 4 * k + 3, 4 * k + 4); };
  for (int k = 0; k < 12; ++k) (*d).*kAreas[k] = areaBox(k);
  d->serial_digits = 3;
  d->sort_priority = 8;
  d->is_dynamic = 1;
  out.definitions.push_back(std::move(d));
  out.definitions.push_back(Definition("TK-A3", 420));
  out.index_style.style_name = "My Style";
  out.index_style.layer = "";
  out.index_style.layer_color = 7;
  out.index_style.layer_linetype = "DASHED";
  out.index_style.layer_lineweight = 30;
  out.index_style.color = 0;
  out.index_draw_frame = 0;
  out.index_row_height = 750;
  out.index_col_widths = {1, 2, 3, 4};
  out.index_columns = {8, 7, 0, 2};
  out.InsertSerial = 1;
  out.SerialPrefix = "S 1";
  out.SerialStart = 7;
  out.SerialSuffix = "";
  out.SerialDigits = 4;
  out.CentreInArea = {1, 0, 1, 0, 0, 1};
  out.DefaultNameRule = "T_C";
  out.TitleSeparator = " ";
  out.PaperNameStyle = 6;
  out.reserved_int = 9;
  ASSERT_TRUE(SaveTkFileTo(out, file("lib.tk"), true));
  EXPECT_TRUE(editor_.boxes.empty());

  TK_Library in;
  ASSERT_TRUE(LoadTkFileFrom(in, file("lib.tk"), false));
  ASSERT_EQ(in.definitions.size(), 2u);
  const TK_Customization& r = *in.definitions[0];
  EXPECT_EQ(r.alias_name, "");
  EXPECT_EQ(r.block_name, "TK A1");
  EXPECT_EQ(r.name_rule, "A_B T");
  EXPECT_DOUBLE_EQ(r.rotation, 1.5);
  EXPECT_DOUBLE_EQ(r.scale, 2.5);
  EXPECT_EQ(r.paper, (paper::MyPaper{841, 594, false}));
  EXPECT_EQ(r.pick_centre, Point3d());
  for (int k = 0; k < 12; ++k) {
    SCOPED_TRACE(k);
    ExpectArea(r.*kAreas[k], areaBox(k));
  }
  EXPECT_EQ(r.serial_digits, 3);
  EXPECT_EQ(r.sort_priority, 8);
  EXPECT_EQ(r.is_dynamic, 1);
  EXPECT_EQ(in.definitions[1]->block_name, "TK-A3");

  EXPECT_EQ(in.index_style.style_name, "My Style");
  EXPECT_EQ(in.index_style.layer, "");
  EXPECT_EQ(in.index_style.layer_color, 7);
  EXPECT_EQ(in.index_style.layer_linetype, "DASHED");
  EXPECT_EQ(in.index_style.layer_lineweight, 30);
  EXPECT_EQ(in.index_style.color, 0);
  EXPECT_EQ(in.index_style.font_file, "Tarvex_EN.shx");
  EXPECT_DOUBLE_EQ(in.index_style.style_x_scale, 0.8);
  EXPECT_EQ(in.index_draw_frame, 0);
  EXPECT_DOUBLE_EQ(in.index_row_height, 750);
  EXPECT_EQ(in.index_col_widths, (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(in.index_columns, (std::vector<std::int32_t>{8, 7, 0, 2}));
  EXPECT_EQ(in.InsertSerial, 1);
  EXPECT_EQ(in.SerialPrefix, "S 1");
  EXPECT_EQ(in.SerialStart, 7);
  EXPECT_EQ(in.SerialSuffix, "");
  EXPECT_EQ(in.SerialDigits, 4);
  EXPECT_EQ(in.CentreInArea, (std::array<std::int32_t, 6>{1, 0, 1, 0, 0, 1}));
  EXPECT_EQ(in.DefaultNameRule, "T_C");
  EXPECT_EQ(in.TitleSeparator, " ");
  EXPECT_EQ(in.PaperNameStyle, 6);
  EXPECT_EQ(in.reserved_int, 9);
}

TEST_F(TkFileTest, FileIsOneValueALineInTheOrderOfTheFormat) {
  TK_Library out;
  auto d = Definition("A B");
  d->name_rule = "";
  d->alias_name = "x*?*y";
  d->rotation = 12345.678;
  d->scale = 1234567.0;
  d->frame_extents = Box(-0.123456789, 0, 2e-7, 3);
  out.definitions.push_back(std::move(d));
  ASSERT_TRUE(SaveTkFileTo(out, file("lib.tk"), false));
  const std::string text = ReadFile(file("lib.tk"));
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(text.back(), '\n');
  EXPECT_EQ(text.find('\r'), std::string::npos);
  const std::vector<std::string> l = Lines(text);
  // version, count, then the record: alias, name, rule, rotation, scale, length, width, frame …
  ASSERT_GE(l.size(), 60u);
  EXPECT_EQ(l[0], "20240329");
  EXPECT_EQ(l[1], "1");
  EXPECT_EQ(l[2], "x*?*y");
  EXPECT_EQ(l[3], "A*?*B");
  EXPECT_EQ(l[4], "<><");
  EXPECT_EQ(l[5], "12345.7");
  EXPECT_EQ(l[6], "1.23457e+06");
  EXPECT_EQ(l[7], "420");
  EXPECT_EQ(l[8], "210");
  EXPECT_EQ(l[9], "-0.123457");
  EXPECT_EQ(l[11], "2e-07");
  // 58 values a record: the last three fields are print_extents, is_dynamic, stamp_completed.
  EXPECT_EQ(l[2 + 47], "2");   // serial_digits
  EXPECT_EQ(l[2 + 48], "1");   // sort_priority
  EXPECT_EQ(l[2 + 53], "0");   // is_dynamic
  EXPECT_EQ(l[2 + 58], "Standard");
  // 13 style values, then the index and the numbering, the two rules, style and reserved value.
  EXPECT_EQ(l.size(), 2u + 58 + 13 + 2 + 1 + 3 + 1 + 3 + 5 + 6 + 2 + 2);
  EXPECT_EQ(l[l.size() - 4], "A_B_T_C");
  EXPECT_EQ(l[l.size() - 3], "+");

  // What a stream of six significant digits keeps, and the blank mark read as a blank.
  TK_Library in;
  ASSERT_TRUE(LoadTkFileFrom(in, file("lib.tk"), false));
  const TK_Customization& r = *in.definitions.front();
  EXPECT_EQ(r.alias_name, "x y");
  EXPECT_EQ(r.block_name, "A B");
  EXPECT_EQ(r.name_rule, "");
  EXPECT_DOUBLE_EQ(r.rotation, 12345.7);
  EXPECT_DOUBLE_EQ(r.scale, 1234570.0);
  EXPECT_DOUBLE_EQ(r.frame_extents.min.x, -0.123457);
}

TEST_F(TkFileTest, ChineseNamesAreWrittenInTheAnsiCodePageAndReadBack) {
  TK_Library out;
  out.definitions.push_back(Definition("图框A1"));
  out.SerialPrefix = "标题 一";
  ASSERT_TRUE(SaveTkFileTo(out, file("lib.tk"), false));
  const std::string bytes = ReadFile(file("lib.tk"));
  EXPECT_NE(bytes.find("\xCD\xBC\xBF\xF2" "A1\n"), std::string::npos);
  EXPECT_NE(bytes.find("\xB1\xEA\xCC\xE2*?*"), std::string::npos);
  EXPECT_EQ(bytes.find("图框"), std::string::npos);

  TK_Library in;
  ASSERT_TRUE(LoadTkFileFrom(in, file("lib.tk"), false));
  ASSERT_EQ(in.definitions.size(), 1u);
  EXPECT_EQ(in.definitions.front()->block_name, "图框A1");
  EXPECT_EQ(in.SerialPrefix, "标题 一");
}

// ---- older versions ----------------------------------------------------------------------------------------

TEST_F(TkFileTest, AFileOfBeforeThePrintExtentsLeavesTheNewerFieldsAtTheirDefaults) {
  const TK_Library library = Load(FileOfVersion(20200628, {"F1", "F2"}));
  ASSERT_EQ(library.definitions.size(), 2u);
  for (const auto& d : library.definitions) {
    EXPECT_FALSE(IsAreaSet(d->print_extents));
    EXPECT_FALSE(IsAreaSet(d->stamp_completed));
    EXPECT_EQ(d->is_dynamic, 0);
    // The second record starts where the first one ended.
    ExpectArea(d->stamp_project, Box(-109, -109, 109, 109));
    EXPECT_EQ(d->sort_priority, 4);
  }
  EXPECT_EQ(library.definitions[1]->block_name, "F2");
  EXPECT_EQ(library.index_style.style_name, "Style2");
  EXPECT_EQ(library.SerialPrefix, "P-");
}

TEST_F(TkFileTest, EachRecordFieldJoinsAtItsOwnVersion) {
  {
    const TK_Library library = Load(FileOfVersion(20200629, {"F1", "F2"}));
    ASSERT_EQ(library.definitions.size(), 2u);
    ExpectArea(library.definitions[1]->print_extents, Box(-7, -7, 7, 7));
    EXPECT_EQ(library.definitions[1]->is_dynamic, 0);
  }
  {
    const TK_Library library = Load(FileOfVersion(20220606, {"F1", "F2"}));
    ASSERT_EQ(library.definitions.size(), 2u);
    EXPECT_EQ(library.definitions[1]->is_dynamic, 1);
    EXPECT_FALSE(IsAreaSet(library.definitions[1]->stamp_completed));
  }
  {
    const TK_Library library = Load(FileOfVersion(20220607, {"F1", "F2"}));
    ASSERT_EQ(library.definitions.size(), 2u);
    ExpectArea(library.definitions[1]->stamp_completed, Box(-9, -9, 9, 9));
    EXPECT_EQ(library.SerialDigits, 3);
  }
}

TEST_F(TkFileTest, TheNamingDefaultsAndThePaperNameStyleFollowTheFilesVersion) {
  auto loadInto = [&](std::int32_t version) {
    WriteFile(file("in.tk"), FileOfVersion(version, {"F"}));
    TK_Library library;
    library.DefaultNameRule = "OLD";
    library.TitleSeparator = "~";
    library.PaperNameStyle = 2;
    library.reserved_int = 5;
    EXPECT_TRUE(LoadTkFileFrom(library, file("in.tk"), false));
    return library;
  };
  TK_Library l = loadInto(20210124);
  EXPECT_EQ(l.DefaultNameRule, "OLD");
  EXPECT_EQ(l.TitleSeparator, "~");
  EXPECT_EQ(l.CentreInArea, (std::array<std::int32_t, 6>{1, 0, 1, 0, 0, 1}));

  l = loadInto(20210125);
  EXPECT_EQ(l.DefaultNameRule, "T_C");
  EXPECT_EQ(l.TitleSeparator, "/");
  EXPECT_EQ(l.PaperNameStyle, 2);
  EXPECT_EQ(l.reserved_int, 5);

  l = loadInto(20210907);
  EXPECT_EQ(l.DefaultNameRule, "T_C");
  EXPECT_EQ(l.PaperNameStyle, 2);

  l = loadInto(20210908);
  EXPECT_EQ(l.PaperNameStyle, 4);
  EXPECT_EQ(l.reserved_int, 77);
}

// ---- the index style -----------------------------------------------------------------------------------------

TEST_F(TkFileTest, ALayerColourOfZeroOrBelowBringsBackTheLayerDefaults) {
  for (const char* colour : {"0", "-2"}) {
    std::vector<std::string> l = Lines(FileOfVersion(20240329, {}));
    // version, count, then the style: its eleventh value is the layer colour.
    ASSERT_EQ(l[2 + 10], "5");
    l[2 + 10] = colour;
    const TK_Library library = Load(Joined(l));
    EXPECT_EQ(library.index_style.layer_color, 1) << colour;
    EXPECT_EQ(library.index_style.layer_linetype, "Continuous");
    EXPECT_EQ(library.index_style.layer_lineweight, -3);
    EXPECT_EQ(library.index_style.layer, "TEXT");
  }
  const TK_Library kept = Load(FileOfVersion(20240329, {}));
  EXPECT_EQ(kept.index_style.layer_color, 5);
  EXPECT_EQ(kept.index_style.layer_linetype, "Dashed");
  EXPECT_EQ(kept.index_style.layer_lineweight, 25);
  EXPECT_EQ(kept.index_col_widths, (std::vector<double>{100, 200}));
  EXPECT_EQ(kept.index_columns, (std::vector<std::int32_t>{7, 8}));
}

// ---- names -------------------------------------------------------------------------------------------

TEST_F(TkFileTest, BlockNamesCompareWithCaseAndTheFirstOfEqualNamesWins) {
  std::vector<std::string> l = Lines(FileOfVersion(20240329, {"Frame", "FRAME", "Frame"}));
  // The third record's paper length differs, to show which one stayed.
  const std::size_t third = 2 + 58 * 2;
  ASSERT_EQ(l[third + 1], "Frame");
  l[third + 5] = "1189";
  const TK_Library library = Load(Joined(l));
  ASSERT_EQ(library.definitions.size(), 2u);
  EXPECT_EQ(library.definitions[0]->block_name, "Frame");
  EXPECT_EQ(library.definitions[0]->paper.length, 594);
  EXPECT_EQ(library.definitions[1]->block_name, "FRAME");
  EXPECT_EQ(FindDefinition(library, "FRAME"), library.definitions[1].get());
  EXPECT_EQ(FindDefinition(library, "frame"), nullptr);
}

// ---- importing ---------------------------------------------------------------------------------------------

class TkImportTest : public TkFileTest {
 protected:
  void SetUp() override {
    TkFileTest::SetUp();
    current_.definitions.push_back(Definition("A", 111));
    current_.definitions.push_back(Definition("B", 222));
    current_.SerialPrefix = "MINE";
    current_.index_style.style_name = "Mine";
    current_.DefaultNameRule = "MINE";
    TK_Library imported;
    imported.definitions.push_back(Definition("A", 333));
    imported.definitions.push_back(Definition("C", 444));
    imported.SerialPrefix = "THEIRS";
    imported.index_style.style_name = "Theirs";
    imported.DefaultNameRule = "THEIRS";
    imported.index_col_widths = {5};
    imported.index_columns = {2};
    ASSERT_TRUE(SaveTkFileTo(imported, file("import.tk"), false));
    editor_.openPath = file("import.tk");
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& d : current_.definitions) names.push_back(d->block_name + ":" + std::to_string(d->paper.length));
    return names;
  }

  TK_Library current_;
};

TEST_F(TkImportTest, KeepingDropsKnownNamesButTakesTheIndexAndNamingOfTheFile) {
  editor_.answer = host::MessageAnswer::Yes;
  ASSERT_TRUE(LoadTkFile(current_, true));
  ASSERT_EQ(editor_.dialogs, (std::vector<std::string>{"读取图框信息配置文件...|tk"}));
  ASSERT_EQ(editor_.boxes.size(), 1u);
  EXPECT_EQ(editor_.boxes[0].text, "原图框信息是否保留 ？");
  EXPECT_EQ(editor_.boxes[0].caption, "Tarvex打印");
  EXPECT_EQ(editor_.boxes[0].buttons, host::MessageButtons::YesNo);
  EXPECT_EQ(Names(), (std::vector<std::string>{"A:111", "B:222", "C:444"}));
  EXPECT_EQ(current_.SerialPrefix, "THEIRS");
  EXPECT_EQ(current_.index_style.style_name, "Theirs");
  EXPECT_EQ(current_.DefaultNameRule, "THEIRS");
  EXPECT_EQ(current_.index_col_widths, (std::vector<double>{5}));
  EXPECT_EQ(current_.index_columns, (std::vector<std::int32_t>{2}));
}

TEST_F(TkImportTest, AnEmptyLibraryIsNotAskedAndACancelledDialogOrQuestionChangesNothing) {
  TK_Library empty;
  ASSERT_TRUE(LoadTkFile(empty, true));
  EXPECT_TRUE(editor_.boxes.empty());
  EXPECT_EQ(empty.definitions.size(), 2u);

  editor_.answer = host::MessageAnswer::Cancel;
  EXPECT_FALSE(LoadTkFile(current_, true));
  EXPECT_EQ(Names(), (std::vector<std::string>{"A:111", "B:222"}));
  EXPECT_EQ(current_.SerialPrefix, "MINE");

  editor_.boxes.clear();
  editor_.openPath.reset();
  EXPECT_FALSE(LoadTkFile(current_, true));
  EXPECT_TRUE(editor_.boxes.empty());
  EXPECT_EQ(Names(), (std::vector<std::string>{"A:111", "B:222"}));
}

// ---- the default file ----------------------------------------------------------------------------------

TEST_F(TkFileTest, TheDefaultFileLivesInTheDataFolderAndAMissingOneChangesNothing) {
  EXPECT_EQ(DefaultTkPath(), (dir_.path() / "data" / "Tarvex" / "BPlot_TK.tk").string());
  TK_Library library;
  library.definitions.push_back(Definition("A"));
  EXPECT_FALSE(LoadTkFile(library, false));
  EXPECT_EQ(library.definitions.size(), 1u);
  EXPECT_EQ(library.index_col_widths.size(), 3u);
  EXPECT_TRUE(editor_.boxes.empty());

  ASSERT_TRUE(SaveTkFile(library, true, false));
  EXPECT_TRUE(fs::exists(DefaultTkPath()));
  // Loading without asking replaces what the library held.
  library.definitions.push_back(Definition("B"));
  ASSERT_TRUE(LoadTkFile(library, false));
  ASSERT_EQ(library.definitions.size(), 1u);
  EXPECT_EQ(library.definitions.front()->block_name, "A");
  EXPECT_TRUE(editor_.boxes.empty());
}

TEST_F(TkFileTest, SavingAsAsksForAPathAndACancelWritesNothing) {
  TK_Library library;
  EXPECT_FALSE(SaveTkFile(library, true, true));
  EXPECT_EQ(editor_.dialogs, (std::vector<std::string>{"保存图框信息配置文件为...|图框信息配置文件.tk|tk"}));
  EXPECT_FALSE(fs::exists(DefaultTkPath()));
  EXPECT_TRUE(editor_.boxes.empty());

  editor_.savePath = file("chosen.tk");
  EXPECT_TRUE(SaveTkFile(library, true, true));
  EXPECT_TRUE(fs::exists(file("chosen.tk")));
  EXPECT_FALSE(fs::exists(DefaultTkPath()));
}

TEST_F(TkFileTest, SavingTheNumberingAloneKeepsTheRestOfTheFile) {
  TK_Library onDisk;
  onDisk.definitions.push_back(Definition("DISK"));
  onDisk.DefaultNameRule = "DISK_RULE";
  ASSERT_TRUE(SaveTkFile(onDisk, false, false));

  TK_Library library;
  library.definitions.push_back(Definition("UNSAVED"));
  library.DefaultNameRule = "UNSAVED_RULE";
  library.InsertSerial = 1;
  library.SerialPrefix = "NEW-";
  library.SerialStart = 9;
  library.SerialSuffix = "#";
  library.SerialDigits = 5;
  ASSERT_TRUE(SaveTkNamingOnly(library));

  TK_Library back;
  ASSERT_TRUE(LoadTkFileFrom(back, DefaultTkPath(), false));
  ASSERT_EQ(back.definitions.size(), 1u);
  EXPECT_EQ(back.definitions.front()->block_name, "DISK");
  EXPECT_EQ(back.DefaultNameRule, "DISK_RULE");
  EXPECT_EQ(back.InsertSerial, 1);
  EXPECT_EQ(back.SerialPrefix, "NEW-");
  EXPECT_EQ(back.SerialStart, 9);
  EXPECT_EQ(back.SerialSuffix, "#");
  EXPECT_EQ(back.SerialDigits, 5);
  // The library in memory is the file's now, too.
  EXPECT_EQ(library.definitions.front()->block_name, "DISK");
}

// ---- failures ----------------------------------------------------------------------------------------------

TEST_F(TkFileTest, AFileThatCannotBeReplacedIsKeptAndTheFailureIsShown) {
  // A name so long that no temporary file fits beside it: the write fails even for root.
  const std::string path = file(std::string(252, 'k'));
  WriteFile(path, "old contents\n");
  TK_Library library;
  library.definitions.push_back(Definition("A"));
  EXPECT_FALSE(SaveTkFileTo(library, path, true));
  EXPECT_EQ(ReadFile(path), "old contents\n");
  ASSERT_EQ(editor_.boxes.size(), 1u);
  EXPECT_EQ(editor_.boxes[0].text,
            "文件 < " + path +
                " > 写入操作有误!\n\n\n可能原因如下：\n\n软件未获得文件的修改权限，造成无法对该文件进行修改。\n\n\n"
                "解决方法一：将软件重新安装至非系统目录下；\n\n解决方法二：请用管理员权限运行AutoCAD。");
  EXPECT_EQ(editor_.boxes[0].caption, "Tarvex打印");
  EXPECT_EQ(editor_.boxes[0].buttons, host::MessageButtons::Ok);

  // Without reporting the result alone tells.
  editor_.boxes.clear();
  EXPECT_FALSE(SaveTkFileTo(library, file("no/such/folder/x.tk"), false));
  EXPECT_TRUE(editor_.boxes.empty());
  EXPECT_FALSE(SaveTkFileTo(library, file("no/such/folder/x.tk"), true));
  EXPECT_EQ(editor_.boxes.size(), 1u);
}

// A save is judged by what the file holds afterwards: saves close together are all saves.
TEST_F(TkFileTest, SavesInTheSameInstantReportNothing) {
  const std::string path = file("lib.tk");
  WriteFile(path, "old\n");
  TK_Library library;
  for (int i = 0; i < 3; ++i) {
    library.SerialStart = i;
    EXPECT_TRUE(SaveTkFileTo(library, path, true));
    TK_Library back;
    ASSERT_TRUE(LoadTkFileFrom(back, path, false));
    EXPECT_EQ(back.SerialStart, i);
  }
  EXPECT_TRUE(editor_.boxes.empty());
}

// An update of the user's library starts from the file as another run may have left it since
// this one read it, and the change is made to that.
TEST_F(TkFileTest, AnUpdateStartsFromTheFileAsItStandsNow) {
  TK_Library first;
  first.definitions.push_back(Definition("A"));
  ASSERT_TRUE(SaveTkFile(first, false, false));
  TK_Library library;
  ASSERT_TRUE(LoadTkFile(library, false));
  TK_Library other;
  other.definitions.push_back(Definition("A"));
  other.definitions.push_back(Definition("B"));
  ASSERT_TRUE(SaveTkFileTo(other, DefaultTkPath(), false));

  ASSERT_TRUE(UpdateTkFile(
      library,
      [](TK_Library& current) {
        current.definitions.push_back(Definition("C"));
        return true;
      },
      true));
  TK_Library back;
  ASSERT_TRUE(LoadTkFileFrom(back, DefaultTkPath(), false));
  ASSERT_EQ(back.definitions.size(), 3u);
  EXPECT_EQ(back.definitions[1]->block_name, "B");
  EXPECT_EQ(back.definitions[2]->block_name, "C");
  EXPECT_EQ(library.definitions.size(), 3u);

  // A change that declines saves nothing.
  EXPECT_FALSE(UpdateTkFile(library, [](TK_Library&) { return false; }, true));
  EXPECT_TRUE(editor_.boxes.empty());
}

TEST_F(TkFileTest, ATruncatedFileReadsZerosAndEmptyStringsWithoutACheck) {
  TK_Library out;
  out.definitions.push_back(Definition("FIRST"));
  out.definitions.push_back(Definition("SECOND"));
  ASSERT_TRUE(SaveTkFileTo(out, file("full.tk"), false));
  std::vector<std::string> l = Lines(ReadFile(file("full.tk")));
  // Cut the second record after its block name and rule.
  l.resize(2 + 58 + 3);
  const TK_Library library = Load(Joined(l));
  ASSERT_EQ(library.definitions.size(), 2u);
  const TK_Customization& second = *library.definitions[1];
  EXPECT_EQ(second.block_name, "SECOND");
  EXPECT_EQ(second.rotation, 0.0);
  EXPECT_EQ(second.scale, 0.0);
  EXPECT_EQ(second.paper.length, 0);
  EXPECT_EQ(second.sort_priority, 0);
  EXPECT_FALSE(IsAreaSet(second.frame_extents));
  EXPECT_EQ(library.index_style.style_name, "");
  EXPECT_EQ(library.index_style.layer_color, 1);  // 0 read, then the layer defaults
  EXPECT_EQ(library.SerialSuffix, "");
  EXPECT_TRUE(library.index_col_widths.empty());
  EXPECT_TRUE(library.index_columns.empty());

  const std::optional<TkFileFacts> facts = InspectTkFile(file("in.tk"));
  ASSERT_TRUE(facts.has_value());
  EXPECT_FALSE(facts->complete);
  EXPECT_EQ(facts->version, 20240329);
  const std::optional<TkFileFacts> whole = InspectTkFile(file("full.tk"));
  ASSERT_TRUE(whole.has_value());
  EXPECT_TRUE(whole->complete);
  EXPECT_EQ(whole->definitionCount, 2);
  EXPECT_FALSE(InspectTkFile(file("missing.tk")).has_value());
}

TEST_F(TkFileTest, CountsTheFileDoesNotBackCostNothing) {
  // A count of two thousand million and nothing behind it: one empty record, read at once.
  const TK_Library library = Load("20240329\n2000000000\n");
  ASSERT_EQ(library.definitions.size(), 1u);
  EXPECT_EQ(library.definitions.front()->block_name, "");

  std::vector<std::string> l = Lines(FileOfVersion(20240329, {}));
  // version, count, 13 style values, draw frame, row height, then the number of widths.
  ASSERT_EQ(l[2 + 15], "2");
  l[2 + 15] = "2000000000";
  const TK_Library widths = Load(Joined(l));
  EXPECT_LT(widths.index_col_widths.size(), 100u);

  const TK_Library negative = Load("20240329\n-5\n");
  EXPECT_TRUE(negative.definitions.empty());
}

TEST_F(TkFileTest, ClearingEmptiesTheDefinitionsAndTheIndexColumns) {
  TK_Library library;
  library.definitions.push_back(Definition("A"));
  library.definitions.push_back(Definition("B"));
  ClearLibrary(library);
  EXPECT_TRUE(library.definitions.empty());
  EXPECT_TRUE(library.index_col_widths.empty());
  EXPECT_TRUE(library.index_columns.empty());
  EXPECT_EQ(library.DefaultNameRule, "A_B_T_C");
}

// ---- the model's defaults -----------------------------------------------------------------------------

TEST(TkModel, AnAreaIsSetWhenWiderAndHigherThanOneHundredThousandth) {
  EXPECT_FALSE(IsAreaSet(Box(0, 0, 0.00001, 1)));
  EXPECT_FALSE(IsAreaSet(Box(0, 0, 1, 0.00001)));
  EXPECT_TRUE(IsAreaSet(Box(0, 0, 0.00002, 0.00002)));
  EXPECT_FALSE(IsAreaSet(Box(5, 5, 1, 1)));  // turned inside out
  EXPECT_FALSE(IsAreaSet(Extents3d()));      // the empty box of the geometry
}

}  // namespace
}  // namespace tv::titleblock
