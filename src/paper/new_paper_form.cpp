#include "paper/new_paper_form.h"

#include <cmath>

#include "host/whole_number.h"

namespace tv::paper {
namespace {

constexpr double kLargest = 5080.0;  // 200 inches, the widest roll a plotter driver accepts
constexpr double kSmallest = 50.0;

struct Remembered {
  double length = 0.0;
  double width = 0.0;
};

Remembered& LastValues() {
  static Remembered values;
  return values;
}

std::int32_t Truncated(double value) { return SaturatedInt(value); }

}  // namespace

Dlg_New_Paper::Dlg_New_Paper() : length(LastValues().length), width(LastValues().width) {}

Dlg_New_Paper::Check Dlg_New_Paper::Validate() const {
  using Outcome = Check::Outcome;
  // "!(x > 0)" so that a NaN is refused too.
  if (!(length > 0.0)) return {Outcome::Refused, Field::Length, std::string(kNotPositive)};
  if (!(width > 0.0)) return {Outcome::Refused, Field::Width, std::string(kNotPositive)};
  if (length > kLargest) return {Outcome::Refused, Field::Length, std::string(kTooLarge)};
  if (width > kLargest) return {Outcome::Refused, Field::Width, std::string(kTooLarge)};
  if (length < kSmallest) return {Outcome::AskSmall, Field::Length, std::string(kTooSmall)};
  if (width < kSmallest) return {Outcome::AskSmall, Field::Width, std::string(kTooSmall)};
  return {};
}

bool Dlg_New_Paper::Accept(const std::function<bool(std::string_view question)>& confirmSmall,
                           std::string& message, Field& focus) {
  const Check check = Validate();
  if (check.outcome == Check::Outcome::Refused ||
      (check.outcome == Check::Outcome::AskSmall && !(confirmSmall && confirmSmall(check.message)))) {
    message = check.message;
    focus = check.field;
    return false;
  }
  message.clear();
  customLength = Truncated(length);
  customWidth = Truncated(width);
  LastValues() = {length, width};
  return true;
}

bool Dlg_New_Paper::Validate(std::string& message) {
  Field focus = Field::Length;
  return Accept(nullptr, message, focus);
}

}  // namespace tv::paper
