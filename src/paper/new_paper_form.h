#pragma once
// The custom paper form: two real-number fields, length and width in millimetres. A plain model;
// whoever shows it turns the outcome into focus changes and message boxes.
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tv::paper {

class Dlg_New_Paper {
 public:
  static constexpr std::string_view kTitle = "自定义纸张";
  static constexpr std::string_view kSizeLabel = "纸张尺寸（mm）：";
  static constexpr std::string_view kTimesLabel = "x";

  static constexpr std::string_view kNotPositive = "尺寸应大于 0 !";
  static constexpr std::string_view kTooLarge = "尺寸过大，不能超过 5080 mm (即200英寸) !";
  static constexpr std::string_view kTooSmall = "尺寸过小，小于50 mm。\n\n是否确认 ？";

  enum class Field { Length, Width };

  struct Check {
    enum class Outcome { Accepted, Refused, AskSmall };
    Outcome outcome = Outcome::Accepted;
    Field field = Field::Length;  // the field to focus, its content selected
    std::string message;          // empty when accepted
  };

  // Opens with the values of the last accepted form of this process (0 and 0 the first time).
  Dlg_New_Paper();

  double length = 0.0;  // first field
  double width = 0.0;   // second field

  // The checks of OK, in order; the first failure decides.
  Check Validate() const;

  // OK pressed. `confirmSmall` answers the question about a side under 50 mm (true = Yes). On
  // success the truncated sides are in customLength/customWidth and the values are remembered for
  // the next opening. Otherwise `message` holds what was shown and `focus` the field to go back to.
  bool Accept(const std::function<bool(std::string_view question)>& confirmSmall, std::string& message,
              Field& focus);

  // The same, failing with the question's text where a user would have been asked.
  bool Validate(std::string& message);

  std::int32_t customLength = 0;
  std::int32_t customWidth = 0;
};

}  // namespace tv::paper
