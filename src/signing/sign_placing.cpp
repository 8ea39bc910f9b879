#include "signing/sign_placing.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string>

#include "host/editor.h"
#include "host/entity.h"
#include "host/wrappers.h"
#include "plot/typed_point.h"
#include "recognition/sheet_traversal.h"
#include "recognition/working_coordinates.h"
#include "signing/sign_approval.h"
#include "signing/sign_entity.h"
#include "signing/sign_globals.h"

namespace tv::signing {

namespace {

// The choice of the last placing, kept while the program runs.
int& LastChoice() {
  static int choice = 0;
  return choice;
}

bool IsTab(std::string_view typed) {
  return typed == "\t" || typed == "TAB" || typed == "Tab" || typed == "tab";
}

// The second corner; Tab raises the direction and asks again. nullopt when the user stops.
std::optional<Point3d> AskSecondCorner() {
  host::Editor& editor = host::CurrentEditor();
  while (true) {
    std::string answer;
    if (editor.getString(kSignSecondPrompt, answer) != host::RTNORM) return std::nullopt;
    // Blanks are trimmed, a Tab alone would vanish with them.
    if (IsTab(answer)) {
      RaiseSignDirection();
      continue;
    }
    const std::string_view given = plot::TrimTyped(answer);
    if (given.empty()) return std::nullopt;
    if (IsTab(given)) {
      RaiseSignDirection();
      continue;
    }
    if (std::optional<Point3d> p = plot::ParseTypedPoint(given)) return p;
    host::Print("\n需要点或选项关键字。");
  }
}

}  // namespace

void FlattenSign(const TV_Sign& sign, std::vector<std::int32_t>& loopSizes, std::vector<Point3d>& points) {
  loopSizes.clear();
  points.clear();
  for (const auto& shape : sign.shapes) {
    const std::size_t n = std::min(shape->xs.size(), shape->ys.size());
    if (n == 0) continue;
    const auto count = static_cast<std::int32_t>(n);
    loopSizes.push_back(shape->is_outer == 0 ? -count : count);
    for (std::size_t i = 0; i < n; ++i) points.emplace_back(shape->xs[i], shape->ys[i], 0.0);
  }
}

void FitSignPoints(std::vector<Point3d>& points, Point3d corner1, Point3d corner2, double sizeX, double sizeY,
                   Point3d centre) {
  if (SignDirection > 0) {
    const Matrix3d turn = Matrix3d::rotation(SignDirection == 1 ? kPi / 2 : -kPi / 2, Vector3d::zAxis(), centre);
    for (Point3d& p : points) p = turn.transform(p);
    std::swap(sizeX, sizeY);
  }
  const double sx = sizeX > 0 ? std::abs(corner2.x - corner1.x) / sizeX : 1;
  const double sy = sizeY > 0 ? std::abs(corner2.y - corner1.y) / sizeY : 1;
  const double s = std::min(sx, sy);
  const Vector3d v{(corner1.x + corner2.x) / 2 - centre.x, (corner1.y + corner2.y) / 2 - centre.y, 0};
  const Matrix3d fit = Matrix3d::scaling(s, Point3d{v.x, v.y, v.z}) * Matrix3d::translation(v);
  for (Point3d& p : points) p = fit.transform(p);
}

ObjectId PlaceSign(const TV_Sign& sign) {
  std::vector<std::int32_t> loopSizes;
  std::vector<Point3d> points;
  FlattenSign(sign, loopSizes, points);
  if (loopSizes.empty()) return {};
  host::Editor& editor = host::CurrentEditor();
  Point3d first;
  if (editor.getPoint(kSignFirstPrompt, nullptr, first) != host::RTNORM) return {};

  SignJigActive = 1;
  const std::optional<Point3d> second = AskSecondCorner();
  SignJigActive = 0;
  if (!second) return {};

  FitSignPoints(points, first, *second, sign.width, sign.height, Point3d{});
  if (recognition::Ucs().active)
    for (Point3d& p : points) p = recognition::ToWorld(p);

  bool existed = true;
  const ObjectId layer = host::FindOrAddLayer(std::string(kSignLayer), &existed);
  if (!existed) host::SetLayerColor(layer, kSignLayerColor);

  auto entity = std::make_unique<TV_Sign_Class>();
  entity->person_id = sign.person_id;
  entity->person_name = sign.person_name;
  entity->loop_sizes = std::move(loopSizes);
  entity->points = std::move(points);
  EvaluateSignAuth(*entity);
  return host::AppendToSpace(host::NewCustomEntity(std::move(entity)), 256, layer);
}

void SignPlacingCommand() {
  const SignLibrary& library = GlobalSignLibrary();
  host::Editor& editor = host::CurrentEditor();
  if (library.signs.empty()) {
    editor.messageBox("签名库为空 !\n\n请先到签名库进行签名录入 !", kSignCaption, host::MessageButtons::Ok);
    return;
  }
  std::vector<const TV_Sign*> enabled;
  std::vector<std::string> names;
  for (const auto& s : library.signs)
    if (s->enabled != 0) {
      enabled.push_back(s.get());
      names.push_back(s->person_name);
    }
  if (enabled.empty()) {
    editor.messageBox("无可用签名，所有签名均被禁用 !\n\n请到签名库进行查看 !", kSignCaption, host::MessageButtons::Ok);
    return;
  }
  int& last = LastChoice();
  if (last < 0 || static_cast<std::size_t>(last) >= names.size()) last = 0;
  const std::optional<int> chosen = editor.chooseItem("签  名", names, last);
  if (!chosen || *chosen < 0 || static_cast<std::size_t>(*chosen) >= enabled.size()) return;
  last = *chosen;
  recognition::RefreshUcs(false);
  PlaceSign(*enabled[static_cast<std::size_t>(*chosen)]);
}

}  // namespace tv::signing
