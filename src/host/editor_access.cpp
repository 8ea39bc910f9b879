#include <cmath>

#include "host/editor.h"
#include "host/null_editor.h"

namespace tv::host {

namespace {
Editor* g_editor = nullptr;

// Stands in while no platform editor is installed.
NullEditor& TheNullEditor() {
  static NullEditor e;
  return e;
}
}  // namespace

void SetEditor(Editor* editor) { g_editor = editor; }
Editor& CurrentEditor() { return g_editor ? *g_editor : TheNullEditor(); }
bool HasEditor() { return g_editor != nullptr; }

void Print(std::string_view text) { CurrentEditor().print(text); }
std::optional<Value> GetVar(std::string_view name) { return CurrentEditor().getVar(name); }
bool SetVar(std::string_view name, const Value& value) { return CurrentEditor().setVar(name, value); }

std::optional<std::int32_t> AsInt(const std::optional<Value>& v) {
  if (!v) return std::nullopt;
  if (auto i = std::get_if<std::int32_t>(&*v)) return *i;
  if (auto d = std::get_if<double>(&*v)) return static_cast<std::int32_t>(*d);
  return std::nullopt;
}
std::optional<double> AsReal(const std::optional<Value>& v) {
  if (!v) return std::nullopt;
  if (auto d = std::get_if<double>(&*v)) return *d;
  if (auto i = std::get_if<std::int32_t>(&*v)) return *i;
  return std::nullopt;
}
std::optional<std::string> AsText(const std::optional<Value>& v) {
  if (!v) return std::nullopt;
  if (auto s = std::get_if<std::string>(&*v)) return *s;
  return std::nullopt;
}
std::optional<Point3d> AsPoint(const std::optional<Value>& v) {
  if (!v) return std::nullopt;
  if (auto p = std::get_if<Point3d>(&*v)) return *p;
  return std::nullopt;
}

std::int32_t GetIntVar(std::string_view name, std::int32_t fallback) { return AsInt(GetVar(name)).value_or(fallback); }
double GetRealVar(std::string_view name, double fallback) { return AsReal(GetVar(name)).value_or(fallback); }

SelectionFilter TypeFilter(const std::vector<std::string>& typeNames) {
  SelectionFilter f;
  f.push_back({-4, "<or"});
  for (const auto& t : typeNames) f.push_back({0, t});
  f.push_back({-4, "or>"});
  return f;
}

namespace {
// World to display coordinates: the plan view turned by VIEWTWIST.
Matrix3d WorldToDisplay() { return Matrix3d::rotation(-GetRealVar("VIEWTWIST", 0.0)); }

Matrix3d ToWorldMatrix(int from) {
  if (from == kUser) return CurrentEditor().currentUcs();
  if (from == kDisplay) return WorldToDisplay().inverse().value_or(Matrix3d::identity());
  return Matrix3d::identity();
}
Matrix3d FromWorldMatrix(int to) {
  if (to == kUser) return CurrentEditor().currentUcs().inverse().value_or(Matrix3d::identity());
  if (to == kDisplay) return WorldToDisplay();
  return Matrix3d::identity();
}
}  // namespace

Point3d Trans(Point3d point, int from, int to, bool displacement) {
  if (from == to) return point;
  const Matrix3d xf = FromWorldMatrix(to) * ToWorldMatrix(from);
  if (displacement) {
    Vector3d v = xf.transform(point.asVector());
    return {v.x, v.y, v.z};
  }
  return xf.transform(point);
}

}  // namespace tv::host
