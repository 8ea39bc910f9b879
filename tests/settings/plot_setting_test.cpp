// The per-drawing plot settings: defaults, copies, the stream form of the configuration file and
// the Xrecord the drawing carries, also through a DXF file.
#include <gtest/gtest.h>

#include "cad/database.h"
#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "host/cad_binding.h"
#include "host/xrecords.h"
#include "settings/field_table.h"
#include "settings_fixture.h"

namespace tv::settings {
namespace {

using testing::Tokens;

// A record in which every field differs from its default; strings carry blanks and Chinese.
PlotSettingRec Distinct() {
  PlotSettingRec rec;
  testing::MakeDistinct(rec, PlotSettingFields());
  return rec;
}

// What a writer of `version` put in a file: the fields that version knew.
std::string OldStream(const PlotSettingRec& rec, std::int32_t version) {
  ValueWriter writer;
  writer.integer(version);
  for (const auto& field : PlotSettingFields())
    if (field.gate.holds(version)) WriteField(rec, field, writer);
  return writer.text();
}

PlotSettingRec ReadStream(const std::string& text, PlotSettingRec start = {}) {
  ValueReader reader(Tokens(text));
  EXPECT_TRUE(ReadPlotSetting(start, reader));
  return start;
}

TEST(PlotSettingRecord, DefaultsAndTheCopyThatForgetsSessionValues) {
  PlotSettingRec rec = Distinct();
  ResetPlotSetting(rec);
  EXPECT_EQ(rec, PlotSettingRec{});

  const PlotSettingRec source = Distinct();
  PlotSettingRec copy;
  CopyPlotSetting(copy, source);
  EXPECT_EQ(copy.auto_scale, 0);
  EXPECT_EQ(copy.stamp_authorised, 0);
  copy.auto_scale = source.auto_scale;
  copy.stamp_authorised = source.stamp_authorised;
  EXPECT_EQ(copy, source);
}

TEST(PlotSettingStream, MarginOutsideItsRangeReadsAsZero) {
  PlotSettingRec rec;
  for (const auto& [margin, expected] : {std::pair{101, 0}, {-101, 0}, {100, 100}, {-100, -100}}) {
    rec.margin = margin;
    ValueWriter writer;
    WritePlotSetting(rec, writer);
    EXPECT_EQ(ReadStream(writer.text()).margin, expected) << margin;
  }
}

TEST(PlotSettingStream, ReadingStopsAtTheFirstFieldTheVersionLacks) {
  const PlotSettingRec rec = Distinct();
  PlotSettingRec start;
  start.filter_ratio = 12.0;       // what the reader held before
  start.stamp_project_on = 7;

  // 20210128 knows auto_scale but not filter_ratio.
  PlotSettingRec back = ReadStream(OldStream(rec, 20210128), start);
  EXPECT_EQ(back.legacy_flag_a, rec.legacy_flag_a);
  EXPECT_DOUBLE_EQ(back.filter_ratio, 12.0);
  EXPECT_EQ(back.plot_signatures, 1);

  // The stamps of the third and fourth kind came the day after 20220607.
  back = ReadStream(OldStream(rec, 20220607), start);
  EXPECT_EQ(back.stamp_authorised, rec.stamp_authorised);
  EXPECT_EQ(back.stamp_project_on, 7);
  back = ReadStream(OldStream(rec, 20220608), start);
  EXPECT_EQ(back.stamp_project_on, rec.stamp_project_on);
  EXPECT_EQ(back.plot_stamps, rec.plot_stamps);
  EXPECT_EQ(back.paper_device, "");

  // "Above 20210212": the day itself lacks the signature group.
  back = ReadStream(OldStream(rec, 20210212));
  EXPECT_DOUBLE_EQ(back.filter_ratio, rec.filter_ratio);
  EXPECT_EQ(back.plot_signatures, 1);
  back = ReadStream(OldStream(rec, 20210213));
  EXPECT_EQ(back.stamp_issue_name, rec.stamp_issue_name);
  EXPECT_EQ(back.stamp_authorised, 0);
}

TEST(PlotSettingStream, AShortStreamFailsAndKeepsTheRest) {
  PlotSettingRec rec;
  ValueReader reader(Tokens("20240329 3 2 <>< 5"));
  EXPECT_FALSE(ReadPlotSetting(rec, reader));
  EXPECT_EQ(rec.format, 3);
  EXPECT_EQ(rec.custom_path, "");
  EXPECT_EQ(rec.margin, 5);
  EXPECT_EQ(rec.back_red, 255);
}

class DwgPlotSettingTest : public testing::SettingsTest {
 protected:
  DwgPlotSettingTest() { host::SetWorkingDatabase(&db); }
  ~DwgPlotSettingTest() override { host::SetWorkingDatabase(nullptr); }

  cad::Dictionary* settingDictionary() { return db.namedDictionary(kDwgPlotSettingKey); }

  cad::Database db = cad::Database::createDefault();
};

TEST_F(DwgPlotSettingTest, TheRecordTravelsInTheDrawing) {
  const PlotSettingRec rec = Distinct();
  EXPECT_TRUE(SaveDwgPlotSetting(rec));

  const auto items = host::ReadNamedXrecord("DWG_PLOT_SETTING");
  ASSERT_TRUE(items.has_value());
  ASSERT_EQ(items->size(), 33u);
  EXPECT_EQ((*items)[0], (host::XrecordItem{90, std::int32_t{20240329}}));
  EXPECT_EQ((*items)[1], (host::XrecordItem{90, rec.format}));
  EXPECT_EQ((*items)[3], (host::XrecordItem{1, std::string("图*?*3*?*x")}));
  EXPECT_EQ((*items)[8], (host::XrecordItem{40, rec.default_scale}));
  EXPECT_EQ((*items)[16], (host::XrecordItem{40, rec.filter_ratio}));

  PlotSettingRec back;
  EXPECT_TRUE(LoadDwgPlotSetting(back));
  EXPECT_EQ(back, rec);  // the drawing carries the session values as they were

  // Saving makes it the default for the next new drawing, without the session values.
  PlotSettingRec expectedDefault = rec;
  expectedDefault.auto_scale = 0;
  expectedDefault.stamp_authorised = 0;
  EXPECT_EQ(GlobalConfig().plot_setting, expectedDefault);
}

TEST_F(DwgPlotSettingTest, WithoutARecordTheUsersLastSettingsApply) {
  GlobalConfig().plot_setting.format = kFormatJpg;
  GlobalConfig().plot_setting.auto_scale = 1;
  PlotSettingRec rec = Distinct();
  EXPECT_FALSE(LoadDwgPlotSetting(rec));
  EXPECT_EQ(rec.format, kFormatJpg);
  EXPECT_EQ(rec.auto_scale, 0);
  EXPECT_EQ(rec.name_prefix, "???");

  // The dictionary alone is no record either.
  db.ensureDictionary(*db.rootDictionary(), "DWG_PLOT_SETTING");
  rec = Distinct();
  EXPECT_FALSE(LoadDwgPlotSetting(rec));
  EXPECT_EQ(rec.format, kFormatJpg);

  // Nor is there one without a drawing.
  host::SetWorkingDatabase(nullptr);
  rec = Distinct();
  EXPECT_FALSE(LoadDwgPlotSetting(rec));
  EXPECT_EQ(rec.format, kFormatJpg);
  EXPECT_FALSE(SaveDwgPlotSetting(rec));
}

TEST_F(DwgPlotSettingTest, AnOlderDrawingKeepsTheDefaultsOfLaterFields) {
  GlobalConfig().plot_setting.filter_ratio = 25.0;  // not used: the drawing has a record
  const PlotSettingRec rec = Distinct();
  std::vector<host::XrecordItem> items{{90, std::int32_t{20210128}}};
  for (const auto& field : PlotSettingFields())
    if (field.gate.holds(20210128)) {
      std::visit(
          [&](auto member) {
            const auto& v = rec.*member;
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, std::string>)
              items.push_back({1, EncodeToken(v)});
            else if constexpr (std::is_same_v<T, double>)
              items.push_back({40, v});
            else
              items.push_back({90, v});
          },
          field.member);
    }
  ASSERT_EQ(items.size(), 16u);
  ASSERT_TRUE(host::WriteNamedXrecord("DWG_PLOT_SETTING", items));

  PlotSettingRec back;
  EXPECT_TRUE(LoadDwgPlotSetting(back));
  EXPECT_EQ(back.name_suffix, rec.name_suffix);
  EXPECT_EQ(back.auto_scale, rec.auto_scale);
  EXPECT_DOUBLE_EQ(back.filter_ratio, 0.0);
  EXPECT_EQ(back.plot_signatures, 1);
}

TEST_F(DwgPlotSettingTest, ABrokenChainStopsReadingWithoutHarm) {
  using host::XrecordItem;
  // The version promises every field, but the chain ends after the margin.
  ASSERT_TRUE(host::WriteNamedXrecord(
      "DWG_PLOT_SETTING", {{90, std::int32_t{20240329}}, {90, std::int32_t{2}}, {90, std::int32_t{0}},
                           {1, std::string("<><")}, {90, std::int32_t{101}}}));
  PlotSettingRec back = Distinct();
  EXPECT_TRUE(LoadDwgPlotSetting(back));
  EXPECT_EQ(back.format, 2);
  EXPECT_EQ(back.path_mode, 0);
  EXPECT_EQ(back.custom_path, "");
  EXPECT_EQ(back.margin, 0);  // 101 is out of range
  EXPECT_EQ(back.back_red, 255);

  // A value of the wrong kind ends reading there.
  ASSERT_TRUE(host::WriteNamedXrecord(
      "DWG_PLOT_SETTING", {{90, std::int32_t{20240329}}, {90, std::int32_t{3}}, {40, 1.5}, {90, std::int32_t{4}}}));
  back = Distinct();
  LoadDwgPlotSetting(back);
  EXPECT_EQ(back.format, 3);
  EXPECT_EQ(back.path_mode, 1);
  EXPECT_EQ(back.custom_path, " ");

  // An empty chain, or one without its version, leaves the defaults.
  ASSERT_TRUE(host::WriteNamedXrecord("DWG_PLOT_SETTING", {}));
  back = Distinct();
  EXPECT_TRUE(LoadDwgPlotSetting(back));
  EXPECT_EQ(back, PlotSettingRec{});
  ASSERT_TRUE(host::WriteNamedXrecord("DWG_PLOT_SETTING", {{1, std::string("x")}, {90, std::int32_t{3}}}));
  back = Distinct();
  LoadDwgPlotSetting(back);
  EXPECT_EQ(back, PlotSettingRec{});
}

TEST_F(DwgPlotSettingTest, TheRecordSurvivesADxfFile) {
  PlotSettingRec rec = Distinct();
  rec.custom_path = "/图纸 输出/";
  SaveDwgPlotSetting(rec);
  const std::string file = path("plan.dxf");
  ASSERT_TRUE(cad::WriteDxf(db, file).ok);

  auto read = cad::ReadDxf(file);
  ASSERT_TRUE(read.ok()) << read.error;
  cad::Database reopened = std::move(*read.db);
  host::SetWorkingDatabase(&reopened);
  GlobalConfig() = Config{};
  PlotSettingRec back;
  EXPECT_TRUE(LoadDwgPlotSetting(back));
  EXPECT_EQ(back, rec);

  // Saved again into the read drawing, it is still one record, and the file carries the new one.
  back.format = kFormatEps;
  SaveDwgPlotSetting(back);
  ASSERT_TRUE(cad::WriteDxf(reopened, file).ok);
  host::SetWorkingDatabase(&db);
  read = cad::ReadDxf(file);
  ASSERT_TRUE(read.ok()) << read.error;
  cad::Database third = std::move(*read.db);
  host::SetWorkingDatabase(&third);
  ASSERT_NE(third.namedDictionary(kDwgPlotSettingKey), nullptr);
  EXPECT_EQ(third.namedDictionary(kDwgPlotSettingKey)->entries.size(), 1u);
  PlotSettingRec last;
  LoadDwgPlotSetting(last);
  EXPECT_EQ(last.format, kFormatEps);
  EXPECT_EQ(last.custom_path, "/图纸 输出/");
}

TEST_F(DwgPlotSettingTest, KeepingTheCurrentRecordWritesDrawingAndConfiguration) {
  CurrentPlotSetting().default_scale = 50.0;
  CurrentPlotSetting().auto_scale = 1;
  EXPECT_TRUE(SaveCurrentPlotSetting());
  PlotSettingRec back;
  LoadDwgPlotSetting(back);
  EXPECT_DOUBLE_EQ(back.default_scale, 50.0);

  Config config;
  ASSERT_TRUE(LoadConfigFrom(config, ConfigFilePath()));
  EXPECT_DOUBLE_EQ(config.plot_setting.default_scale, 50.0);
  EXPECT_EQ(config.plot_setting.auto_scale, 0);
}

}  // namespace
}  // namespace tv::settings
