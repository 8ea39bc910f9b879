#pragma once
// A new signature from lines of the drawing: the capture, the name form "签名" and the person
// number of the moment. The form is a plain model of its fields; whoever shows it sets them and
// presses OK with `check` and `store`.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "signing/sign_library.h"

namespace tv::signing {

class Dlg_SignName {
 public:
  static constexpr std::string_view kTitle = "签名";
  enum class Field { Name, Code };

  // A failed check of OK: what is shown (title "Tarvex") and which field takes the focus.
  struct Refusal {
    std::string message;
    Field focus;
  };

  std::string name;
  std::int64_t auth_code = 0;

  // The checks of OK in their order: an empty name (blanks at both ends cut), a code above 999999.
  std::optional<Refusal> check() const;
  // Stores the name, cut of blanks, and the code.
  void store(TV_Sign& sign) const;
};

// Runs the name form on the host, after a line on the captured outlines in place of their
// preview; a refused field is asked again. False when the user cancelled.
bool RunSignNameForm(TV_Sign& sign);

// Captures a signature from the lines the user picks, names it and appends it with a person number
// of the moment's day and time. False, and the library unchanged, when the capture fails or the
// form is cancelled.
bool AddSignFromDrawing(SignLibrary& library);

}  // namespace tv::signing
