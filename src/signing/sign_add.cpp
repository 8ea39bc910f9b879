#include "signing/sign_add.h"

#include <cstdio>

#include "host/editor.h"
#include "signing/library_codes.h"
#include "plot/sheet_export.h"
#include "signing/sign_boundary.h"

namespace tv::signing {

namespace {

constexpr std::string_view kCodeRange = "授权码超出范围 !\n\n授权码范围: 0 - 999999\n\n输入 0 表示无需授权";

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

std::optional<Dlg_SignName::Refusal> Dlg_SignName::check() const {
  if (Trimmed(name).empty()) return Refusal{"姓名不能为空 !", Field::Name};
  // The field takes digits only, so a negative code never reaches OK.
  if (auth_code > 999999 || auth_code < 0) return Refusal{std::string(kCodeRange), Field::Code};
  return std::nullopt;
}

void Dlg_SignName::store(TV_Sign& sign) const {
  sign.person_name = Trimmed(name);
  sign.auth_code = static_cast<std::int32_t>(auth_code);
}

bool RunSignNameForm(TV_Sign& sign) {
  host::Editor& editor = host::CurrentEditor();
  Dlg_SignName form;
  form.name = sign.person_name;
  form.auth_code = sign.auth_code;
  char size[96];
  std::snprintf(size, sizeof size, "%g x %g", sign.width, sign.height);
  host::Print("\n" + std::string(Dlg_SignName::kTitle) + "：" + std::to_string(sign.shapes.size()) + " 个轮廓，" + size);

  const auto askName = [&] {
    std::string answer;
    if (editor.getString("\n姓  名：", answer) != host::RTNORM) return false;
    form.name = answer;
    return true;
  };
  const auto askCode = [&] { return AskAuthCode(form.auth_code); };
  const auto ask = [&](Dlg_SignName::Field field) { return field == Dlg_SignName::Field::Name ? askName() : askCode(); };
  if (!askName() || !askCode()) return false;
  while (const std::optional<Dlg_SignName::Refusal> refusal = form.check()) {
    editor.messageBox(refusal->message, "Tarvex", host::MessageButtons::Ok);
    if (!ask(refusal->focus)) return false;
  }
  form.store(sign);
  return true;
}

bool AddSignFromDrawing(SignLibrary& library) {
  auto sign = std::make_unique<TV_Sign>();
  if (!CaptureSign(*sign) || !RunSignNameForm(*sign)) return false;
  sign->person_id = NewPersonId(library, plot::TimeStamp());
  library.signs.push_back(std::move(sign));
  return true;
}

}  // namespace tv::signing
