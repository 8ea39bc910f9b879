#pragma once
// The stamp form "印章" and the flow that adds a stamp from a picture file. A plain model of the
// form's fields; whoever shows it sets them and presses OK with `check` and `store`.
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/pictures.h"
#include "signing/stamp_library.h"

namespace tv::signing {

class Dlg_Stamp {
 public:
  static constexpr std::string_view kTitle = "印章";
  enum class Field { Name, Code, Kind, Width, ValidUntil };

  // A failed check of OK: what is shown (title "Tarvex") and which field takes the focus.
  struct Refusal {
    std::string message;
    Field focus;
  };

  // Opens on `stamp`. `picture` is the picture's size, when it could be opened.
  Dlg_Stamp(const TV_Stamp& stamp, std::optional<host::PictureSize> picture);

  std::string name;
  std::int64_t auth_code = 0;
  std::int32_t stamp_kind = 0;
  double width = 62.0;
  std::int32_t valid_until = 20250212;

  // The checks of OK in their order: an empty name, a code above 999999, a width outside 10 to 200.
  std::optional<Refusal> check() const;
  // Stores the fields; the height follows the width in the picture's proportions.
  void store(TV_Stamp& stamp) const;
  const std::optional<host::PictureSize>& picture() const { return picture_; }

 private:
  std::optional<host::PictureSize> picture_;
};

// Whether `yyyymmdd` is a date the form can open on: from 1970 on, month 1 to 12, day 1 to 31.
bool IsStampDate(std::int64_t yyyymmdd);
// Whether the date picker offers `yyyymmdd`: a real date within 3650 days of `today`.
bool InDatePickerRange(std::int64_t yyyymmdd, std::chrono::sys_days today);
std::chrono::sys_days LocalToday();

// The picture's size as the form shows it: the bytes go to the scratch file temp.zip2 in the data
// folder and are opened from there.
std::optional<host::PictureSize> StampPictureSize(const TV_Stamp& stamp);

// Runs the form on the host: each field is asked with its value as default, then OK is checked;
// a refused field is asked again. False when the user cancelled.
bool RunStampForm(TV_Stamp& stamp);

// Asks for a picture ("请选择印章图片..."), reads it ("印章图片读取有误 !" when it can't be), runs
// the stamp form and appends the new stamp. A name the library holds is not refused here: the
// reload after saving keeps the older stamp.
bool AddStampFromImage(StampLibrary& library);

}  // namespace tv::signing
