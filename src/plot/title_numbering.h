#pragma once
// The numbering of the title-block list: "图号重编", which gives the rows new drawing numbers, and
// "文件名前面插入序号", the serial before every file name, whose five values are the library's and
// are saved to its file alone.
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "titleblock/tuhao_form.h"

namespace tv::plot {

struct Dlg_BPlot2;

// "图号重编" on the command line: prefix, start, suffix and digits asked with the form's sample,
// the last numbers of this process offered; nullopt when cancelled or not confirmed.
std::optional<titleblock::Dlg_TuHao> AskRenumbering(std::size_t rowCount);
// The drawing numbers of `rows` (in list order) from the form's numbers, the first row taking the
// start. The caller rebuilds the names that follow the rule.
void RenumberRows(Dlg_BPlot2& form, const std::vector<std::size_t>& rows, const titleblock::Dlg_TuHao& numbers);

// What "文件名前面插入序号" shows: on or off, and the first serial as it leads a name.
std::string SerialNamingText();
// "文件名前面插入序号": "是"/"否" typed switches it; nothing typed asks all five values. An accepted
// change goes into the library in memory and into its file alone, so the definitions in use by
// the list stay as they are. False when nothing changed.
bool EditSerialNaming(const std::string& typed);

}  // namespace tv::plot
