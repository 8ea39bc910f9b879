// The form "印章授权": which rows can be ticked and why not, the code marks, the OK checks and what
// goes to the settings.
#include <gtest/gtest.h>

#include "signing/stamp_choice.h"

namespace tv::signing {
namespace {

std::unique_ptr<TV_Stamp> Stamp(const char* name, std::int32_t kind, std::int32_t code = 0, std::int32_t enabled = 1) {
  auto s = std::make_unique<TV_Stamp>();
  s->name = name;
  s->stamp_kind = kind;
  s->auth_code = code;
  s->enabled = enabled;
  return s;
}

StampLibrary Library() {
  StampLibrary l;
  l.stamps.push_back(Stamp("出图A", 1));
  l.stamps.push_back(Stamp("出图B", 1, 0, 0));  // disabled: never offered
  l.stamps.push_back(Stamp("通用", 4, 2468));  // any kind, with a code
  l.stamps.push_back(Stamp("项目A", 2));
  return l;
}

TEST(StampChoice, RowsOfferTheirKindAndTheUnclassifiedOrSayWhyNot) {
  const StampLibrary library = Library();
  StampLibrary issueOnly;
  issueOnly.stamps.push_back(Stamp("出图A", 1));
  settings::PlotSettingRec setting;
  setting.stamp_issue_on = 1;
  setting.stamp_issue_name = "通用";
  setting.stamp_project_on = 1;
  setting.stamp_project_name = "没有的章";
  const StampChoiceForm form = StampChoiceForm::Open(library, {true, true, true, false}, setting);
  struct Row {
    std::vector<std::string> names;
    bool usable, ticked;
    std::string selected, reason;
  };
  const Row expected[] = {
      {{"通用"}, true, false, "通用", ""},
      {{"出图A", "通用"}, true, true, "通用", ""},
      {{"通用", "项目A"}, true, true, "通用", ""},  // a name not in the list: the first row
      {{"通用"}, false, false, "", "所选图框未录入竣工章位置"},
  };
  for (std::size_t k = 0; k < kStampKindCount; ++k) {
    const StampChoiceRow& row = form.rows[k];
    std::vector<std::string> names;
    for (const TV_Stamp* s : row.stamps) names.push_back(s->name);
    EXPECT_EQ(names, expected[k].names) << k;
    EXPECT_EQ(row.usable, expected[k].usable) << k;
    EXPECT_EQ(row.ticked, expected[k].ticked) << k;
    EXPECT_EQ(row.stamp() ? row.stamp()->name : "", expected[k].selected) << k;
    EXPECT_EQ(row.reason, expected[k].reason) << k;
  }
  const StampChoiceForm lean = StampChoiceForm::Open(issueOnly, {true, true, false, false}, setting);
  EXPECT_EQ(lean.rows[0].reason, "印章库内无注册章");
  EXPECT_EQ(lean.rows[2].reason, "印章库内无项目章，所选图框也未录入项目章位置");
}

TEST(StampChoice, CodesAreCheckedInRowOrderAndOnlyNamesOfPlottingRowsAreStored) {
  const StampLibrary library = Library();
  settings::PlotSettingRec setting;
  setting.stamp_issue_on = 1;
  setting.stamp_issue_name = "通用";
  setting.stamp_register_name = "旧名";
  StampChoiceForm form = StampChoiceForm::Open(library, {true, true, true, true}, setting);
  StampChoiceRow& issue = form.rows[1];
  ASSERT_TRUE(issue.codeNeeded());
  struct Case {
    const char* typed;
    const char* mark;
  };
  for (const Case& c : {Case{"", "X"}, Case{"2467", "X"}, Case{"2468x", "X"}, Case{" 2468 ", "√"}}) {
    issue.code = c.typed;
    EXPECT_EQ(issue.mark(), c.mark) << c.typed;
  }
  issue.code = "1";
  EXPECT_EQ(form.wrongCode(), std::optional<std::size_t>(1));
  EXPECT_EQ(WrongCodeMessage(1), "出图章的授权码有误 !");
  issue.code = "2468";
  form.rows[2].ticked = true;
  form.rows[2].selected = 1;  // 项目A: no code
  EXPECT_EQ(form.rows[2].mark(), "√");
  EXPECT_FALSE(form.wrongCode());
  form.store(setting);
  EXPECT_EQ(setting.stamp_register_on, 0);
  EXPECT_EQ(setting.stamp_register_name, "旧名");
  EXPECT_EQ(setting.stamp_issue_on, 1);
  EXPECT_EQ(setting.stamp_issue_name, "通用");
  EXPECT_EQ(setting.stamp_project_on, 1);
  EXPECT_EQ(setting.stamp_project_name, "项目A");
  EXPECT_EQ(setting.stamp_completed_on, 0);
}

}  // namespace
}  // namespace tv::signing
