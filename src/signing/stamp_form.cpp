#include "signing/stamp_form.h"

#include <cmath>
#include <ctime>

#include "host/editor.h"
#include "signing/library_codes.h"
#include "host/text_files.h"
#include "settings/folders.h"

namespace tv::signing {

namespace {

using namespace std::chrono;

constexpr std::string_view kCodeRange = "授权码超出范围 !\n\n授权码范围: 0 - 999999\n\n输入 0 表示无需授权";
constexpr std::string_view kWidthRange = "印章尺寸有误，应在 10 - 200 mm之间 !";

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::optional<sys_days> DateOf(std::int64_t yyyymmdd) {
  const year_month_day d{year(static_cast<int>(yyyymmdd / 10000)), month(static_cast<unsigned>(yyyymmdd / 100 % 100)),
                         day(static_cast<unsigned>(yyyymmdd % 100))};
  if (yyyymmdd < 0 || !d.ok()) return std::nullopt;
  return sys_days(d);
}

std::string Number(double v) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", v);
  return buffer;
}

}  // namespace

Dlg_Stamp::Dlg_Stamp(const TV_Stamp& stamp, std::optional<host::PictureSize> picture)
    : name(stamp.name),
      auth_code(stamp.auth_code),
      stamp_kind(stamp.stamp_kind),
      width(stamp.width),
      valid_until(stamp.valid_until),
      picture_(picture) {}

std::optional<Dlg_Stamp::Refusal> Dlg_Stamp::check() const {
  if (Trimmed(name).empty()) return Refusal{"印章名不能为空 !", Field::Name};
  if (auth_code > 999999 || auth_code < 0) return Refusal{std::string(kCodeRange), Field::Code};
  if (!(width >= 10.0 && width <= 200.0)) return Refusal{std::string(kWidthRange), Field::Width};
  return std::nullopt;
}

void Dlg_Stamp::store(TV_Stamp& stamp) const {
  stamp.name = Trimmed(name);
  stamp.auth_code = static_cast<std::int32_t>(auth_code);
  stamp.valid_until = valid_until;
  stamp.width = width;
  stamp.stamp_kind = stamp_kind;
  if (picture_ && picture_->width > 0) stamp.height = width * picture_->height / picture_->width;
}

bool IsStampDate(std::int64_t yyyymmdd) {
  const std::int64_t m = yyyymmdd / 100 % 100, d = yyyymmdd % 100;
  return yyyymmdd >= 19700101 && m >= 1 && m <= 12 && d >= 1 && d <= 31;
}

bool InDatePickerRange(std::int64_t yyyymmdd, sys_days today) {
  const std::optional<sys_days> date = DateOf(yyyymmdd);
  return date && *date >= today - days(3650) && *date <= today + days(3650);
}

sys_days LocalToday() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return sys_days(year_month_day{year(local.tm_year + 1900), month(static_cast<unsigned>(local.tm_mon + 1)),
                                 day(static_cast<unsigned>(local.tm_mday))});
}

std::optional<host::PictureSize> StampPictureSize(const TV_Stamp& stamp) {
  if (stamp.image.empty() || settings::DataFolder().empty()) return std::nullopt;
  const std::string scratch = settings::DataFolder() + "/temp.zip2";
  if (!host::WriteFileReplacing(scratch, stamp.image)) return std::nullopt;
  return host::OpenPicture(scratch);
}

bool RunStampForm(TV_Stamp& stamp) {
  host::Editor& editor = host::CurrentEditor();
  if (!IsStampDate(stamp.valid_until)) {
    host::Print("\n印章有效期 " + std::to_string(stamp.valid_until) + " 不是有效的日期。");
    return false;
  }
  Dlg_Stamp form(stamp, StampPictureSize(stamp));
  host::Print("\n" + std::string(Dlg_Stamp::kTitle));
  if (const auto& p = form.picture())
    host::Print("\n印章图片：" + std::to_string(p->width) + " x " + std::to_string(p->height) + " 像素");
  else
    host::Print("\n印章图片无法显示。");

  const auto askName = [&] {
    std::string answer;
    const std::string prompt = form.name.empty() ? "\n印章名：" : "\n印章名： <" + form.name + ">: ";
    if (editor.getString(prompt, answer) != host::RTNORM) return false;
    if (!Trimmed(answer).empty() || form.name.empty()) form.name = answer;
    return true;
  };
  const auto askCode = [&] { return AskAuthCode(form.auth_code); };
  const auto askKind = [&] {
    std::vector<std::string> kinds(std::begin(kStampKindNames), std::end(kStampKindNames));
    const std::optional<int> kind = editor.chooseItem("印章类型", kinds, form.stamp_kind);
    if (!kind) return false;
    form.stamp_kind = *kind;
    return true;
  };
  const auto askWidth = [&] {
    double w = form.width;
    const int rc = editor.getReal("\n印章宽度：(mm) <" + Number(form.width) + ">: ", w);
    if (rc == host::RTCAN) return false;
    if (rc == host::RTNORM) form.width = w;
    return true;
  };
  const auto askDate = [&] {
    while (true) {
      std::int32_t date = form.valid_until;
      const int rc = editor.getInteger("\n有效期：(年月日，如 20300101) <" + std::to_string(form.valid_until) + ">: ", date);
      if (rc == host::RTCAN) return false;
      if (rc != host::RTNORM) return true;
      // The date picker offers real dates within ten years of today only.
      if (InDatePickerRange(date, LocalToday())) {
        form.valid_until = date;
        return true;
      }
      host::Print("\n日期应为今天前后 3650 天以内的有效日期。");
    }
  };
  const auto ask = [&](Dlg_Stamp::Field field) {
    switch (field) {
      case Dlg_Stamp::Field::Name: return askName();
      case Dlg_Stamp::Field::Code: return askCode();
      case Dlg_Stamp::Field::Kind: return askKind();
      case Dlg_Stamp::Field::Width: return askWidth();
      case Dlg_Stamp::Field::ValidUntil: return askDate();
    }
    return false;
  };
  for (Dlg_Stamp::Field f : {Dlg_Stamp::Field::Name, Dlg_Stamp::Field::Code, Dlg_Stamp::Field::Kind,
                             Dlg_Stamp::Field::Width, Dlg_Stamp::Field::ValidUntil})
    if (!ask(f)) return false;
  while (const std::optional<Dlg_Stamp::Refusal> refusal = form.check()) {
    editor.messageBox(refusal->message, "Tarvex", host::MessageButtons::Ok);
    if (!ask(refusal->focus)) return false;
  }
  form.store(stamp);
  return true;
}

bool AddStampFromImage(StampLibrary& library) {
  host::Editor& editor = host::CurrentEditor();
  const std::optional<std::string> path = editor.askOpenPath("请选择印章图片...", "png");
  if (!path) return false;
  auto stamp = std::make_unique<TV_Stamp>();
  if (!LoadStampImage(*stamp, *path)) {
    editor.messageBox("印章图片读取有误 !", "增加印章", host::MessageButtons::Ok);
    return false;
  }
  if (!RunStampForm(*stamp)) return false;
  library.stamps.push_back(std::move(stamp));
  return true;
}

}  // namespace tv::signing
