// Classification of the scanned entities and the candidate loop that turns them into sheets.
#include "recognition/rectangle_finder.h"

#include <iterator>
#include <utility>

#include "recognition/extents_internal.h"
#include "recognition/held_candidates_internal.h"
#include "recognition/rectangle_finder_internal.h"
#include "settings/config.h"

namespace tv::recognition {

namespace {

// Which list an entity belongs to.
enum class Role { None, Candidate, Polyline, Line };

Role RoleOf(const host::Entity& e, const internal::HiddenLayers& hidden, bool wantLines) {
  if (!e) return Role::None;
  const host::EntityClass kind = e.kind();
  // An insert counts whatever its own visibility: only its content is judged by layers.
  if (kind == host::EntityClass::BlockReference) return Role::Candidate;
  if (!e.visible() || hidden.contains(e.layer())) return Role::None;
  if (host::IsPolylineClass(kind)) return Role::Polyline;
  if (kind == host::EntityClass::Line && wantLines) return Role::Line;
  return Role::None;
}

void AppendBatch(SheetList& batch, SheetList& master) {
  master.insert(master.end(), std::make_move_iterator(batch.begin()), std::make_move_iterator(batch.end()));
  batch.clear();
}

}  // namespace

void ClassifyEntities(const ObjectIdArray& ids, TempIdArray& candidates, TempIdArray& lines) {
  const internal::HiddenLayers hidden = internal::HiddenLayers::Current();
  const bool wantLines = settings::GlobalConfig().frame_loose_lines != 0;
  // Room for every entity in both lists: pages the lists never reach are never touched, and the
  // records, large and many, are never moved while the lists grow.
  candidates.reserve(candidates.size() + ids.size());
  if (wantLines) lines.reserve(lines.size() + ids.size());
  const internal::BlockBoxScope blockBoxes;
  for (ObjectId id : ids) {
    const host::Entity e = host::OpenEntity(id);
    switch (RoleOf(e, hidden, wantLines)) {
      case Role::Candidate:
        MakeTempId(TempKind::BlockReference, e, candidates);
        break;
      case Role::Polyline:
        MakeTempId(TempKind::Polyline, e, candidates);
        break;
      case Role::Line:
        MakeTempId(TempKind::Line, e, lines);
        break;
      case Role::None:
        break;
    }
  }
}

bool TryPolylineSheet(const Temp_Id& candidate, SheetList& batch, ObjectId spaceId, ObjectId layerId) {
  {
    const host::Entity e = host::OpenEntity(candidate.id);
    Point3d a, b;
    if (!IsRectanglePolyline(e, false, MatrixStack{}, a, b)) return false;
  }
  auto sheet = std::make_unique<Plot_Drawing1>();
  sheet->kind = SheetKind::Polyline;
  sheet->sourceIds[0] = candidate.id;
  sheet->spaceId = spaceId;
  // The sheet is the polyline's extents, which a wide polyline makes larger than its vertices.
  if (!AddMarker(*sheet, layerId, candidate.extents, 1.0)) return false;
  batch.insert(batch.begin(), std::move(sheet));
  return true;
}

void AddBlockSheet(const Temp_Id& candidate, SheetList& batch, ObjectId spaceId, ObjectId layerId) {
  double xScale = 1.0;
  {
    const host::Entity e = host::OpenEntity(candidate.id);
    if (!e) return;
    xScale = e.scaleFactors().x;
  }
  auto sheet = std::make_unique<Plot_Drawing1>();
  sheet->kind = SheetKind::Block;
  sheet->sourceIds[0] = candidate.id;
  sheet->spaceId = spaceId;
  if (AddMarker(*sheet, layerId, candidate.extents, xScale)) batch.push_back(std::move(sheet));
}

void ExamineCandidates(TempIdArray& candidates, SheetList& master, ObjectId spaceId, ObjectId layerId,
                       ObjectIdArray& frameBlockIds, ObjectIdArray& plainBlockIds, const std::function<void()>& tick) {
  const settings::Config& config = settings::GlobalConfig();
  SheetList batch;
  batch.reserve(kSheetBatch + 1);

  // Candidates that stay are moved down to `kept`; the ones taken are simply passed over, so the
  // list is compacted in one sweep however many sheets it yields. Each finished batch marks the
  // candidates still to come that its sheets hold, and they leave the list as the loop reaches
  // them: the same candidates and holders as a purge of the rest of the list per batch.
  internal::HeldCandidates held(candidates);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    if (batch.size() >= kSheetBatch) {
      if (tick) tick();
      PruneSheets(batch);
      held.markBy(batch, i);
      AppendBatch(batch, master);
    }

    // Candidates come in area order, not in the drawing's: the ones to be opened are fetched ahead.
    internal::FetchAhead(candidates, i, [&](std::size_t k) { return !held.holder(k); });

    const Temp_Id& candidate = candidates[i];
    if (Plot_Drawing1* holder = held.holder(i)) {
      holder->hasContent = true;
      continue;
    }
    bool taken = false;
    if (candidate.kind == TempKind::Polyline) {
      taken = TryPolylineSheet(candidate, batch, spaceId, layerId);
    } else if (candidate.kind == TempKind::BlockReference) {
      if (config.frame_all_blocks) {
        AddBlockSheet(candidate, batch, spaceId, layerId);
        taken = true;
      } else if (config.frame_rect_blocks) {
        AddFrameBlockSheet(candidate, master, spaceId, layerId, frameBlockIds, plainBlockIds);
        taken = true;
      }
    }
    if (!taken) {
      if (kept != i) candidates[kept] = std::move(candidates[i]);
      ++kept;
    }
  }
  candidates.resize(kept);
  AppendBatch(batch, master);
}

}  // namespace tv::recognition
