#include "signing/stamp_choice.h"

#include <charconv>

#include "host/editor.h"

namespace tv::signing {

namespace {

constexpr int kUnclassified = 4;

bool CodeMatches(const std::string& typed, std::int32_t code) {
  std::size_t begin = typed.find_first_not_of(' '), end = typed.find_last_not_of(' ');
  if (begin == std::string::npos) return false;
  std::int64_t value = -1;
  const char* first = typed.data() + begin;
  const char* last = typed.data() + end + 1;
  const auto [ptr, ec] = std::from_chars(first, last, value);
  return ec == std::errc() && ptr == last && value == code;
}

std::string ReasonOf(std::size_t kind, bool listEmpty, bool position) {
  const std::string word = kStampKindWords[kind];
  if (listEmpty && !position) return "印章库内无" + word + "，所选图框也未录入" + word + "位置";
  if (listEmpty) return "印章库内无" + word;
  return "所选图框未录入" + word + "位置";
}

std::optional<std::size_t> AskRow() {
  std::int32_t row = 0;
  if (host::CurrentEditor().getInteger("\n行号 (1 - 4): ", row) != host::RTNORM) return std::nullopt;
  if (row < 1 || row > static_cast<std::int32_t>(kStampKindCount)) {
    host::Print("\n无效的行号。");
    return std::nullopt;
  }
  return static_cast<std::size_t>(row - 1);
}

void Show(const StampChoiceForm& form) {
  host::CurrentEditor().showList(kStampChoiceTitle, {" 序号 ", " 印章 ", " 打印 ", "  印  章  名  ", " 授权码： ", " 状态 "},
                                 form.cells());
}

// OK: a wrong code says so and keeps the form; otherwise the choices go to the settings.
bool TryOk(const StampChoiceForm& form, settings::PlotSettingRec& setting) {
  if (const auto wrong = form.wrongCode()) {
    host::CurrentEditor().messageBox(WrongCodeMessage(*wrong), "Tarvex", host::MessageButtons::Ok);
    return false;
  }
  form.store(setting);
  return true;
}

}  // namespace

const TV_Stamp* StampChoiceRow::stamp() const {
  return selected >= 0 && static_cast<std::size_t>(selected) < stamps.size() ? stamps[static_cast<std::size_t>(selected)]
                                                                            : nullptr;
}

bool StampChoiceRow::codeNeeded() const { return ticked && stamp() && stamp()->auth_code >= 1; }

std::string StampChoiceRow::mark() const {
  if (!ticked || !stamp()) return "";
  return !codeNeeded() || CodeMatches(code, stamp()->auth_code) ? "√" : "X";
}

StampChoiceForm StampChoiceForm::Open(const StampLibrary& library, const std::array<bool, kStampKindCount>& positions,
                                      const settings::PlotSettingRec& setting) {
  StampChoiceForm form;
  const auto choices = StampChoices(setting);
  for (std::size_t kind = 0; kind < kStampKindCount; ++kind) {
    StampChoiceRow& row = form.rows[kind];
    for (const auto& s : library.stamps)
      if (s->enabled != 0 && (s->stamp_kind == static_cast<std::int32_t>(kind) || s->stamp_kind == kUnclassified))
        row.stamps.push_back(s.get());
    row.usable = !row.stamps.empty() && positions[kind];
    if (!row.usable) {
      row.reason = ReasonOf(kind, row.stamps.empty(), positions[kind]);
      continue;
    }
    row.ticked = choices[kind].on;
    row.selected = 0;
    for (std::size_t i = 0; i < row.stamps.size(); ++i)
      if (row.stamps[i]->name == choices[kind].name) {
        row.selected = static_cast<int>(i);
        break;
      }
  }
  return form;
}

std::optional<std::size_t> StampChoiceForm::wrongCode() const {
  for (std::size_t kind = 0; kind < kStampKindCount; ++kind)
    if (rows[kind].codeNeeded() && rows[kind].mark() != "√") return kind;
  return std::nullopt;
}

void StampChoiceForm::store(settings::PlotSettingRec& setting) const {
  const auto before = StampChoices(setting);
  for (std::size_t kind = 0; kind < kStampKindCount; ++kind) {
    const StampChoiceRow& row = rows[kind];
    const bool plots = row.ticked && row.stamp();
    SetStampChoice(setting, kind, {plots, plots ? row.stamp()->name : before[kind].name});
  }
}

std::vector<std::vector<std::string>> StampChoiceForm::cells() const {
  std::vector<std::vector<std::string>> out;
  for (std::size_t kind = 0; kind < kStampKindCount; ++kind) {
    const StampChoiceRow& row = rows[kind];
    std::vector<std::string> line{std::to_string(kind + 1), kStampKindWords[kind], row.ticked ? "√" : "□"};
    if (!row.usable) {
      line.insert(line.end(), {row.reason, "", ""});
    } else {
      std::string code = "—";
      if (row.codeNeeded()) code = row.code.empty() ? "（请输入）" : std::string(row.code.size(), '*');
      line.insert(line.end(), {row.stamp() ? row.stamp()->name : "", code, row.mark()});
    }
    out.push_back(std::move(line));
  }
  return out;
}

std::string WrongCodeMessage(std::size_t kind) {
  return std::string(kStampKindWords[kind < kStampKindCount ? kind : 0]) + "的授权码有误 !";
}

std::optional<std::array<std::string, kStampKindCount>>& PresetStampCodes() {
  static std::optional<std::array<std::string, kStampKindCount>> codes;
  return codes;
}

bool ChooseStamps(const std::array<bool, kStampKindCount>& sheetPositions, settings::PlotSettingRec& setting) {
  StampChoiceForm form = StampChoiceForm::Open(GlobalStampLibrary(), sheetPositions, setting);
  if (const auto& preset = PresetStampCodes()) {
    for (std::size_t kind = 0; kind < kStampKindCount; ++kind) form.rows[kind].code = (*preset)[kind];
    return TryOk(form, setting);
  }
  host::Editor& editor = host::CurrentEditor();
  Show(form);
  while (true) {
    std::string answer;
    if (editor.getString("\n勾选(T)/印章(S)/授权码(A)/确定(O)/取消(C) <确定>: ", answer) != host::RTNORM) return false;
    const char a = answer.empty() ? 'o' : static_cast<char>(answer[0] | 0x20);
    if (a == 'o') {
      if (TryOk(form, setting)) return true;
      continue;
    }
    if (a == 'c') return false;
    if (a != 't' && a != 's' && a != 'a') continue;
    const auto kind = AskRow();
    if (!kind) continue;
    StampChoiceRow& row = form.rows[*kind];
    if (!row.usable) {
      host::Print("\n" + row.reason);
      continue;
    }
    if (a == 't') {
      row.ticked = !row.ticked;
    } else if (a == 's') {
      std::vector<std::string> names;
      for (const TV_Stamp* s : row.stamps) names.push_back(s->name);
      if (const auto pick = editor.chooseItem(kStampKindWords[*kind], names, row.selected)) row.selected = *pick;
    } else if (!row.codeNeeded()) {
      host::Print("\n该印章无需授权码。");
      continue;
    } else if (editor.getString("\n授权码：", answer) == host::RTNORM) {
      row.code = answer;
    }
    Show(form);
  }
}

}  // namespace tv::signing
