#pragma once
// The file name form of a review row ("  文 件 名  "): one field that must not be empty. Given to
// several rows at once, the name is a stem and each row gets it with its running number.
#include <cstdint>
#include <string>
#include <string_view>

namespace tv::titleblock {

struct Dlg_FileName {
  static constexpr std::string_view kEmpty = "文件名不能为空 !";

  std::string name;  // the field

  // OK: the name cleaned for a file and trimmed into `result`; an empty one is refused with
  // `message` set to kEmpty.
  bool ok(std::string& result, std::string& message) const;
  // The name of the `k`th of several rows (from 0): the stem, then start + k in `digits` digits.
  static std::string UnifiedName(std::string_view stem, std::int32_t start, std::int32_t digits, std::size_t k);
};

}  // namespace tv::titleblock
