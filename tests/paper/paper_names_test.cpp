#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "paper/paper.h"

namespace tv::paper {
namespace {

struct NameRow {
  std::int32_t length, width;
  const char* name;
};

// One row of each family: plain A and B sizes, halves on A3, eighths on A2, quarters on A1 and A0.
const std::vector<NameRow> kExpectedNames = {
    {210, 148, "TV_A5"},              {297, 210, "TV_A4"},             {420, 297, "TV_A3"},
    {630, 297, "TV_A3_Plus_1+1-2"},   {1892, 297, "TV_A3_Plus_1+7-2"}, {668, 420, "TV_A2_Plus_1+1-8"},
    {1051, 297, "TV_A3_Plus_1+3-2"},  {1189, 420, "TV_A2_Plus_1+1"},   {2080, 420, "TV_A2_Plus_1+5-2"},
    {1051, 594, "TV_A1_Plus_1+1-4"},  {2102, 594, "TV_A1_Plus_1+3-2"}, {1189, 841, "TV_A0"},
    {2378, 841, "TV_A0_Plus_1+1"},    {250, 176, "TV_B5"},             {1414, 1000, "TV_B0"},
};

// The length alone never decides: 1051 and 1189 name different papers on different widths.
TEST(PaperNameOf, EveryNamedSizeHasItsName) {
  for (const NameRow& row : kExpectedNames) EXPECT_EQ(PaperNameOf(MyPaper{row.length, row.width, false}), row.name);
}

TEST(PaperNameOf, UnnamedLengthsFallBackToTheWidthThenToTheBareSize) {
  const std::vector<NameRow> fallbacks = {
      {300, 148, "TV_A5_Plus_300"}, {700, 297, "TV_A3_Plus_700"}, {1300, 841, "TV_A0_Plus_1300"},
      {300, 176, "TV_B5_Plus_300"}, {1500, 1000, "TV_B0_Plus_1500"}, {733, 512, "TV_733x512"},
      {420, 298, "TV_420x298"},     {0, 0, "TV_0x0"},
  };
  for (const NameRow& row : fallbacks) EXPECT_EQ(PaperNameOf(MyPaper{row.length, row.width}), row.name);
}

// ---- naming styles --------------------------------------------------------------------------------

std::string Rendered(std::string name, std::int32_t style) {
  RenderPaperName(name, style);
  return name;
}

// Shortest decimal of a multiple of 1/8 ("0.125", "2", "1.5").
std::string Decimal(double value) {
  std::string text = std::to_string(value);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

struct Key {
  const char* key;
  int numerator, denominator;  // the lengthening, a fraction of the base length
};

// The binding key order, with the fraction each key stands for.
const std::vector<Key> kKeys = {
    {"_Plus_1+1-8", 1, 8},   {"_Plus_1+1-4", 1, 4},   {"_Plus_1+3-8", 3, 8},   {"_Plus_1+1-2", 1, 2},
    {"_Plus_1+5-8", 5, 8},   {"_Plus_1+3-4", 3, 4},   {"_Plus_1+7-8", 7, 8},   {"_Plus_1+1", 1, 1},
    {"_Plus_1+9-8", 9, 8},   {"_Plus_1+5-4", 5, 4},   {"_Plus_1+11-8", 11, 8}, {"_Plus_1+3-2", 3, 2},
    {"_Plus_1+13-8", 13, 8}, {"_Plus_1+7-4", 7, 4},   {"_Plus_1+15-8", 15, 8}, {"_Plus_1+2", 2, 1},
    {"_Plus_1+17-8", 17, 8}, {"_Plus_1+9-4", 9, 4},   {"_Plus_1+19-8", 19, 8}, {"_Plus_1+5-2", 5, 2},
    {"_Plus_1+3", 3, 1},     {"_Plus_1+7-2", 7, 2},
};

// Each lengthening renders from its fraction: style 1 writes it, style 2 the factor, styles 3 and 6
// count halves on A3, quarters (3) or eighths (6) on the others, style 4 a "+" per quarter and the
// eighths below one as a fraction. The odd eighths above one are trapped by the key "_Plus_1+1"
// and checked below.
TEST(PaperNameStyles, EveryLengtheningRendersFromItsFraction) {
  for (const Key& k : kKeys) {
    const int eighths = 8 * k.numerator / k.denominator;
    if (eighths > 8 && eighths % 2 == 1) continue;
    SCOPED_TRACE(k.key);
    const double f = static_cast<double>(k.numerator) / k.denominator;
    for (const char* base : {"A3", "A2"}) {
      const std::string name = std::string("TV_") + base + k.key;
      const bool a3 = std::string(base) == "A3";
      EXPECT_EQ(Rendered(name, 1), base + ("+" + Decimal(f)));
      EXPECT_EQ(Rendered(name, 2), Decimal(1 + f) + base);
      EXPECT_EQ(Rendered(name, 3), base + ("+" + Decimal((a3 ? 2 : 4) * f)));
      EXPECT_EQ(Rendered(name, 6), base + ("+" + Decimal((a3 ? 2 : 8) * f)));
      const std::string plusses = eighths % 2 == 0 ? std::string(eighths / 2, '+') : "+" + std::to_string(eighths) + "\u22158";
      EXPECT_EQ(Rendered(name, 4), base + plusses);
    }
  }
}

TEST(PaperNameStyles, PlainAndWidthKeyedNamesOnlyLoseTheirPrefix) {
  for (std::int32_t style = -1; style <= 7; ++style) {
    SCOPED_TRACE(style);
    EXPECT_EQ(Rendered("TV_A3", style), "A3");
    EXPECT_EQ(Rendered("TV_B0", style), "B0");
    EXPECT_EQ(Rendered("TV_733x512", style), "733x512");
    EXPECT_EQ(Rendered("TV_A3_Plus_700", style), style == 5 ? "A3+" : "A3加长_700");
  }
}

TEST(PaperNameStyles, StylesRenderTheSamplePapers) {
  // The four papers the style forms show: 630x297, 1040x420, 1892x594, 1486x841.
  const std::vector<std::string> names = {"TV_A3_Plus_1+1-2", "TV_A2_Plus_1+3-4", "TV_A1_Plus_1+5-4",
                                          "TV_A0_Plus_1+1-4"};
  const std::vector<std::vector<std::string>> expected = {
      {"A3+1\u22152", "A2+3\u22154", "A1+5\u22154", "A0+1\u22154"},
      {"A3+0.5", "A2+0.75", "A1+1.25", "A0+0.25"},
      {"1.5A3", "1.75A2", "2.25A1", "1.25A0"},
      {"A3+1", "A2+3", "A1+5", "A0+1"},
      {"A3++", "A2+++", "A1+++++", "A0+"},
      {"A3+", "A2+", "A1+", "A0+"},
      {"A3+1", "A2+6", "A1+10", "A0+2"},
  };
  for (std::int32_t style = 0; style < kPaperNameStyleCount; ++style) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      EXPECT_EQ(Rendered(names[i], style), expected[style][i]) << "style " << style << " " << names[i];
    }
  }
}

TEST(PaperNameStyles, SpecialCasesOfTheStyles) {
  struct Case {
    const char* name;
    std::int32_t style;
    const char* rendered;
  };
  const Case cases[] = {
      // Style 0 writes the fraction with a division slash; styles out of range behave as style 0.
      {"TV_A3_Plus_1+1-2", 0, "A3+1\u22152"}, {"TV_A0_Plus_1+1", 0, "A0+1"},
      {"TV_A1_Plus_1+3-4", 9, "A1+3\u22154"}, {"TV_A1_Plus_1+3-4", -2, "A1+3\u22154"},
      // Style 5 marks every lengthened paper with one plus.
      {"TV_A0_Plus_1+1", 5, "A0+"}, {"TV_A4", 5, "A4"},
      // The key "_Plus_1+1" is a prefix of the odd eighths above one and wins: its "1" is taken
      // from the numerator and the rest of the fraction stays behind (`tvplot paper 1412x420` shows
      // 11/8 in every style).
      {"TV_A2_Plus_1+13-8", 1, "A2+13-8"},
      {"TV_A2_Plus_1+13-8", 2, "2A23-8"}, {"TV_A1_Plus_1+11-8", 2, "2A11-8"}, {"TV_A2_Plus_1+15-8", 2, "2A25-8"},
      {"TV_A2_Plus_1+17-8", 3, "A2+47-8"}, {"TV_A2_Plus_1+19-8", 6, "A2+89-8"},
      // Style 4 keeps odd eighths above seven as they are.
      {"TV_A2_Plus_1+9-8", 4, "A2_Plus_1+9-8"}, {"TV_A2_Plus_1+1-8", 4, "A2+1\u22158"},
  };
  for (const Case& c : cases) EXPECT_EQ(Rendered(c.name, c.style), c.rendered) << c.name << " style " << c.style;
}

}  // namespace
}  // namespace tv::paper
