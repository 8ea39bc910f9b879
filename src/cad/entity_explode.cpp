// Explode: inserts, dimensions, MTEXT and polylines broken into simpler transient entities.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <string_view>

#include "cad/entity_geometry_internal.h"
#include "cad/walk_limits.h"

namespace tv::cad {

using namespace geom_internal;

namespace {

constexpr int kMaxDepth = 32;
// A hostile MINSERT (thousands of rows and columns of a large block) or blocks nesting many
// inserts of each other must neither exhaust memory nor hang: output and work are capped.
constexpr std::size_t kMaxPieces = 2'000'000;
constexpr std::size_t kMaxWork = 4'000'000;

using Pieces = std::vector<std::unique_ptr<Entity>>;

bool IsByBlockLinetype(ObjectId linetype, const Database& db) {
  const auto* lt = db.objectAs<Linetype>(linetype);
  if (!lt || lt->name.size() != 7) return false;
  static constexpr std::string_view kName = "BYBLOCK";
  for (std::size_t i = 0; i < kName.size(); ++i)
    if (static_cast<char>(std::toupper(static_cast<unsigned char>(lt->name[i]))) != kName[i]) return false;
  return true;
}

// Entities of a block take the colour, linetype and lineweight of the reference where they are ByBlock.
void ResolveByBlock(Entity& e, const Entity& reference, const Database& db) {
  if (e.colorIndex == kColorByBlock) {
    e.colorIndex = reference.colorIndex;
    e.trueColor = reference.trueColor;
  }
  if (IsByBlockLinetype(e.linetype, db)) e.linetype = reference.linetype;
  if (e.lineweight == kLineweightByBlock) e.lineweight = reference.lineweight;
}

Pieces MTextLines(const MText& m, const Database& db, const TextMeasurer& measurer) {
  Pieces out;
  const MTextLayout layout = LayoutMText(m, db, measurer);
  Vector3d n = m.normal.normalized();
  if (n.isZero(0)) n = Vector3d::zAxis();
  const Matrix3d toOcs = Matrix3d::worldToPlane(n);
  const Vector3d x = toOcs.transform(MTextDirection(m));
  const double rotation = NormalizeAngle(std::atan2(x.y, x.x));
  for (const auto& line : layout.lines) {
    if (line.text.empty()) continue;
    auto t = std::make_unique<Text>();
    CopyCommonProperties(m, *t);
    t->text = line.text;
    t->height = layout.height;
    t->widthFactor = layout.widthFactor;
    t->style = m.style;
    t->setNormal(n);
    t->rotation = rotation;
    const Point2d anchor = line.baselineStart + Vector2d{line.width * layout.column / 2.0, 0};
    t->position = toOcs.transform(layout.frameToWorld.transform(Point3d{line.baselineStart}));
    if (layout.column != 0) t->setAlignPoint(toOcs.transform(layout.frameToWorld.transform(Point3d{anchor})));
    t->hAlign = layout.column == 0 ? TextHAlign::Left : layout.column == 1 ? TextHAlign::Center : TextHAlign::Right;
    out.push_back(std::move(t));
  }
  return out;
}

// The pieces of a 2D outline in the OCS of `normal`: LINEs (in WCS) and ARCs for bulges.
void OutlinePieces(const Entity& src, const std::vector<Point3d>& pts, const std::vector<double>& bulges, bool closed,
                   Vector3d normal, double thickness, Pieces& out) {
  const Matrix3d toWorld = Matrix3d::planeToWorld(normal);
  for (std::size_t i = 0; i < pts.size(); ++i) {
    const bool last = i + 1 == pts.size();
    if (last && (!closed || pts.size() < 2)) break;
    const Point3d p = pts[i], q = pts[last ? 0 : i + 1];
    if (p.isEqualTo(q, 0)) continue;
    const double bulge = i < bulges.size() ? bulges[i] : 0.0;
    if (auto arc = ArcFromBulge(p.to2d(), q.to2d(), bulge)) {
      auto a = std::make_unique<Arc>();
      CopyCommonProperties(src, *a);
      a->center = {arc->center.x, arc->center.y, p.z};
      a->radius = arc->radius;
      a->startAngle = arc->startAngle;
      a->endAngle = arc->endAngle;
      a->normal = normal;
      a->thickness = thickness;
      out.push_back(std::move(a));
    } else {
      auto l = std::make_unique<Line>();
      CopyCommonProperties(src, *l);
      l->start = toWorld.transform(p);
      l->end = toWorld.transform(q);
      out.push_back(std::move(l));
    }
  }
}

std::unique_ptr<Face3d> MakeFace(const Entity& src, const Point3d* const corners[4], std::int16_t invisibleEdges) {
  auto f = std::make_unique<Face3d>();
  CopyCommonProperties(src, *f);
  for (int i = 0; i < 4; ++i) f->corners[i] = *corners[i];
  f->invisibleEdges = invisibleEdges;
  return f;
}

void PolylinePieces(const Polyline& p, Pieces& out) {
  if (p.polyFlags & Polyline::kPolyface) {
    ForEachPolyfaceFace(p, [&](const PolyfaceFace& f) {
      if (f.count < 3) return;
      auto corners = f.corners;
      if (f.count == 3) corners[3] = corners[2];
      out.push_back(MakeFace(p, corners.data(), static_cast<std::int16_t>(f.invisible)));
    });
    return;
  }
  if (p.polyFlags & Polyline::k3dMesh) {
    const int m = p.meshM, n = p.meshN;
    if (m < 2 || n < 2 || p.vertices.size() < static_cast<std::size_t>(m) * static_cast<std::size_t>(n)) return;
    const bool closedM = p.polyFlags & Polyline::kClosed, closedN = p.polyFlags & Polyline::kMeshClosedN;
    const auto at = [&](int i, int j) { return &p.vertices[static_cast<std::size_t>((i % m) * n + (j % n))].position; };
    for (int i = 0; i < (closedM ? m : m - 1); ++i)
      for (int j = 0; j < (closedN ? n : n - 1); ++j) {
        const Point3d* corners[4] = {at(i, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j)};
        out.push_back(MakeFace(p, corners, 0));
      }
    return;
  }
  const bool hasCurveVertices = std::any_of(p.vertices.begin(), p.vertices.end(),
                                            [](const PolylineVertex& v) { return !(v.flags & Polyline::kVertexSplineFrame); });
  std::vector<Point3d> pts;
  std::vector<double> bulges;
  for (const auto& v : p.vertices) {
    if (hasCurveVertices && (v.flags & Polyline::kVertexSplineFrame)) continue;
    pts.push_back(p.is3d() ? v.position : Point3d{v.position.x, v.position.y, p.elevation});
    bulges.push_back(p.is3d() ? 0.0 : v.bulge);
  }
  if (p.is3d()) {
    OutlinePieces(p, pts, {}, p.isClosed(), Vector3d::zAxis(), 0, out);
  } else {
    OutlinePieces(p, pts, bulges, p.isClosed(), p.normal, p.thickness, out);
  }
}

class InsertExploder {
 public:
  InsertExploder(const Database& db, const TextMeasurer& m, Pieces& out) : db_(db), m_(m), out_(out) {}

  // The block's entities under `xf`, ByBlock properties taken from `reference`.
  void block(const BlockRecord& b, const Matrix3d& xf, const Entity& reference) {
    if (static_cast<int>(stack_.size()) >= kMaxDepth || std::find(stack_.begin(), stack_.end(), &b) != stack_.end()) {
      NoteContentLeftOut();
      return;
    }
    stack_.push_back(&b);
    for (const auto& e : b.entities) {
      if (exhausted()) break;
      ++work_;
      if (e->isErased() || e->type() == ObjectType::AttDef) continue;
      piece(*e, xf, reference);
    }
    stack_.pop_back();
  }

  void insertCells(const Insert& ins, const BlockRecord& b, const Matrix3d& xf, const Entity& reference) {
    // Copies on one point are one copy.
    const double size = std::max({std::abs(ins.position.x), std::abs(ins.position.y), std::abs(ins.position.z)});
    const int columns = DistinctCells(ins.columnCount, ins.columnSpacing, size);
    const int rows = DistinctCells(ins.rowCount, ins.rowSpacing, size);
    const bool grid = columns > 1 || rows > 1;
    for (int row = 0; row < rows && !exhausted(); ++row)
      for (int column = 0; column < columns && !exhausted(); ++column) {
        ++work_;
        if (grid && ++gridCopies_ > kMaxGridCopies) {
          NoteContentLeftOut();
          return;
        }
        block(b, xf * InsertTransform(ins, b, column, row), reference);
      }
  }

 private:
  bool exhausted() const {
    if (out_.size() < kMaxPieces && work_ < kMaxWork) return false;
    NoteContentLeftOut();
    return true;
  }

  void emit(std::unique_ptr<Entity> e, const Entity& reference) {
    ResolveByBlock(*e, reference, db_);
    MakeTransient(*e);
    out_.push_back(std::move(e));
  }

  void piece(const Entity& e, const Matrix3d& xf, const Entity& reference) {
    if (auto t = TransformedCopy(e, xf)) {
      emit(std::move(t), reference);
      return;
    }
    // What cannot carry the transform as one entity is broken up further.
    if (const auto* ins = As<Insert>(&e)) {
      // The nested insert's own ByBlock properties come from the outer reference first.
      auto resolved = std::make_unique<Insert>(*ins);
      ResolveByBlock(*resolved, reference, db_);
      if (const auto* nested = db_.objectAs<BlockRecord>(ins->block)) insertCells(*ins, *nested, xf, *resolved);
      for (const auto& a : ins->attribs)
        if (auto t = TransformedCopy(*a, xf)) emit(std::move(t), *resolved);
    } else if (const auto* dim = As<Dimension>(&e)) {
      auto resolved = std::make_unique<Dimension>(*dim);
      ResolveByBlock(*resolved, reference, db_);
      if (const auto* b = db_.objectAs<BlockRecord>(dim->block)) block(*b, xf, *resolved);
    } else if (const auto* mtext = As<MText>(&e)) {
      for (auto& line : MTextLines(*mtext, db_, m_))
        if (auto t = TransformedCopy(*line, xf)) emit(std::move(t), reference);
    }
  }

  const Database& db_;
  const TextMeasurer& m_;
  Pieces& out_;
  std::vector<const BlockRecord*> stack_;
  std::size_t work_ = 0;
  std::size_t gridCopies_ = 0;
};

}  // namespace

std::vector<std::unique_ptr<Entity>> Explode(const Entity& entity, const Database& db, const TextMeasurer* measurer) {
  const TextMeasurer& m = measurer ? *measurer : ApproximateTextMeasurer();
  Pieces out;
  switch (entity.type()) {
    case ObjectType::Insert: {
      const auto& ins = static_cast<const Insert&>(entity);
      if (const auto* b = db.objectAs<BlockRecord>(ins.block)) InsertExploder(db, m, out).insertCells(ins, *b, Matrix3d{}, ins);
      for (const auto& a : ins.attribs) {
        auto copy = a->clone();
        MakeTransient(*copy);
        out.push_back(std::move(copy));
      }
      break;
    }
    case ObjectType::Dimension: {
      const auto& dim = static_cast<const Dimension&>(entity);
      if (const auto* b = db.objectAs<BlockRecord>(dim.block)) InsertExploder(db, m, out).block(*b, Matrix3d{}, dim);
      break;
    }
    case ObjectType::MText: out = MTextLines(static_cast<const MText&>(entity), db, m); break;
    case ObjectType::LwPolyline: {
      const auto& p = static_cast<const LwPolyline&>(entity);
      std::vector<Point3d> pts;
      for (Point2d q : p.points) pts.push_back(Point3d{q, p.elevation()});
      OutlinePieces(p, pts, p.bulges, p.isClosed(), p.normal(), p.thickness(), out);
      break;
    }
    case ObjectType::Polyline: PolylinePieces(static_cast<const Polyline&>(entity), out); break;
    default: break;
  }
  return out;
}

}  // namespace tv::cad
