// The stamp library, its binary tvlib2 file, the stamp pictures and the checks of the stamp form.
#include <gtest/gtest.h>

#include <cstring>

#include "../support/run_program.h"
#include "library_test_support.h"
#include "signing/stamp_form.h"
#include "signing/stamp_library.h"

namespace tv::signing {
namespace {

using test::AnsweringEditor;
using test_support::ReadFile;
using test_support::TempDir;
using test_support::WriteFile;

std::unique_ptr<TV_Stamp> Stamp(const std::string& name, std::string image = {}, std::int32_t code = 0) {
  auto s = std::make_unique<TV_Stamp>();
  s->name = name;
  s->image = std::move(image);
  s->image_size = static_cast<std::int32_t>(s->image.size());
  s->auth_code = code;
  return s;
}

std::vector<std::string> Names(const StampLibrary& library) {
  std::vector<std::string> names;
  for (const auto& s : library.stamps) names.push_back(s->name + ":" + s->image);
  return names;
}

std::int32_t Int(const std::string& b, std::size_t at) {
  std::uint32_t v = 0;
  for (int i = 3; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(b.at(at + i));
  return static_cast<std::int32_t>(v);
}

double Real(const std::string& b, std::size_t at) {
  double d = 0;
  std::memcpy(&d, b.data() + at, 8);  // the test machine is little-endian, as the file
  return d;
}

class StampFileTest : public ::testing::Test {
 protected:
  std::string path(const std::string& name) const { return (dir_ / name).string(); }
  TempDir dir_{"tv_stamp"};
  AnsweringEditor editor_;
};

TEST_F(StampFileTest, SaveLoadSaveIsByteIdentical) {
  struct Case {
    const char* what;
    std::function<void(StampLibrary&)> fill;
  };
  const std::vector<Case> cases = {
      {"empty", [](StampLibrary&) {}},
      {"one picture", [](StampLibrary& l) { l.stamps.push_back(Stamp("出图章 A", std::string("\x89PNG\0\x01", 6), 999999)); }},
      {"no picture, blanks, empty name, kinds, sorted on save",
       [](StampLibrary& l) {
         l.library_number = 31337;
         l.stamps.push_back(Stamp("z  z"));
         l.stamps.push_back(Stamp(""));
         l.stamps.back()->stamp_kind = 4;
         l.stamps.back()->enabled = 0;
         l.stamps.push_back(Stamp("注册章😀", "xyz", 1));
         l.stamps.back()->width = 40.5;
         l.stamps.back()->height = 1.0 / 3;
         l.stamps.back()->valid_until = 20301231;
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    StampLibrary library;
    c.fill(library);
    const std::string first = path("a.tvlib2"), second = path("b.tvlib2");
    ASSERT_TRUE(SaveStampLibrary(library, first));
    StampLibrary loaded;
    ASSERT_TRUE(LoadStampLibrary(loaded, first, false));
    EXPECT_EQ(Names(loaded), Names(library));
    EXPECT_EQ(loaded.library_number, library.library_number);
    for (std::size_t i = 0; i < loaded.stamps.size(); ++i) {
      const TV_Stamp &a = *loaded.stamps[i], &b = *library.stamps[i];
      EXPECT_EQ(std::tie(a.image_size, a.auth_code, a.valid_until, a.stamp_kind, a.enabled, a.width, a.height),
                std::tie(b.image_size, b.auth_code, b.valid_until, b.stamp_kind, b.enabled, b.width, b.height));
    }
    ASSERT_TRUE(SaveStampLibrary(loaded, second));
    EXPECT_EQ(ReadFile(second), ReadFile(first));
    const auto facts = InspectStampLibraryFile(first);
    ASSERT_TRUE(facts);
    EXPECT_TRUE(facts->complete);
  }
}

TEST_F(StampFileTest, RecordFieldsStandAtTheirOffsets) {
  StampLibrary library;
  library.library_number = 12;
  library.stamps.push_back(Stamp("A B", "PIC", 654321));
  library.stamps[0]->width = 50;
  library.stamps[0]->height = 25;
  library.stamps[0]->stamp_kind = 2;
  const std::string file = path("o.tvlib2");
  ASSERT_TRUE(SaveStampLibrary(library, file));
  const std::string b = ReadFile(file);
  const std::size_t n = 3, k = 5;  // "A*?*B"
  ASSERT_EQ(b.size(), 12 + 44 + n + 2 * k);
  EXPECT_EQ(Int(b, 0), 20240329);
  EXPECT_EQ(Int(b, 4), StoreCode(12));
  EXPECT_EQ(Int(b, 8), 1);
  const std::size_t r = 12;
  EXPECT_EQ(Int(b, r), 20240329);
  EXPECT_EQ(Int(b, r + 4), 3);
  EXPECT_EQ(b.substr(r + 8, n), "PIC");
  EXPECT_EQ(Int(b, r + 8 + n), 5);
  EXPECT_EQ(b.substr(r + 12 + n, 2 * k), std::string("A\0*\0?\0*\0B\0", 10));
  EXPECT_EQ(Real(b, r + 12 + n + 2 * k), 50.0);
  EXPECT_EQ(Real(b, r + 20 + n + 2 * k), 25.0);
  EXPECT_EQ(Int(b, r + 28 + n + 2 * k), StoreCode(654321));
  EXPECT_EQ(Int(b, r + 32 + n + 2 * k), 20250212);
  EXPECT_EQ(Int(b, r + 36 + n + 2 * k), 2);
  EXPECT_EQ(Int(b, r + 40 + n + 2 * k), 1);
}

TEST_F(StampFileTest, TruncatedOrForeignFilesAreNotWholeLibraries) {
  StampLibrary library;
  library.stamps.push_back(Stamp("a", std::string(100, 'x')));
  library.stamps.push_back(Stamp("b", "y"));
  const std::string file = path("t.tvlib2");
  ASSERT_TRUE(SaveStampLibrary(library, file));
  const std::string whole = ReadFile(file);
  std::string hugeImage = whole;
  hugeImage.replace(16, 4, std::string("\xff\xff\xff\x7f", 4));  // an image size of 2 GB
  for (const std::string& bytes : {whole.substr(0, 11), whole.substr(0, 60), whole.substr(0, whole.size() - 1),
                                   whole + "!", hugeImage, std::string("%PDF-1.4 not a library at all")}) {
    SCOPED_TRACE(bytes.size());
    WriteFile(file, bytes);
    const auto facts = InspectStampLibraryFile(file);
    ASSERT_TRUE(facts);
    EXPECT_FALSE(facts->complete);
    StampLibrary loaded;
    EXPECT_TRUE(LoadStampLibrary(loaded, file, false));
    EXPECT_LE(loaded.stamps.size(), 3u);
  }
}

TEST_F(StampFileTest, MergeKeepsThePresentStampOfAName) {
  StampLibrary file;
  file.stamps.push_back(Stamp("A", "theirs"));
  file.stamps.push_back(Stamp("B", "new"));
  const std::string other = path("other.tvlib2");
  ASSERT_TRUE(SaveStampLibrary(file, other));
  for (auto [answer, names] : std::vector<std::pair<host::MessageAnswer, std::vector<std::string>>>{
           {host::MessageAnswer::Yes, {"A:mine", "B:new"}}, {host::MessageAnswer::No, {"A:theirs", "B:new"}}}) {
    editor_.shown.clear();
    editor_.answers = {answer};
    StampLibrary library;
    library.stamps.push_back(Stamp("A", "mine"));
    EXPECT_TRUE(LoadStampLibrary(library, other, true));
    EXPECT_EQ(Names(library), names);
    EXPECT_EQ(editor_.shown, std::vector<std::string>{"[Tarvex] 原印章库信息是否保留 ？"});
  }
}

TEST_F(StampFileTest, PicturesAreReadAndWrittenByteForByte) {
  const std::string bytes("\x89PNG\r\n\x1a\n\0\0", 10);
  WriteFile(path("in.png"), bytes);
  TV_Stamp stamp;
  ASSERT_TRUE(LoadStampImage(stamp, path("in.png")));
  EXPECT_EQ(stamp.image, bytes);
  EXPECT_EQ(stamp.image_size, 10);
  ASSERT_TRUE(SaveStampImage(stamp, path("out.png")));
  EXPECT_EQ(ReadFile(path("out.png")), bytes);

  WriteFile(path("empty.png"), "");
  EXPECT_FALSE(LoadStampImage(stamp, path("empty.png")));
  EXPECT_EQ(stamp.image_size, 0);
  EXPECT_FALSE(LoadStampImage(stamp, path("missing.png")));
  EXPECT_FALSE(SaveStampImage(stamp, path("nothing.png")));
  EXPECT_FALSE(std::filesystem::exists(path("nothing.png")));
}

TEST(StampForm, ChecksOkInOrderAndTakesTheHeightFromThePicture) {
  struct Case {
    std::string name;
    std::int64_t code;
    double width;
    std::string refusal;  // empty when OK passes
  };
  const std::vector<Case> cases = {
      {"  ", 0, 62, "印章名不能为空 !"},
      {"A", 1000000, 9, "授权码超出范围 !\n\n授权码范围: 0 - 999999\n\n输入 0 表示无需授权"},
      {"A", 999999, 9.99, "印章尺寸有误，应在 10 - 200 mm之间 !"},
      {"A", 0, 200.01, "印章尺寸有误，应在 10 - 200 mm之间 !"},
      {"A", 0, 10, ""},
      {"A", 0, 200, ""},
  };
  for (const Case& c : cases) {
    Dlg_Stamp form(TV_Stamp{}, host::PictureSize{500, 250});
    form.name = c.name;
    form.auth_code = c.code;
    form.width = c.width;
    const auto refusal = form.check();
    EXPECT_EQ(refusal ? refusal->message : "", c.refusal) << c.name << " " << c.width;
  }
  TV_Stamp stamp;
  EXPECT_EQ(stamp.valid_until, 20250212);
  Dlg_Stamp form(stamp, host::PictureSize{500, 250});
  form.name = " 出图章 ";
  form.width = 62;
  form.store(stamp);
  EXPECT_EQ(stamp.name, "出图章");
  EXPECT_DOUBLE_EQ(stamp.height, 31.0);
}

TEST(StampForm, DatesTheFormOpensOnAndThePickerOffers) {
  using namespace std::chrono;
  const sys_days today = sys_days(year(2026) / 11 / 26);
  EXPECT_TRUE(IsStampDate(20250212));
  EXPECT_FALSE(IsStampDate(19691231));
  EXPECT_FALSE(IsStampDate(20251301));
  EXPECT_TRUE(InDatePickerRange(20361123, today));
  EXPECT_FALSE(InDatePickerRange(20361124, today));
  EXPECT_FALSE(InDatePickerRange(20260230, today));
  EXPECT_TRUE(InDatePickerRange(20161129, today));
}

}  // namespace
}  // namespace tv::signing
