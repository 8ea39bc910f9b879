// The text brush as users run it: a source picked, its content replacing or, with Tab held, added
// to the targets, and every other record of the drawing as it was.
#include <gtest/gtest.h>

#include <optional>

#include "../support/tvplot_test.h"
#include "aids/text_brush.h"
#include "aids_drawings.h"
#include "cad/drawing_file.h"
#include "drawing_diff.h"

namespace tv::aids {
namespace {

using namespace test_support;

TEST(BrushContent, OneLineForPlainTargetsAndAnotherVendorsTextAsStored) {
  const struct {
    std::string text, raw, rich, plain;
  } cases[] = {
      {" 第一行\\P第二行 ", "", " 第一行\\P第二行 ", "第一行 第二行"},
      // Another vendor's text: its group 1 as stored, line ends of every kind made blanks.
      {"甲\\P乙", "甲\r\n乙\\n丙", "甲\r\n乙\\n丙", "甲 乙 丙"},
  };
  for (const auto& c : cases) {
    const BrushContent content = MakeBrushContent(c.text, c.raw);
    EXPECT_EQ(content.rich, c.rich);
    EXPECT_EQ(content.plain, c.plain);
  }
  // A text ending in "\P" gets a second one: only its last single character is looked at.
  EXPECT_EQ(JoinWithLineBreak("甲\\P", "乙"), "甲\\P\\P乙");
  EXPECT_EQ(JoinWithLineBreak("甲\n", "乙"), "甲\n乙");
  EXPECT_EQ(JoinWithBlank("甲 ", "乙"), "甲 乙");
  EXPECT_EQ(JoinWithBlank("", "乙"), "乙");
}

class TextBrushTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    cad::Database db = cad::Database::createDefault();
    cad::Insert& block = AddTitleBlock(db, 0, {{"TAG1", "旧值"}, {"TAG2", "第二"}});
    tag1_ = block.attribs[0]->id.handleText();
    cad::BlockRecord& ms = *db.modelSpace();
    blank_ = db.append(ms, MakeText("   ", {0, 700, 0}, 5)).id.handleText();
    auto mtext = std::make_unique<cad::MText>();
    mtext->text = "第一行\\P第二行";
    mtext->position = {0, 200, 0};
    mtext->height = 5;
    lines_ = db.append(ms, std::move(mtext)).id.handleText();
    text_ = db.append(ms, MakeText("old", {0, 300, 0}, 5)).id.handleText();
    auto target = std::make_unique<cad::MText>();
    target->text = "旧";
    target->position = {0, 400, 0};
    target->height = 5;
    mtextTarget_ = db.append(ms, std::move(target)).id.handleText();
    auto def = std::make_unique<cad::AttDef>();
    def->tag = "X";
    def->text = "d";
    def->position = {0, 500, 0};
    def->height = 5;
    attdef_ = db.append(ms, std::move(def)).id.handleText();
    db.append(ms, MakeText("keep", {0, 600, 0}, 5));
    drawing_ = Write("texts.dxf", db);
  }

  struct Outcome {
    RunResult run;
    std::set<std::string> changed;
    std::map<std::string, std::string> texts;  // by handle, the saved text of the changed records
  };
  Outcome Brush(std::vector<std::string> answers) {
    const std::string out = Path("brushed.dxf").string();
    std::vector<std::string> args{"run", drawing_, "TV_BatchPlot_15", "--save-as", out};
    for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
    Outcome o{Run(args), {}, {}};
    EXPECT_EQ(o.run.exitCode, 0) << o.run.out << o.run.err;
    o.changed = ChangedHandles(RecordsByHandle(drawing_), RecordsByHandle(out));
    cad::DxfReadResult saved = cad::ReadDrawing(out);
    EXPECT_TRUE(saved.ok()) << saved.error;
    for (const std::string& h : o.changed) {
      const cad::DbObject* e = saved.db ? saved.db->object(ObjectId::fromHandleText(h)) : nullptr;
      if (const auto* t = cad::As<cad::Text>(e)) o.texts[h] = t->text;
      if (const auto* m = cad::As<cad::MText>(e)) o.texts[h] = m->text;
      if (const auto* d = cad::As<cad::AttDef>(e)) o.texts[h] = d->text;
      if (const auto* a = cad::As<cad::Attrib>(e)) o.texts[h] = a->text;
    }
    return o;
  }

  std::string drawing_, tag1_, blank_, lines_, text_, mtextTarget_, attdef_;
};

TEST_F(TextBrushTest, ReplacesByTheTargetsKindAndAddsWhileTabIsHeld) {
  // The blank text counts as no source; the multiline text after it is taken.
  const Outcome o = Brush({"H " + blank_ + " " + lines_, "H " + text_ + " " + mtextTarget_ + " " + attdef_,
                           "TAB H " + text_, "TAB " + PickAttribute(0, 0), ""});
  const std::map<std::string, std::string> expected{
      {text_, "第一行 第二行 第一行 第二行"},  // one line, and added to with a blank
      {mtextTarget_, "第一行\\P第二行"},       // several lines kept
      {attdef_, "第一行 第二行"},
      {tag1_, "旧值 第一行 第二行"},           // the attribute under the cursor only
  };
  EXPECT_EQ(o.texts, expected);
}

TEST_F(TextBrushTest, AnInsertGivesTheAttributeUnderTheCursor) {
  const struct {
    std::string source;
    std::optional<std::string> copied;  // nullopt: no source
  } cases[] = {
      {PickAttribute(0, 1), "第二"},
      {"C 30,-0.5 31,1", std::nullopt},  // on the block's line, between the attributes
  };
  for (const auto& c : cases) {
    const Outcome o = Brush({c.source, "H " + text_, ""});
    if (c.copied) {
      EXPECT_EQ(o.texts, (std::map<std::string, std::string>{{text_, *c.copied}})) << c.source;
    } else {
      EXPECT_TRUE(o.changed.empty()) << c.source;
      EXPECT_NE(o.run.out.find("未选择到源字符！！！"), std::string::npos) << o.run.out;
    }
  }
}

}  // namespace
}  // namespace tv::aids
