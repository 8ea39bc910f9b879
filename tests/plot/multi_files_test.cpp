// The list of a multi-file run and its record: which names count, duplicates, the record's text
// and its limits, and stored choices coming back to a new row.
#include "plot/multi_files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "../support/run_program.h"
#include "host/text_files.h"
#include "settings/plot_setting.h"

namespace tv::plot {
namespace {

namespace fs = std::filesystem;

Single_Dwg Row(const std::string& path, double scale = 100.0) {
  Single_Dwg row;
  row.path = path;
  row.name = fs::path(path).filename().string();
  row.scale = scale;
  return row;
}

TEST(MultiFiles, WhichNamesCount) {
  const struct {
    std::string name;
    bool counts;
  } cases[] = {
      {"/d/a.dwg", true}, {"/d/A.DWG", true}, {"/d/a.dwg.bak", true}, {"a.dwg", false},
      {"/d/a.dxf", false}, {"/d.dwg/readme", true},
  };
  for (const auto& c : cases) EXPECT_EQ(CountsAsDrawing(c.name), c.counts) << c.name;
}

TEST(MultiFiles, RecordRoundTripKeepsEveryField) {
  Single_Dwg a = Row("/p/方案 一.dwg", 50.5);
  a.number = 1;
  a.sort_order = 3;
  a.auto_scale = 1;
  a.margin = -5;
  a.plot_signatures = 1;
  a.stamp_on = 1;
  a.flags = {1, 0, 1, 0, 1};
  a.filter_ratio = 2.5;
  a.paper_mode = 7;
  a.style_index = 2;
  a.range = 2;
  a.order_mode = 4;
  a.last_flag = 1;
  const std::vector<Single_Dwg> rows = {a, Row("/p/b.dwg", 0.1)};
  const std::string text = MultiFileRowsText(rows, {});
  EXPECT_EQ(text.rfind(std::to_string(kMultiFilesVersion) + "\n2\n/p/方案 一.dwg\n1\n方案 一.dwg\n3\n", 0), 0u) << text;
  EXPECT_EQ(ParseMultiFileRows(text), rows);

  const fs::path file = fs::temp_directory_path() / ("multi-files-" + std::to_string(::getpid()) + ".tmp");
  ASSERT_TRUE(SaveMultiFileRows(rows, {}, file.string()));
  // On disk in the code page of the system's files, as installations on Chinese Windows read it.
  EXPECT_NE(host::ReadFileBytes(file.string())->find("\xB7\xBD\xB0\xB8"), std::string::npos) << "方案 in GBK";
  std::vector<Single_Dwg> store;
  LoadMultiFileRows(store, file.string());
  EXPECT_EQ(store, rows);
  fs::remove(file);
  LoadMultiFileRows(store, file.string());
  EXPECT_TRUE(store.empty()) << "a missing record is an empty store";
}

TEST(MultiFiles, UnreadableRecordsAreEmpty) {
  const std::string whole = MultiFileRowsText({Row("/p/a.dwg")}, {});
  for (const std::string& text : {std::string(), std::string("x\n1\n"), std::string("1\n-1\n"),
                                  whole.substr(0, whole.size() - 4), std::string("1\n2\n") + whole.substr(whole.find('\n', 2) + 1)})
    EXPECT_TRUE(ParseMultiFileRows(text).empty()) << text;
  std::string older = whole;
  older.replace(0, older.find('\n'), "7");
  EXPECT_EQ(ParseMultiFileRows(older).size(), 1u) << "the version stamp isn't tested";
}

TEST(MultiFiles, CurrentRowsWinAndAtMostFiftyAreKept) {
  std::vector<Single_Dwg> current, stored;
  current.push_back(Row("/p/A.dwg", 20));
  stored.push_back(Row("/p/a.DWG", 30));
  for (int i = 0; i < 50; ++i) stored.push_back(Row("/p/s" + std::to_string(i) + ".dwg"));
  const std::vector<Single_Dwg> kept = ParseMultiFileRows(MultiFileRowsText(current, stored));
  ASSERT_EQ(kept.size(), kMultiFilesMaxRows);
  EXPECT_EQ(kept[0].scale, 20) << "the same path, case aside, stands once: the current choice";
  EXPECT_EQ(kept[1].path, "/p/s0.dwg");
  EXPECT_EQ(kept.back().path, "/p/s48.dwg") << "the fifty-first distinct row isn't written";
}

TEST(MultiFiles, AddFilesTakesStoredChoicesAndEachPathOnce) {
  const fs::path dir = fs::temp_directory_path() / ("multi-add-" + std::to_string(::getpid()));
  fs::create_directories(dir / "sub");
  for (const char* name : {"b.dwg", "a.dwg", "sub/c.DWG", "note.txt", "d.dwg.bak"}) std::ofstream(dir / name) << "x";
  Single_Dwg remembered = Row((dir / "B.DWG").string(), 25);
  remembered.paper_mode = 3;
  settings::PlotSettingRec rec;
  rec.default_scale = 200;

  std::vector<Single_Dwg> rows;
  AddFiles(rows, {(dir / "a.dwg").string(), dir.string(), "loose.dwg"}, {remembered}, &rec);
  std::vector<std::string> names;
  for (const Single_Dwg& r : rows) names.push_back(fs::path(r.path).lexically_relative(dir).string());
  EXPECT_EQ(names, (std::vector<std::string>{"a.dwg", "b.dwg", "d.dwg.bak", "sub/c.DWG"}));
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0].number, 1);
  EXPECT_EQ(rows[0].scale, 200) << "a new row takes the settings";
  EXPECT_EQ(rows[1].scale, 25) << "a stored row's choices come back, case aside";
  EXPECT_EQ(rows[1].paper_mode, 3);
  EXPECT_EQ(rows[1].path, (dir / "b.dwg").string()) << "the row keeps its own path";
  EXPECT_EQ(rows[3].number, 4);
  fs::remove_all(dir);
}

}  // namespace
}  // namespace tv::plot
