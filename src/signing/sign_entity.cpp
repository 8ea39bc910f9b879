// Signature entities: their saved form and the registration of their classes.
#include "signing/sign_entity.h"

#include <charconv>
#include <cstdio>
#include <type_traits>
#include <algorithm>

#include "settings/value_text.h"
#include "signing/sign_approval.h"
#include "signing/sign_globals.h"

namespace tv::signing {

namespace {

constexpr std::int32_t kClassVersion = 20240329;
// At most this many loops and vertices in all: the counts are stored as 16-bit numbers.
constexpr std::size_t kMaxCount = 32767;

std::string Real(double v) {
  char buffer[64];
  auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v);
  return ec == std::errc{} ? std::string(buffer, end) : std::string("0");
}

template <class T>
bool ParseNumber(const std::string& text, T& value) {
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, value);
  return ec == std::errc{} && ptr == end;
}

// Reads the next group, which must have `code`.
template <class T>
bool Take(const host::DxfGroupList& groups, std::size_t& at, int code, T& value) {
  if (at >= groups.size() || groups[at].first != code) return false;
  if constexpr (std::is_same_v<T, std::string>) value = groups[at].second;
  else if (!ParseNumber(groups[at].second, value)) return false;
  ++at;
  return true;
}

}  // namespace

host::EntityClassData SignClassData() { return {"\"TV_Soft_BatchPlot\"", 3071, 33, 327}; }

void RegisterSignClasses() {
  for (const char* name : {"Sign_Base", "TV_Sign_Class", "Temp_Sign"})
    host::RegisterEntityClass(name, "AcDbEntity", SignClassData());
  host::RegisterEntityReader("TV_Sign_Class", [](const host::DxfGroupList& groups) -> std::unique_ptr<host::CustomEntity> {
    return TV_Sign_Class::FromGroups(groups);
  });
  host::RegisterEntityReader("Sign_Base", [](const host::DxfGroupList& groups) -> std::unique_ptr<host::CustomEntity> {
    auto e = std::make_unique<Sign_Base>();
    std::size_t at = 0;
    if (!e->readBase(groups, at)) return nullptr;
    return e;
  });
}

void UnregisterSignClasses() {
  for (const char* name : {"Sign_Base", "TV_Sign_Class", "Temp_Sign"}) host::DeleteEntityClass(name);
}

// ---- Sign_Base --------------------------------------------------------------------------------------

host::DxfGroupList Sign_Base::dxfGroups() const {
  host::DxfGroupList g;
  g.emplace_back(100, "Sign_Base");
  g.emplace_back(70, std::to_string(loop_sizes.size()));
  for (std::int32_t n : loop_sizes) g.emplace_back(71, std::to_string(n));
  g.emplace_back(90, std::to_string(points.size()));
  for (const Point3d& p : points) {
    g.emplace_back(10, Real(p.x));
    g.emplace_back(20, Real(p.y));
    g.emplace_back(30, Real(p.z));
  }
  return g;
}

bool Sign_Base::readBase(const host::DxfGroupList& groups, std::size_t& at) {
  std::string marker;
  if (!Take(groups, at, 100, marker) || marker != "Sign_Base") return false;
  std::size_t loops = 0, count = 0;
  if (!Take(groups, at, 70, loops) || loops > kMaxCount) return false;
  loop_sizes.assign(loops, 0);
  for (auto& n : loop_sizes)
    if (!Take(groups, at, 71, n)) return false;
  if (!Take(groups, at, 90, count) || count > kMaxCount) return false;
  points.assign(count, Point3d{});
  for (Point3d& p : points)
    if (!Take(groups, at, 10, p.x) || !Take(groups, at, 20, p.y) || !Take(groups, at, 30, p.z)) return false;
  return true;
}

std::vector<std::vector<Point3d>> Sign_Base::loops() const {
  std::vector<std::vector<Point3d>> out;
  std::size_t start = 0;
  for (std::int32_t size : loop_sizes) {
    const std::size_t n = static_cast<std::size_t>(size < 0 ? -static_cast<std::int64_t>(size) : size);
    const std::size_t end = std::min(points.size(), start + n);
    if (end > start) out.emplace_back(points.begin() + static_cast<std::ptrdiff_t>(start), points.begin() + static_cast<std::ptrdiff_t>(end));
    start = end;
  }
  return out;
}

bool Sign_Base::transformBy(const Matrix3d& xf) {
  for (Point3d& p : points) p = xf.transform(p);
  return true;
}

Extents3d Sign_Base::extents() const {
  Extents3d box;
  for (const Point3d& p : points) box.add(p);
  return box;
}

void Sign_Base::worldDraw(host::WorldDraw& draw) const {
  if (SignsVisible == 0 || points.empty()) return;
  draw.setColor(256);
  draw.setFill(true);
  std::size_t i = 0;
  for (const auto& loop : loops()) {
    if (i < loop_sizes.size() && loop_sizes[i] > 0) draw.polygon(loop);
    ++i;
  }
  draw.setFill(false);
}

// ---- TV_Sign_Class ----------------------------------------------------------------------------------

TV_Sign_Class::TV_Sign_Class() : library_generation(SignGeneration) {}

host::DxfGroupList TV_Sign_Class::dxfGroups() const {
  host::DxfGroupList g = Sign_Base::dxfGroups();
  g.emplace_back(100, "TV_Sign_Class");
  g.emplace_back(91, std::to_string(kClassVersion));
  g.emplace_back(92, std::to_string(person_id));
  g.emplace_back(1, settings::EncodeToken(person_name));
  g.emplace_back(93, std::to_string(auth_code));
  g.emplace_back(94, std::to_string(auth_start));
  g.emplace_back(95, std::to_string(auth_end));
  g.emplace_back(290, code_ok ? "1" : "0");
  g.emplace_back(291, date_ok ? "1" : "0");
  return g;
}

std::unique_ptr<TV_Sign_Class> TV_Sign_Class::FromGroups(const host::DxfGroupList& groups) {
  auto e = std::make_unique<TV_Sign_Class>();
  std::size_t at = 0;
  std::string marker, name;
  std::int32_t version = 0, codeOk = 1, dateOk = 1;
  if (!e->readBase(groups, at) || !Take(groups, at, 100, marker) || marker != "TV_Sign_Class") return nullptr;
  if (!Take(groups, at, 91, version) || !Take(groups, at, 92, e->person_id) || !Take(groups, at, 1, name) ||
      !Take(groups, at, 93, e->auth_code) || !Take(groups, at, 94, e->auth_start) || !Take(groups, at, 95, e->auth_end) ||
      !Take(groups, at, 290, codeOk) || !Take(groups, at, 291, dateOk))
    return nullptr;
  e->person_name = settings::DecodeToken(name);
  e->code_ok = codeOk != 0;
  e->date_ok = dateOk != 0;
  EvaluateSignAuth(*e);
  return e;
}

std::string TV_Sign_Class::listing() const {
  // The approval code is never listed.
  char line[1024];
  std::string out = "\n签名：\n";
  std::snprintf(line, sizeof line, "人员编号 %d\n", person_id);
  out += line;
  std::snprintf(line, sizeof line, "人员姓名 %s\n", person_name.c_str());
  out += line;
  std::snprintf(line, sizeof line, "授权开始期限 %d\n", auth_start);
  out += line;
  std::snprintf(line, sizeof line, "授权终止期限 %d\n", auth_end);
  out += line;
  std::snprintf(line, sizeof line, "是否通过授权码认证 %d\n", code_ok ? 1 : 0);
  out += line;
  std::snprintf(line, sizeof line, "是否通过有效期限认证 %d\n", date_ok ? 1 : 0);
  out += line;
  return out;
}

void TV_Sign_Class::refreshIfStale() const {
  if (library_generation != SignGeneration) EvaluateSignAuth(const_cast<TV_Sign_Class&>(*this));
}

void TV_Sign_Class::worldDraw(host::WorldDraw& draw) const {
  if (SignsVisible == 0 || points.empty()) return;
  refreshIfStale();
  if (code_ok && date_ok) DrawSignFull(*this, draw);
  else if (PlotRunning == 0) DrawSignSkeleton(*this, draw);
}

}  // namespace tv::signing
