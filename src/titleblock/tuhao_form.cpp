#include "titleblock/tuhao_form.h"

#include "titleblock/file_naming.h"

namespace tv::titleblock {

std::string Dlg_TuHao::number(std::int32_t k) const { return Prefix + SerialText(start + k, digits) + suffix; }

std::string Dlg_TuHao::sample() const {
  return "示   例\n\n" + number(0) + "\n\n" + number(1) + "\n\n" + number(2) + "\n\n..........\n\n" + number(10) +
         "\n\n" + number(11);
}

}  // namespace tv::titleblock
