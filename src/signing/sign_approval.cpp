#include "signing/sign_approval.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <optional>

#include "host/entity.h"
#include "host/wrappers.h"
#include "signing/sign_entity.h"
#include "signing/sign_globals.h"
#include "signing/sign_library.h"

namespace tv::signing {

namespace {

using namespace std::chrono;

// A yyyymmdd number as a calendar day; nullopt for a date the calendar doesn't have.
std::optional<sys_days> DayOf(std::int32_t yyyymmdd) {
  if (yyyymmdd <= 0) return std::nullopt;
  const year_month_day d{year(yyyymmdd / 10000), month(static_cast<unsigned>(yyyymmdd / 100 % 100)),
                         day(static_cast<unsigned>(yyyymmdd % 100))};
  if (!d.ok() || d.year() < year(1970)) return std::nullopt;
  return sys_days(d);
}

std::int32_t NumberOf(sys_days day) {
  const year_month_day d{day};
  return static_cast<int>(d.year()) * 10000 + static_cast<std::int32_t>(static_cast<unsigned>(d.month()) * 100 +
                                                                       static_cast<unsigned>(d.day()));
}

// Calls `f` on every signature entity of the drawing, with its id, until `f` returns false.
template <class F>
void ForEachSign(F&& f) {
  for (ObjectId block : host::BlockRecordIds()) {
    ObjectIdArray ids;
    host::CollectSpaceIds(block, ids);
    for (ObjectId id : ids) {
      // Entities that don't open are skipped; recomputed flags are no change of the drawing.
      bool more = true;
      host::ModifyCustomEntity(id, [&](host::CustomEntity& custom) {
        if (auto* sign = dynamic_cast<TV_Sign_Class*>(&custom)) more = f(id, *sign);
        return false;
      });
      if (!more) return;
    }
  }
}

}  // namespace

std::int32_t TodayNumber() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return (local.tm_year + 1900) * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday;
}

std::int32_t AddDays(std::int32_t yyyymmdd, std::int32_t days) {
  const std::optional<sys_days> d = DayOf(yyyymmdd);
  return d ? NumberOf(*d + std::chrono::days(days)) : yyyymmdd;
}

int SignDaysLeft(const TV_Sign_Class& entity, std::int32_t today) {
  if (!entity.code_ok) return 0;
  if (today < entity.auth_start || today > entity.auth_end) return 0;
  const std::optional<sys_days> end = DayOf(entity.auth_end), now = DayOf(today);
  if (!end || !now) return 0;
  // The last valid day itself counts as one day.
  const auto left = (*end - *now).count() + 1;
  return left < 0 ? 0 : static_cast<int>(left);
}

int SignDaysLeft(const TV_Sign_Class& entity) { return SignDaysLeft(entity, TodayNumber()); }

bool EvaluateSignAuth(TV_Sign_Class& entity) {
  entity.library_generation = SignGeneration;
  const TV_Sign* record = FindSignById(GlobalSignLibrary(), entity.person_id);
  if (!record) {
    entity.code_ok = false;
    return false;
  }
  if (record->auth_code < 1) {
    entity.code_ok = entity.date_ok = true;
    return true;
  }
  if (entity.auth_code >= 1 && entity.auth_code == record->auth_code) {
    entity.code_ok = true;
    entity.date_ok = SignDaysLeft(entity) > 0;
    return entity.date_ok;
  }
  entity.code_ok = false;
  return false;
}

bool AnyUnapprovedSign() {
  bool found = false;
  ForEachSign([&](ObjectId, TV_Sign_Class& sign) {
    EvaluateSignAuth(sign);
    found = !sign.code_ok || !sign.date_ok;
    return !found;
  });
  return found;
}

bool CollectSigns(ObjectIdArray& ids, std::vector<std::int32_t>& persons, std::vector<std::string>& names,
                  std::vector<int>& days) {
  ids.clear();
  persons.clear();
  names.clear();
  days.clear();
  ForEachSign([&](ObjectId id, TV_Sign_Class& sign) {
    EvaluateSignAuth(sign);
    ids.push_back(id);
    const int left = SignDaysLeft(sign);
    auto it = std::find(persons.begin(), persons.end(), sign.person_id);
    if (it == persons.end()) {
      persons.push_back(sign.person_id);
      names.push_back(sign.person_name);
      days.push_back(left);
    } else {
      int& kept = days[static_cast<std::size_t>(it - persons.begin())];
      kept = std::min(kept, left);
    }
    return true;
  });
  return !ids.empty();
}

}  // namespace tv::signing
