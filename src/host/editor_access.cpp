#include <cmath>

#include "host/editor.h"

namespace tv::host {

namespace {
Editor* g_editor = nullptr;

// Stands in when no platform editor is installed (a library used without a host): prints
// nothing, knows no variables, answers every prompt with a cancel.
class NullEditor final : public Editor {
 public:
  void print(std::string_view) override {}
  int getString(std::string_view, std::string&) override { return RTCAN; }
  int getInteger(std::string_view, std::int32_t&) override { return RTCAN; }
  int getReal(std::string_view, double&) override { return RTCAN; }
  int getPoint(std::string_view, const Point3d*, Point3d&) override { return RTCAN; }
  int getCorner(std::string_view, const Point3d&, Point3d&) override { return RTCAN; }
  int getKeyword(std::string_view, std::string_view, std::string&) override { return RTCAN; }
  int select(std::string_view, const std::vector<std::string>&, const std::vector<Point3d>&, const SelectionFilter&,
             ObjectIdArray&) override {
    return RTCAN;
  }
  std::optional<Value> getVar(std::string_view) override { return std::nullopt; }
  bool setVar(std::string_view, const Value&) override { return false; }
  std::optional<std::string> getEnv(std::string_view) override { return std::nullopt; }
  void setEnv(std::string_view, std::string_view) override {}
  Matrix3d currentUcs() override { return Matrix3d::identity(); }
  bool setCurrentUcs(const Matrix3d&) override { return false; }
  MessageAnswer messageBox(std::string_view, std::string_view, MessageButtons) override { return MessageAnswer::Cancel; }
  std::optional<int> chooseItem(std::string_view, const std::vector<std::string>&, int) override { return std::nullopt; }
  std::optional<std::string> askOpenPath(std::string_view, std::string_view) override { return std::nullopt; }
  std::optional<std::string> askSavePath(std::string_view, std::string_view, std::string_view) override { return std::nullopt; }
  std::optional<std::string> askFolder(std::string_view, std::string_view) override { return std::nullopt; }
  bool shellOpen(std::string_view) override { return false; }
  void addCommand(std::string_view, std::string_view, std::string_view, int, CommandBody) override {}
  bool removeGroup(std::string_view) override { return false; }
  int command(const std::vector<std::string>&) override { return RTERROR; }
  void sendStringToExecute(std::string_view) override {}
  std::string documentPath() override { return {}; }
  void setModified(bool) override {}
  bool modified() override { return false; }
  void regen() override {}
  void setView(Point3d, double) override {}
  void progressBegin(std::string_view, int) override {}
  void progressSet(int) override {}
  void progressEnd() override {}
};

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
