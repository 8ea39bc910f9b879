// File names: the serial, the cleaning that keeps every name inside its folder, and the names of
// the generic batch built from prefix, serial, suffix and the sheet's paper.
#include "titleblock/file_naming.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/null_editor.h"
#include "../support/fake_editor.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {
namespace {

// ---- serial numbers ------------------------------------------------------------------------------------

TEST(SerialText, PadsToTheDigitsAndNeverCuts) {
  EXPECT_EQ(SerialText(5, 3), "005");
  EXPECT_EQ(SerialText(42, 2), "42");
  EXPECT_EQ(SerialText(123, 2), "123");
  EXPECT_EQ(SerialText(0, 0), "0");
  EXPECT_EQ(SerialText(7, 1), "7");
  EXPECT_EQ(SerialText(-3, 3), "0-3");  // zeros go in front of whatever the number reads
}

// ---- cleaning ---------------------------------------------------------------------------------------------

// What Windows forbids goes, a slash keeps its look, control characters go (line breaks only when
// strict), nothing leaves its folder and device names get a mark in front.
TEST(CleanFileName, NamesTheFileSystemTakesInsideTheirFolder) {
  const std::string controls = std::string("a\tb\x01") + "c\nd\re" + std::string(1, '\0') + "f\x1f" + "g\x7f";
  struct Case {
    std::string text;
    bool strict;
    std::string clean;
  };
  for (const Case& c : std::vector<Case>{
           {"a<b>c\\d|e", true, "abcde"}, {"a*b\"c?d:e", true, "abcde"}, {"1/2", true, "1\u22152"},
           {"建施03_一层平面图[++}二层", true, "建施03_一层平面图[++}二层"}, {"", true, ""},
           {controls, true, "abcdefg"}, {controls, false, "abc\nd\refg"},
           {"../x", true, "..\u2215x"}, {"..\\..\\x", true, "....x"}, {"..", true, "_.."}, {".", true, "_."},
           {"./", true, ".\u2215"}, {"/etc/passwd", true, "\u2215etc\u2215passwd"}, {"a.b", true, "a.b"},
           {"CON", true, "_CON"}, {"con", true, "_con"}, {"Nul.txt", true, "_Nul.txt"}, {"CON .pdf", true, "_CON .pdf"},
           {"COM1", true, "_COM1"}, {"lpt9", true, "_lpt9"}, {"AUX", true, "_AUX"}, {"PRN", true, "_PRN"},
           {"C:ON", true, "_CON"},  // what cleaning leaves counts
           // Names that merely begin like one are fine.
           {"CONTENT", true, "CONTENT"}, {"COM", true, "COM"}, {"COM10", true, "COM10"}, {"A-CON", true, "A-CON"}})
    EXPECT_EQ(CleanFileName(c.text, c.strict), c.clean) << c.text;

  const std::vector<std::string> hostile{"../../x", "a/../../b", "\\\\server\\share", "C:\\Windows", "..", "...",
                                         "a\0b", "/", "x/\n/y"};
  for (const std::string& name : hostile) {
    const std::string clean = CleanFileName(name, true);
    EXPECT_EQ(clean.find('/'), std::string::npos) << name;
    EXPECT_EQ(clean.find('\\'), std::string::npos) << name;
    EXPECT_NE(clean, ".");
    EXPECT_NE(clean, "..");
    for (char c : clean) EXPECT_GE(static_cast<unsigned char>(c), 32) << name;
  }
}

TEST(CleanFileName, TextADrawingGarbledBecomesOneMarkAStretch) {
  struct Case {
    std::string text, expected;
    bool unreadable;
  };
  for (const Case& c : std::vector<Case>{
           {"基础平面图", "基础平面图", false},
           {"基础\uFFFD\uFFFD平面图", "基础_平面图", true},     // what the reader made of two bytes
           {"基础\xB5\xD7平面图", "基础_平面图", true},          // bytes that are no UTF-8
           {"\uFFFD图\xFF", "_图_", true},
           {"a\xE5\x9F", "a_", true},                           // a character cut short
           {"\xC0\xAF", "_", true},                             // an overlong "/"
           {"\xED\xA0\x80", "_", true},                        // a surrogate
           {"\U0001F600", "\U0001F600", false}}) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(HasUnreadableText(c.text), c.unreadable);
    EXPECT_EQ(CleanFileName(c.text, true), c.expected);
    EXPECT_FALSE(HasUnreadableText(CleanFileName(c.text, false)));
  }
}

// ---- names of the generic batch ---------------------------------------------------------------------------

class DocumentEditor final : public test_support::FakeEditor {
 public:
  std::string documentPath() override { return document; }
  std::string document = "/work/plans/一层平面.dxf";
};

class GenericNameTest : public ::testing::Test {
 protected:
  GenericNameTest() {
    savedStyle_ = GlobalTkLibrary().PaperNameStyle;
    GlobalTkLibrary().PaperNameStyle = 0;
    bool added = false;
    paper::AddPaper(papers, 841, 594, added);
    paper::AddPaper(papers, 733, 512, added);
    sheet.paperName = "TV_A1";
  }
  ~GenericNameTest() override { GlobalTkLibrary().PaperNameStyle = savedStyle_; }

  DocumentEditor editor;
  settings::PlotSettingRec setting;
  paper::PaperList papers;
  recognition::Plot_Drawing1 sheet;

 private:
  std::int32_t savedStyle_ = 0;
};

TEST_F(GenericNameTest, DrawingNamePrefixFollowsTheDocument) {
  setting.name_prefix = "???";
  setting.name_start = 1;
  setting.name_digits = 2;
  EXPECT_EQ(GenericFileName(setting, sheet, papers, 0), "一层平面01");
  EXPECT_EQ(GenericFileName(setting, sheet, papers, 9), "一层平面10");
  editor.document = "/work/plans/other.plan.dxf";
  EXPECT_EQ(GenericFileName(setting, sheet, papers, 0), "other.plan01");
}

TEST_F(GenericNameTest, CallersPrefixWinsAndSerialRunsFromTheStart) {
  setting.name_prefix = "ignored";
  setting.name_start = 7;
  setting.name_digits = 3;
  setting.name_suffix = "_final";
  EXPECT_EQ(GenericFileName(setting, sheet, papers, 2, "建施-"), "建施-009_final");
}

TEST_F(GenericNameTest, PaperWordsBecomeTheSheetsPaper) {
  setting.name_prefix = "纸张尺寸_";
  setting.name_suffix = "_纸张";
  setting.name_digits = 1;
  EXPECT_EQ(GenericFileName(setting, sheet, papers, 0), "A1(841x594)_1_A1");
  sheet.rotated = true;  // an upright sheet names its sides the other way round
  EXPECT_EQ(GenericFileName(setting, sheet, papers, 0), "A1(594x841)_1_A1");

  sheet.paperName = "TV_733x512";
  sheet.rotated = false;
  EXPECT_EQ(GenericFileName(setting, sheet, papers, 0), "733x512_1_733x512");

  sheet.paperName = "TV_A0";  // not in the job's list: the words stay
  EXPECT_EQ(GenericFileName(setting, sheet, papers, 0), "纸张尺寸_1_纸张");
}

TEST_F(GenericNameTest, ANameTooLongForTheFileSystemKeepsItsSerial) {
  setting.format = 0;  // ".pdf": 251 bytes are left for the name
  setting.name_digits = 2;
  std::string wide;
  for (int i = 0; i < 100; ++i) wide += "图";  // 300 bytes
  struct Case {
    std::string prefix, suffix;
    std::size_t size;
    std::string tail;
  };
  for (const Case& c : std::vector<Case>{{std::string(300, 'a'), "_终", 251, "a07_终"},
                                         {wide, "_终", 249, "图07_终"},
                                         {"建施", wide, 251, "图"},
                                         {"建施", "_终", 12, "建施07_终"}}) {
    SCOPED_TRACE(c.size);
    setting.name_suffix = c.suffix;
    const std::string name = GenericFileName(setting, sheet, papers, 6, c.prefix);
    EXPECT_EQ(name.size(), c.size);
    EXPECT_TRUE(name.ends_with(c.tail)) << name;
  }
}

TEST_F(GenericNameTest, NameIsCleanedAndStoredInTheSheet) {
  setting.name_prefix = "a/b:";
  setting.name_suffix = "?";
  setting.name_digits = 2;
  ExpandGenericName(setting, sheet, papers, 4);
  EXPECT_EQ(sheet.fileName, "a\u2215b05");
}

}  // namespace
}  // namespace tv::titleblock
