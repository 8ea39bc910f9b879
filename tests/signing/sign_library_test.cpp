// The signature library and its tvlib1 file: what a save and a load keep, change and drop.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "../support/run_program.h"
#include "library_test_support.h"
#include "signing/sign_library.h"

namespace tv::signing {
namespace {

using test::AnsweringEditor;
using test_support::ReadFile;
using test_support::TempDir;
using test_support::WriteFile;

std::unique_ptr<TV_Sign> Sign(std::int32_t id, const std::string& name, std::int32_t code = 0,
                              std::vector<std::vector<double>> shapes = {}) {
  auto s = std::make_unique<TV_Sign>();
  s->person_id = id;
  s->person_name = name;
  s->auth_code = code;
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    auto shape = std::make_unique<MyShape>();
    shape->is_outer = i == 0 ? 1 : 0;
    for (std::size_t k = 0; k + 1 < shapes[i].size(); k += 2) {
      shape->xs.push_back(shapes[i][k]);
      shape->ys.push_back(shapes[i][k + 1]);
    }
    s->shapes.push_back(std::move(shape));
  }
  return s;
}

std::vector<std::string> Names(const SignLibrary& library) {
  std::vector<std::string> names;
  for (const auto& s : library.signs) names.push_back(s->person_name + "#" + std::to_string(s->person_id));
  return names;
}

TEST(LibraryCodes, AreAReversiblePairThatKeepsZeroAndHidesCodes) {
  for (std::int32_t v : {0, 1, -1, 7, 999999, 123456, INT_MAX, INT_MIN, 20240329}) {
    EXPECT_EQ(RestoreCode(StoreCode(v)), v) << v;
    EXPECT_EQ(StoreCode(RestoreCode(v)), v) << v;
    if (v != 0) {
      EXPECT_NE(StoreCode(v), v) << v;
    }
  }
  EXPECT_EQ(StoreCode(0), 0);
  EXPECT_EQ(RestoreCode(0), 0);
}

class SignFileTest : public ::testing::Test {
 protected:
  std::string path(const std::string& name) const { return (dir_ / name).string(); }
  TempDir dir_{"tv_sign"};
  AnsweringEditor editor_;
};

// Libraries written by this system read back whole, and written again give the same bytes.
TEST_F(SignFileTest, SaveLoadSaveIsByteIdentical) {
  struct Case {
    const char* what;
    std::function<void(SignLibrary&)> fill;
  };
  const std::vector<Case> cases = {
      {"empty", [](SignLibrary&) {}},
      {"number only", [](SignLibrary& l) { l.library_number = 4711; }},
      {"outer and hole",
       [](SignLibrary& l) {
         l.signs.push_back(Sign(26101530, "张 三", 123456, {{-5, -2, 5, -2, 5, 2, -5, 2}, {-1, -1, 1, -1, 0, 1}}));
       }},
      {"blanks, empty name, disabled, sorted on save",
       [](SignLibrary& l) {
         l.library_number = -9;
         l.signs.push_back(Sign(3, "王 五 ", 999999, {{0.1234567, -3.14159265, 1e-7, 123456789}}));
         l.signs.push_back(Sign(1, ""));
         l.signs.push_back(Sign(2, "Li Si"));
         l.signs.back()->enabled = 0;
         l.signs.back()->reserved_b = 77;
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    SignLibrary library;
    c.fill(library);
    const std::string first = path("first.tvlib1"), second = path("second.tvlib1");
    ASSERT_TRUE(SaveSignLibrary(library, first));
    SignLibrary loaded;
    ASSERT_TRUE(LoadSignLibrary(loaded, first, false));
    EXPECT_EQ(Names(loaded), Names(library));
    EXPECT_EQ(loaded.library_number, library.library_number);
    ASSERT_TRUE(SaveSignLibrary(loaded, second));
    EXPECT_EQ(ReadFile(second), ReadFile(first));
    for (std::size_t i = 0; i < loaded.signs.size(); ++i) {
      EXPECT_EQ(loaded.signs[i]->auth_code, library.signs[i]->auth_code);
      EXPECT_EQ(loaded.signs[i]->enabled, library.signs[i]->enabled);
      EXPECT_EQ(loaded.signs[i]->shapes.size(), library.signs[i]->shapes.size());
    }
    const auto facts = InspectSignLibraryFile(first);
    ASSERT_TRUE(facts);
    EXPECT_TRUE(facts->complete);
    EXPECT_EQ(facts->recordCount, static_cast<std::int32_t>(library.signs.size()));
  }
  EXPECT_TRUE(editor_.shown.empty());
}

TEST_F(SignFileTest, FileIsTheDocumentedTextWithEncipheredCodesAndSixDigitVertices) {
  SignLibrary library;
  library.library_number = 5;
  library.signs.push_back(Sign(42, "A B", 7, {{1.23456789, -2}}));
  const std::string file = path("l.tvlib1");
  ASSERT_TRUE(SaveSignLibrary(library, file));
  const std::string s5 = std::to_string(StoreCode(5)), s7 = std::to_string(StoreCode(7));
  EXPECT_EQ(ReadFile(file), "20240329\n" + s5 + "\n1\n20240329\n1\n20240329\n1\n1\n1.23457   -2\n1\n1\n42\nA*?*B\n" + s7 +
                                "\n0\n0\n0\n1\n");
  SignLibrary loaded;
  ASSERT_TRUE(LoadSignLibrary(loaded, file, false));
  EXPECT_DOUBLE_EQ(loaded.signs[0]->shapes[0]->xs[0], 1.23457);
  EXPECT_EQ(loaded.signs[0]->person_name, "A B");
}

// Versions are written as 20240329 and never checked on reading.
TEST_F(SignFileTest, AnyVersionNumberReadsTheSame) {
  SignLibrary library;
  library.signs.push_back(Sign(1, "甲", 0, {{0, 0, 1, 0, 1, 1}}));
  const std::string file = path("v.tvlib1");
  ASSERT_TRUE(SaveSignLibrary(library, file));
  const std::string current = ReadFile(file);
  for (const char* version : {"20200101", "20240329", "20991231", "1"}) {
    SCOPED_TRACE(version);
    std::string text = current;
    for (std::size_t at = 0; (at = text.find("20240329", at)) != std::string::npos; at += std::strlen(version))
      text.replace(at, 8, version);
    WriteFile(file, text);
    SignLibrary loaded;
    ASSERT_TRUE(LoadSignLibrary(loaded, file, false));
    ASSERT_TRUE(SaveSignLibrary(loaded, path("again.tvlib1")));
    EXPECT_EQ(ReadFile(path("again.tvlib1")), current);
  }
}

// A file cut short is read to its end (the Part's way), while the import check calls it
// incomplete; foreign text is no library either.
TEST_F(SignFileTest, TruncatedOrForeignFilesAreNotWholeLibraries) {
  SignLibrary library;
  library.signs.push_back(Sign(1, "A", 0, {{0, 0, 1, 0, 1, 1}}));
  library.signs.push_back(Sign(2, "B"));
  const std::string file = path("t.tvlib1");
  ASSERT_TRUE(SaveSignLibrary(library, file));
  const std::string whole = ReadFile(file);
  for (const std::string& bytes : {whole.substr(0, whole.size() / 2), whole.substr(0, 12), whole + "5\n",
                                   std::string("hello world\n"), std::string("20240329\n0\n99999999\n")}) {
    SCOPED_TRACE(bytes);
    WriteFile(file, bytes);
    const auto facts = InspectSignLibraryFile(file);
    ASSERT_TRUE(facts);
    EXPECT_FALSE(facts->complete);
    SignLibrary loaded;
    loaded.signs.push_back(Sign(9, "kept"));
    EXPECT_TRUE(LoadSignLibrary(loaded, file, false));
    EXPECT_LE(loaded.signs.size(), 3u);
  }
  EXPECT_FALSE(InspectSignLibraryFile(path("missing.tvlib1")));
}

TEST_F(SignFileTest, MergeKeepsThePresentRecordAndAsksOnlyAboutANonEmptyLibrary) {
  SignLibrary file;
  file.library_number = 77;
  file.signs.push_back(Sign(1, "from file", 5));
  file.signs.push_back(Sign(2, "new"));
  file.signs.push_back(Sign(2, "duplicate in file"));
  const std::string other = path("other.tvlib1");
  ASSERT_TRUE(SaveSignLibrary(file, other));

  struct Case {
    const char* what;
    bool startEmpty;
    std::vector<host::MessageAnswer> answers;
    bool loaded;
    std::vector<std::string> names;
    std::size_t questions;
  };
  const std::vector<Case> cases = {
      {"empty library: no question", true, {}, true, {"duplicate in file#2", "from file#1"}, 0},
      {"Yes keeps, the present id wins", false, {host::MessageAnswer::Yes}, true, {"mine#1", "duplicate in file#2"}, 1},
      {"No replaces", false, {host::MessageAnswer::No}, true, {"duplicate in file#2", "from file#1"}, 1},
      {"no answer changes nothing", false, {}, false, {"mine#1"}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    editor_.shown.clear();
    editor_.answers.assign(c.answers.begin(), c.answers.end());
    SignLibrary library;
    if (!c.startEmpty) library.signs.push_back(Sign(1, "mine", 3));
    EXPECT_EQ(LoadSignLibrary(library, other, true), c.loaded);
    EXPECT_EQ(Names(library), c.names);
    ASSERT_EQ(editor_.shown.size(), c.questions);
    if (c.questions) {
      EXPECT_EQ(editor_.shown[0], "[Tarvex] 原签名库信息是否保留 ？");
    }
    if (c.loaded) {
      EXPECT_EQ(library.library_number, 77);
    }
    if (!c.startEmpty && c.answers == std::vector{host::MessageAnswer::Yes}) {
      EXPECT_EQ(library.signs[0]->auth_code, 3);
    }
  }
}

TEST_F(SignFileTest, AMissingFileEmptiesOnAPlainLoadOnly) {
  SignLibrary library;
  library.signs.push_back(Sign(1, "a"));
  editor_.answers = {host::MessageAnswer::Yes};
  EXPECT_FALSE(LoadSignLibrary(library, path("none.tvlib1"), true));
  EXPECT_EQ(library.signs.size(), 1u);
  EXPECT_FALSE(LoadSignLibrary(library, path("none.tvlib1"), false));
  EXPECT_TRUE(library.signs.empty());
}

TEST_F(SignFileTest, AFailedWriteIsReportedAndTheLibraryKept) {
  SignLibrary library;
  library.signs.push_back(Sign(2, "b"));
  library.signs.push_back(Sign(1, "a"));
  const std::string bad = path("no/such/folder/x.tvlib1");
  EXPECT_FALSE(SaveSignLibrary(library, bad));
  ASSERT_EQ(editor_.shown.size(), 1u);
  EXPECT_EQ(editor_.shown[0].rfind("[Tarvex] 文件 < " + bad + " > 写入操作有误!", 0), 0u) << editor_.shown[0];
  EXPECT_EQ(Names(library), (std::vector<std::string>{"a#1", "b#2"}));
  EXPECT_FALSE(SaveSignLibrary(library, bad, false));
  EXPECT_EQ(editor_.shown.size(), 1u);
}

TEST(SignLibrary, SortIsByCodePoint) {
  SignLibrary library;
  for (auto [id, name] : std::vector<std::pair<int, std::string>>{{1, "b"}, {2, "张"}, {3, "B"}, {4, "bb"}, {5, ""}, {6, "a"}})
    library.signs.push_back(Sign(id, name));
  SortSignsByName(library);
  EXPECT_EQ(Names(library), (std::vector<std::string>{"#5", "B#3", "a#6", "b#1", "bb#4", "张#2"}));
}

TEST(SignLibrary, NewPersonIdIsDayAndTimeRaisedPastTakenNumbers) {
  SignLibrary library;
  EXPECT_EQ(NewPersonId(library, "20261126093005"), 26093005);
  library.signs.push_back(Sign(26093005, "a"));
  library.signs.push_back(Sign(26093006, "b"));
  EXPECT_EQ(NewPersonId(library, "20261126093005"), 26093007);
  EXPECT_EQ(FindSignById(library, 26093006)->person_name, "b");
  EXPECT_EQ(FindSignById(library, 1), nullptr);
}

}  // namespace
}  // namespace tv::signing
