#include "console/system_variables.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "cad/entity_geometry.h"
#include "console/host_folders.h"
#include "console/text_match.h"
#include "host/cad_binding.h"

namespace tv::console {

namespace {

using host::Value;

// Read-only variables, derived ones included; CVPORT is not among them, it switches spaces.
constexpr std::array<std::string_view, 14> kReadOnly{
    "ACADVER", "DWGNAME", "DWGPREFIX", "TILEMODE",  "WORLDUCS",   "UCSXDIR",         "UCSYDIR",
    "UCSORG",  "VIEWCTR", "VIEWSIZE",  "VIEWTWIST", "SCREENSIZE", "LOCALROOTPREFIX", "ROAMABLEROOTPREFIX"};

bool IsReadOnly(const std::string& upper) {
  return std::find(kReadOnly.begin(), kReadOnly.end(), upper) != kReadOnly.end();
}

// An orthonormal right-handed system from possibly sloppy axes; nullopt when they are zero or parallel.
std::optional<CoordSystem> Orthonormal(Point3d origin, Vector3d x, Vector3d y) {
  if (x.isZero(1e-12) || y.isZero(1e-12)) return std::nullopt;
  Vector3d xn = x.normalized();
  Vector3d z = xn.cross(y.normalized());
  if (z.length() < 1e-9) return std::nullopt;
  CoordSystem cs;
  cs.origin = origin;
  cs.xAxis = xn;
  cs.yAxis = z.normalized().cross(xn).normalized();
  return cs;
}

std::string DrawingName(const std::string& path) {
  return path.empty() ? std::string() : std::filesystem::path(path).filename().string();
}

std::string DrawingPrefix(const std::string& path) {
  if (path.empty()) return {};
  std::error_code ec;
  std::filesystem::path full = std::filesystem::absolute(path, ec);
  if (ec) full = path;
  std::string prefix = full.parent_path().string();
  if (prefix.empty() || prefix.back() != '/') prefix += '/';
  return prefix;
}

const cad::Group* Find(const cad::TableRecord& r, int code) { return cad::FindGroup(r.groups, code); }

}  // namespace

SystemVariables::SystemVariables(const cad::Database& db, const std::string& path, Point2d screen)
    : db_(db), screen_(screen) {
  stored_ = {
      {"CMDECHO", std::int32_t{1}},
      {"FILEDIA", std::int32_t{1}},
      {"BACKGROUNDPLOT", std::int32_t{2}},
      {"PDFSHX", std::int32_t{1}},
      {"EPDFSHX", std::int32_t{1}},
      {"PICKBOX", std::int32_t{3}},
      {"IMAGEFRAME", std::int32_t{1}},  // raster frames shown and plotted
      {"MENUBAR", std::int32_t{0}},
      {"UCSFOLLOW", std::int32_t{0}},
      {"WSCURRENT", std::string("草图与注释")},
      {"VIEWMODE", std::int32_t{0}},
      {"LENSLENGTH", 50.0},
      {"TARGET", Point3d{0, 0, 0}},
      {"VIEWDIR", Point3d{0, 0, 1}},
      {"FRONTZ", 0.0},
      {"BACKZ", 0.0},
      {"ACADVER", std::string("25.0s")},
      {"DWGNAME", DrawingName(path)},
      {"DWGPREFIX", DrawingPrefix(path)},
  };
  const std::string userRoot = CurrentHostFolders().userRoot;
  stored_["LOCALROOTPREFIX"] = userRoot;
  stored_["ROAMABLEROOTPREFIX"] = userRoot;

  const cad::Header& h = db.header;
  if (h.find("$UCSORG") || h.find("$UCSXDIR") || h.find("$UCSYDIR")) {
    if (auto cs = Orthonormal(h.getPoint("$UCSORG"), h.getPoint("$UCSXDIR", {1, 0, 0}).asVector(),
                              h.getPoint("$UCSYDIR", {0, 1, 0}).asVector()))
      modelUcs_ = *cs;
  }

  // The paper layout CVPORT 1 returns to: the one saved current, else the first by tab order.
  if (const cad::BlockRecord* paper = db.paperSpace())
    if (const cad::Layout* layout = db.layoutOf(*paper)) lastPaperLayout_ = layout->id;
  if (lastPaperLayout_.isNull())
    for (const cad::Layout* layout : db.layoutsInTabOrder())
      if (!layout->isModel() && db.blockOf(*layout)) {
        lastPaperLayout_ = layout->id;
        break;
      }
}

SystemVariables::SpaceKey SystemVariables::currentSpace() {
  const host::WorkingDrawing& w = host::Working();
  if (w.db != &db_) return {};
  const cad::Layout* layout = db_.objectAs<cad::Layout>(w.currentLayout);
  if (!layout || layout->isModel()) return {};
  lastPaperLayout_ = layout->id;
  return {layout->id, true};
}

CoordSystem SystemVariables::ucs() {
  SpaceKey space = currentSpace();
  auto it = ucs_.find(space.layout);
  if (it != ucs_.end()) return it->second;
  return space.paper ? CoordSystem{} : modelUcs_;
}

bool SystemVariables::setUcs(const Matrix3d& ucsToWorld) {
  auto cs = Orthonormal(ucsToWorld.transform(Point3d{0, 0, 0}), ucsToWorld.transform(Vector3d::xAxis()),
                        ucsToWorld.transform(Vector3d::yAxis()));
  if (!cs) return false;
  ucs_[currentSpace().layout] = *cs;
  return true;
}

SystemVariables::View SystemVariables::fittedView(const cad::BlockRecord* block, Point2d fallbackMin,
                                                  Point2d fallbackMax) const {
  Extents3d ext;
  if (block) {
    cad::ExtentsCache cache;
    db_.forEachEntity(*block, [&](const cad::Entity& e) {
      if (auto box = cache.entityExtents(e, db_)) ext.add(*box);
    });
  }
  if (ext.isEmpty()) ext = Extents3d(Point3d(fallbackMin), Point3d(fallbackMax));
  View v;
  v.centreWorld = {ext.center().x, ext.center().y, 0};
  const double aspect = screen_.x > 0 && screen_.y > 0 ? screen_.y / screen_.x : 1.0;
  v.height = std::max(ext.height(), ext.width() * aspect);
  if (!(v.height > 0)) v.height = 1;
  return v;
}

SystemVariables::View& SystemVariables::view(const SpaceKey& space) {
  auto it = views_.find(space.layout);
  if (it != views_.end()) return it->second;
  View v;
  if (space.paper) {
    const cad::Layout* layout = db_.objectAs<cad::Layout>(space.layout);
    v = fittedView(layout ? db_.blockOf(*layout) : nullptr, layout ? layout->limitsMin : Point2d{},
                   layout ? layout->limitsMax : Point2d{});
  } else {
    const cad::TableRecord* vport = db_.activeViewport();
    const cad::Group* height = vport ? Find(*vport, 40) : nullptr;
    if (height && height->asDouble() > 0) {
      // The VPORT keeps its centre in display coordinates: the plan turned by the twist.
      const Point3d dcs{Find(*vport, 12) ? Find(*vport, 12)->asDouble() : 0.0,
                        Find(*vport, 22) ? Find(*vport, 22)->asDouble() : 0.0, 0.0};
      v.centreWorld = Matrix3d::rotation(viewTwist()).transform(dcs);
      v.height = height->asDouble();
    } else {
      const cad::Header& h = db_.header;
      v = fittedView(db_.modelSpace(), h.getPoint("$LIMMIN").to2d(), h.getPoint("$LIMMAX", {420, 297}).to2d());
    }
  }
  return views_.emplace(space.layout, v).first->second;
}

double SystemVariables::viewTwist() {
  const cad::TableRecord* vport = db_.activeViewport();
  const cad::Group* twist = vport ? Find(*vport, 51) : nullptr;
  return twist ? DegToRad(twist->asDouble()) : 0.0;
}

void SystemVariables::setView(Point3d centreUser, double height) {
  View& v = view(currentSpace());
  v.centreWorld = ucs().toWorld().transform(centreUser);
  if (height > 0) v.height = height;
}

bool SystemVariables::switchSpace(bool toPaper) {
  host::WorkingDrawing& w = host::Working();
  if (w.db != &db_) return false;
  if (currentSpace().paper == toPaper) return true;
  if (toPaper) {
    if (!db_.objectAs<cad::Layout>(lastPaperLayout_)) return false;
    w.currentLayout = lastPaperLayout_;
    return true;
  }
  const cad::BlockRecord* model = db_.modelSpace();
  const cad::Layout* layout = model ? db_.layoutOf(*model) : nullptr;
  w.currentLayout = layout ? layout->id : ObjectId{};
  return true;
}

std::optional<Value> SystemVariables::get(std::string_view name) {
  const std::string key = AsciiUpper(name);
  if (key == "CVPORT") return std::int32_t{currentSpace().paper ? 1 : 2};
  if (key == "TILEMODE") return std::int32_t{currentSpace().paper ? 0 : 1};
  if (key == "WORLDUCS") return std::int32_t{ucs().isWorld(1e-9) ? 1 : 0};
  if (key == "UCSORG") return ucs().origin;
  if (key == "UCSXDIR") return Point3d{} + ucs().xAxis;
  if (key == "UCSYDIR") return Point3d{} + ucs().yAxis;
  if (key == "VIEWCTR") {
    const Point3d world = view(currentSpace()).centreWorld;
    return ucs().fromWorld().transform(world);
  }
  if (key == "VIEWSIZE") return view(currentSpace()).height;
  if (key == "VIEWTWIST") return currentSpace().paper ? 0.0 : viewTwist();
  if (key == "SCREENSIZE") return Point3d{screen_.x, screen_.y, 0};
  auto it = stored_.find(key);
  if (it == stored_.end()) return std::nullopt;
  return it->second;
}

bool SystemVariables::set(std::string_view name, const Value& value) {
  const std::string key = AsciiUpper(name);
  if (key == "CVPORT") {
    const auto* n = std::get_if<std::int32_t>(&value);
    if (!n || (*n != 1 && *n != 2)) return false;
    return switchSpace(*n == 1);
  }
  if (IsReadOnly(key)) return false;
  auto it = stored_.find(key);
  if (it == stored_.end()) return false;
  Value& current = it->second;
  if (std::holds_alternative<double>(current)) {
    if (auto* i = std::get_if<std::int32_t>(&value)) {
      current = static_cast<double>(*i);
      return true;
    }
  }
  if (current.index() != value.index()) return false;
  current = value;
  return true;
}

}  // namespace tv::console
