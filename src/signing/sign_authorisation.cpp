// The approval command: who signed the drawing, the codes their owners type, the days granted.
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "host/editor.h"
#include "host/entity.h"
#include "host/wrappers.h"
#include "signing/sign_approval.h"
#include "signing/sign_entity.h"
#include "signing/sign_globals.h"
#include "signing/sign_library.h"

namespace tv::signing {

namespace {

constexpr std::string_view kCaption = "Tarvex签名授权";
constexpr std::string_view kFormTitle = "签名授权";
constexpr std::int32_t kMaxCode = 999999;
constexpr std::int32_t kMaxDays = 2000;

// The persons of the drawing by what the library says of them, each group sorted by name.
struct Groups {
  std::vector<TV_Sign*> needing;  // records with a code
  std::vector<TV_Sign*> free;     // records without one
  std::vector<std::string> missing;
};

void SortByName(std::vector<TV_Sign*>& records) {
  for (std::size_t i = records.size(); i-- > 0;)
    for (std::size_t j = 0; j < i; ++j)
      if (records[j]->person_name > records[i]->person_name) std::swap(records[j], records[i]);
}

std::vector<std::vector<std::string>> FormRows(const Groups& g) {
  std::vector<std::vector<std::string>> rows;
  char number[16], days[32];
  auto next = [&] {
    std::snprintf(number, sizeof number, "%2d", static_cast<int>(rows.size() + 1));
    return std::string(number);
  };
  for (const TV_Sign* s : g.needing) {
    const int granted = s->days_granted.value_or(0);
    std::snprintf(days, sizeof days, "%2d 天", granted);
    rows.push_back({next(), s->person_name, granted < 1 ? "---" : days, granted < 1 ? "未授权" : "已授权"});
  }
  for (const TV_Sign* s : g.free) rows.push_back({next(), s->person_name, "无需授权", ""});
  for (const std::string& name : g.missing) rows.push_back({next(), name, "签名库中不存在", ""});
  return rows;
}

// The code form: the code checked against the record's, the days of validity. nullopt on cancel.
std::optional<std::int32_t> AskApproval(const TV_Sign& record) {
  host::Editor& editor = host::CurrentEditor();
  while (true) {
    std::int32_t code = 0, days = 0;
    if (editor.getInteger("\n签名授权码：", code) != host::RTNORM) return std::nullopt;
    if (code < 0 || code > kMaxCode) {
      host::Print("\n授权码范围: 0 - 999999");
      continue;
    }
    while (true) {
      if (editor.getInteger("\n授权期限（天）：", days) != host::RTNORM) return std::nullopt;
      if (days >= 0 && days <= kMaxDays) break;
      host::Print("\n授权期限范围: 0 - 2000");
    }
    if (code != 0 && code == record.auth_code) return days;
    editor.messageBox("输入的授权码有误!", kFormTitle, host::MessageButtons::Ok);
  }
}

// The persons by what the library says of them; those needing approval get their days left.
Groups GroupPersons(const std::vector<std::int32_t>& persons, const std::vector<std::string>& names,
                    const std::vector<int>& days) {
  SignLibrary& library = GlobalSignLibrary();
  Groups groups;
  for (std::size_t i = 0; i < persons.size(); ++i) {
    TV_Sign* record = FindSignById(library, persons[i]);
    if (!record) {
      groups.missing.push_back(names[i]);
    } else if (record->auth_code >= 1) {
      record->days_granted = days[i];
      groups.needing.push_back(record);
    } else {
      groups.free.push_back(record);
    }
  }
  SortByName(groups.needing);
  SortByName(groups.free);
  return groups;
}

// The list form; true when anything was approved or cleared.
bool RunForm(const Groups& g) {
  host::Editor& editor = host::CurrentEditor();
  bool changed = false;
  while (true) {
    editor.showList(kFormTitle, {"序号", "姓 名", "授权有效期", "授 权"}, FormRows(g));
    std::int32_t row = 0;
    const int rc = editor.getInteger("\n授权的行号 <关闭>: ", row);
    if (rc != host::RTNORM) return changed;
    if (row < 1 || static_cast<std::size_t>(row) > g.needing.size()) {
      host::Print("\n该行无需授权。");
      continue;
    }
    TV_Sign& record = *g.needing[static_cast<std::size_t>(row - 1)];
    if (const std::optional<std::int32_t> days = AskApproval(record)) {
      record.days_granted = *days;
      changed = true;
    }
  }
}

}  // namespace

std::vector<std::int32_t> PersonsNeedingApproval() {
  ObjectIdArray ids;
  std::vector<std::int32_t> persons;
  std::vector<std::string> names;
  std::vector<int> days;
  std::vector<std::int32_t> out;
  if (!CollectSigns(ids, persons, names, days)) return out;
  for (const TV_Sign* s : GroupPersons(persons, names, days).needing) out.push_back(s->person_id);
  return out;
}

void SignAuthorisationCommand() {
  host::Editor& editor = host::CurrentEditor();
  ObjectIdArray ids;
  std::vector<std::int32_t> persons;
  std::vector<std::string> names;
  std::vector<int> days;
  if (!CollectSigns(ids, persons, names, days)) {
    editor.messageBox("无签名需要授权 !", kCaption, host::MessageButtons::Ok);
    return;
  }
  Groups groups = GroupPersons(persons, names, days);
  if (groups.needing.empty() && groups.free.empty() && groups.missing.empty()) {
    editor.messageBox("无签名需要授权 !", kCaption, host::MessageButtons::Ok);
    return;
  }
  if (!RunForm(groups)) return;

  ++SignGeneration;
  const std::int32_t today = TodayNumber();
  bool failed = false;
  for (ObjectId id : ids) {
    // A signature on a locked layer can't be written.
    const host::Entity e = host::OpenEntity(id);
    const std::optional<host::LayerFacts> layer = e ? host::ReadLayer(e.layer()) : std::nullopt;
    if (!e || (layer && layer->locked)) {
      failed = true;
      continue;
    }
    const bool open = host::ModifyCustomEntity(id, [&](host::CustomEntity& custom) {
      auto* sign = dynamic_cast<TV_Sign_Class*>(&custom);
      if (!sign) return false;
      const auto it = std::find_if(groups.needing.begin(), groups.needing.end(),
                                   [&](const TV_Sign* r) { return r->person_id == sign->person_id; });
      if (it == groups.needing.end()) return false;
      const std::int32_t granted = (*it)->days_granted.value_or(0);
      if (granted < 1) {
        sign->auth_code = sign->auth_start = sign->auth_end = 0;
      } else {
        sign->auth_code = (*it)->auth_code;
        sign->auth_start = today;
        sign->auth_end = AddDays(today, granted - 1);
      }
      EvaluateSignAuth(*sign);
      return true;
    });
    if (!open) failed = true;
  }
  host::RegenDrawing();
  if (failed) editor.messageBox("有签名在锁定层上，可能会造成授权失败 !", kCaption, host::MessageButtons::Ok);
}

}  // namespace tv::signing
