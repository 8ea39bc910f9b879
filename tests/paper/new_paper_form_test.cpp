#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "paper/new_paper_form.h"

namespace tv::paper {
namespace {

using Field = Dlg_New_Paper::Field;
using Outcome = Dlg_New_Paper::Check::Outcome;

Dlg_New_Paper Form(double length, double width) {
  Dlg_New_Paper form;
  form.length = length;
  form.width = width;
  return form;
}

TEST(NewPaperForm, ChecksRunInOrderAndTheFirstFailureDecides) {
  struct Case {
    double length, width;
    Outcome outcome;
    Field field;
    const char* message;
  };
  const Case cases[] = {
      {0, 0, Outcome::Refused, Field::Length, "尺寸应大于 0 !"},
      {-3, 6000, Outcome::Refused, Field::Length, "尺寸应大于 0 !"},
      {6000, -1, Outcome::Refused, Field::Width, "尺寸应大于 0 !"},  // above 0 for both before size
      {5080.5, 10, Outcome::Refused, Field::Length, "尺寸过大，不能超过 5080 mm (即200英寸) !"},
      {10, 5081, Outcome::Refused, Field::Width, "尺寸过大，不能超过 5080 mm (即200英寸) !"},
      {5080, 5080, Outcome::Accepted, Field::Length, ""},
      {49.9, 5080, Outcome::AskSmall, Field::Length, "尺寸过小，小于50 mm。\n\n是否确认 ？"},
      {100, 20, Outcome::AskSmall, Field::Width, "尺寸过小，小于50 mm。\n\n是否确认 ？"},
      {50, 50, Outcome::Accepted, Field::Length, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.length) + " x " + std::to_string(c.width));
    const Dlg_New_Paper::Check check = Form(c.length, c.width).Validate();
    EXPECT_EQ(check.outcome, c.outcome);
    EXPECT_EQ(check.message, c.message);
    if (c.outcome != Outcome::Accepted) {
      EXPECT_EQ(check.field, c.field);
    }
  }
  EXPECT_EQ(Form(std::nan(""), 100).Validate().outcome, Outcome::Refused);
}

TEST(NewPaperForm, SmallSizeNeedsAYesAndAcceptedValuesAreTruncatedAndRemembered) {
  Dlg_New_Paper form = Form(700.9, 30.5);
  std::string message;
  Field focus = Field::Length;
  std::string asked;
  EXPECT_FALSE(form.Accept([&](std::string_view q) { asked = q; return false; }, message, focus));
  EXPECT_EQ(asked, "尺寸过小，小于50 mm。\n\n是否确认 ？");
  EXPECT_EQ(focus, Field::Width);
  EXPECT_FALSE(form.Validate(message));  // nobody to say yes

  ASSERT_TRUE(form.Accept([](std::string_view) { return true; }, message, focus));
  EXPECT_TRUE(message.empty());
  EXPECT_EQ(form.customLength, 700);
  EXPECT_EQ(form.customWidth, 30);

  const Dlg_New_Paper reopened;
  EXPECT_DOUBLE_EQ(reopened.length, 700.9);
  EXPECT_DOUBLE_EQ(reopened.width, 30.5);

  // A refused form is not remembered.
  Dlg_New_Paper bad = Form(-1, 10);
  EXPECT_FALSE(bad.Validate(message));
  EXPECT_EQ(message, "尺寸应大于 0 !");
  EXPECT_DOUBLE_EQ(Dlg_New_Paper().length, 700.9);
}

}  // namespace
}  // namespace tv::paper
