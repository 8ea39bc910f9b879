#include "plot/title_numbering.h"

#include <cstdint>

#include "host/editor.h"
#include "plot/list_command.h"
#include "plot/title_review.h"
#include "titleblock/file_naming.h"
#include "titleblock/tk_library.h"

namespace tv::plot {

namespace {

// A text typed at a prompt; Enter keeps `current`, "" (two quotes) empties it.
std::optional<std::string> AskText(const std::string& label, const std::string& current) {
  std::string answer;
  if (host::CurrentEditor().getString("\n" + label + " <" + current + ">: ", answer) != host::RTNORM) return std::nullopt;
  const std::string_view a = TrimAnswer(answer);
  if (a.empty()) return current;
  if (a == "\"\"") return std::string();
  return std::string(a);
}

// A whole number asked until one is typed; nullopt when cancelled.
std::optional<std::int32_t> AskWhole(const std::string& label, std::int32_t current, std::int32_t low,
                                     std::int32_t high, const std::string& refusal) {
  while (true) {
    const std::optional<std::string> typed = AskText(label, std::to_string(current));
    if (!typed) return std::nullopt;
    // A lone "-" is a number being entered: it is asked for again, as the form waits for it.
    if (!titleblock::Dlg_TuHao::Refreshes(*typed)) continue;
    if (const std::optional<std::int32_t> v = WholeIn(*typed, low, high)) return v;
    host::Print("\n" + refusal);
  }
}

std::optional<bool> YesOrNo(std::string_view text) {
  const std::string t = WithoutBlanks(text);
  for (const char* yes : {"是", "Y", "y", "1", "开", "ON", "on"})
    if (t == yes) return true;
  for (const char* no : {"否", "N", "n", "0", "关", "OFF", "off"})
    if (t == no) return false;
  return std::nullopt;
}

// The five values into the user's file, the rest of the file as it is on disk. The library in
// memory is not read again: the open list holds its definitions.
bool SaveNaming(const titleblock::TK_Library& library) {
  titleblock::TK_Library scratch;
  scratch.InsertSerial = library.InsertSerial;
  scratch.SerialPrefix = library.SerialPrefix;
  scratch.SerialStart = library.SerialStart;
  scratch.SerialSuffix = library.SerialSuffix;
  scratch.SerialDigits = library.SerialDigits;
  return titleblock::SaveTkNamingOnly(scratch);
}

constexpr std::string_view kSerialNaming = "文件名前面插入序号";

}  // namespace

std::optional<titleblock::Dlg_TuHao> AskRenumbering(std::size_t rowCount) {
  static titleblock::Dlg_TuHao last;  // the numbers of the last renumbering, offered again
  titleblock::Dlg_TuHao form = last;
  host::Print("\n" + std::string(titleblock::Dlg_TuHao::kTitle) + "（回车保留，\"\" 清空）\n" + form.sample());
  const std::optional<std::string> prefix = AskText("前  缀", form.Prefix);
  if (!prefix) return std::nullopt;
  form.Prefix = *prefix;
  const std::optional<std::int32_t> start = AskWhole("起始序号", form.start, -999999, 999999, "起始序号应为整数。");
  if (!start) return std::nullopt;
  form.start = *start;
  const std::optional<std::string> suffix = AskText("后  缀", form.suffix);
  if (!suffix) return std::nullopt;
  form.suffix = *suffix;
  const std::optional<std::int32_t> digits = AskWhole("序号位数", form.digits, 1, 9, "序号位数应在 1 到 9 之间。");
  if (!digits) return std::nullopt;
  form.digits = *digits;
  host::Print("\n" + form.sample());
  std::string answer;
  if (host::CurrentEditor().getString(
          "\n按此重编 " + std::to_string(rowCount) + " 行的图号？ [是(Y)/否(N)] <是>: ", answer) != host::RTNORM)
    return std::nullopt;
  if (!TrimAnswer(answer).empty() && YesOrNo(answer) != true) return std::nullopt;
  last = form;
  return form;
}

void RenumberRows(Dlg_BPlot2& form, const std::vector<std::size_t>& rows, const titleblock::Dlg_TuHao& numbers) {
  for (std::size_t k = 0; k < rows.size(); ++k)
    if (rows[k] < form.rows.size())
      form.rows[rows[k]].sheet->field_text[0] = numbers.number(static_cast<std::int32_t>(k));
}

std::string SerialNamingText() {
  const titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  std::string text = library.InsertSerial ? "[√]" : "[  ]";
  text += " " + library.SerialPrefix + titleblock::SerialText(library.SerialStart, library.SerialDigits) +
          library.SerialSuffix + "…";
  return text;
}

bool EditSerialNaming(const std::string& typed) {
  titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  if (!TrimAnswer(typed).empty()) {
    const std::optional<bool> on = YesOrNo(typed);
    if (!on) {
      host::Print("\n无效的选择：" + typed + "（是/否）。");
      return false;
    }
    library.InsertSerial = *on ? 1 : 0;
  } else {
    host::Print("\n" + std::string(kSerialNaming) + "（回车保留，\"\" 清空）");
    const std::optional<std::string> onText = AskText(std::string(kSerialNaming), library.InsertSerial ? "是" : "否");
    if (!onText) return false;
    const std::optional<bool> on = YesOrNo(*onText);
    if (!on) {
      host::Print("\n无效的选择：" + *onText + "（是/否）。");
      return false;
    }
    const std::optional<std::string> prefix = AskText("前  缀", library.SerialPrefix);
    if (!prefix) return false;
    const std::optional<std::int32_t> start =
        AskWhole("起始序号", library.SerialStart, -999999, 999999, "起始序号应为整数。");
    if (!start) return false;
    const std::optional<std::string> suffix = AskText("序号后缀", library.SerialSuffix);
    if (!suffix) return false;
    const std::optional<std::int32_t> digits =
        AskWhole("序号位数", library.SerialDigits, 1, 9, "序号位数应在 1 到 9 之间。");
    if (!digits) return false;
    library.InsertSerial = *on ? 1 : 0;
    library.SerialPrefix = titleblock::CleanFileName(*prefix, true);
    library.SerialStart = *start;
    library.SerialSuffix = titleblock::CleanFileName(*suffix, true);
    library.SerialDigits = *digits;
  }
  if (!SaveNaming(library)) host::Print("\n序号设置未能写入 " + titleblock::DefaultTkPath() + "。");
  return true;
}

}  // namespace tv::plot
