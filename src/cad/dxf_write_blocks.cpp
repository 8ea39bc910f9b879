// BLOCKS and ENTITIES sections.
#include "cad/dxf_entity_codec.h"
#include "cad/dxf_writer_internal.h"

namespace tv::cad::dxf_write {

namespace {

// True when the entity cannot be written as it is: a handle that was null or repeated another, or
// an owner that is not the container it is written in (entities copied between drawings by hand).
bool NeedsRepair(const WriteContext& ctx, const Entity& e, ObjectId owner) {
  auto changed = [&](const ObjectId& field) { return field.isNull() || ctx.idOf(field) != field; };
  if (changed(e.id) || e.owner != owner) return true;
  if (const auto* p = As<Polyline>(&e)) {
    if (changed(p->seqendId)) return true;
    for (const PolylineVertex& v : p->vertices)
      if (changed(v.id)) return true;
  } else if (const auto* insert = As<Insert>(&e); insert && !insert->attribs.empty()) {
    if (changed(insert->seqendId)) return true;
    for (const auto& a : insert->attribs)
      if (changed(a->id) || a->owner != e.id) return true;
  }
  return false;
}

void WriteEntity(WriteContext& ctx, const Entity& e, ObjectId owner) {
  if (!NeedsRepair(ctx, e, owner)) {
    EncodeEntity(e, ctx.db, ctx.version, ctx.out);
  } else {
    // The database is not ours to change: write a copy with the handles planned for it.
    std::unique_ptr<Entity> copy = e.clone();
    copy->id = ctx.idOf(e.id);
    copy->owner = owner;
    if (auto* p = As<Polyline>(copy.get())) {
      const auto& src = static_cast<const Polyline&>(e);
      for (std::size_t i = 0; i < p->vertices.size(); ++i) p->vertices[i].id = ctx.idOf(src.vertices[i].id);
      p->seqendId = ctx.idOf(src.seqendId);
    } else if (auto* insert = As<Insert>(copy.get())) {
      const auto& src = static_cast<const Insert&>(e);
      for (std::size_t i = 0; i < insert->attribs.size(); ++i) {
        insert->attribs[i]->id = ctx.idOf(src.attribs[i]->id);
        insert->attribs[i]->owner = copy->id;
      }
      if (!insert->attribs.empty()) insert->seqendId = ctx.idOf(src.seqendId);
    }
    EncodeEntity(*copy, ctx.db, ctx.version, ctx.out);
  }
  ctx.flushIfLarge();
}

void WriteEntitiesOf(WriteContext& ctx, const BlockRecord& block) {
  if (block.externalContent) return;
  const ObjectId owner = ctx.idOf(block.id);
  ctx.db.forEachEntity(block, [&](const Entity& e) {
    if (IsSaved(e)) WriteEntity(ctx, e, owner);
  });
}

std::string LayerName(const Database& db, ObjectId layer) {
  if (const auto* l = db.objectAs<Layer>(layer)) return l->name;
  return "0";
}

// The BLOCK or ENDBLK entity that opens or closes a block definition.
void WriteBlockEntity(WriteContext& ctx, const BlockRecord& b, bool begin) {
  DxfOutput& out = ctx.out;
  out.str(0, begin ? "BLOCK" : "ENDBLK");
  out.handle(5, ctx.idOf(begin ? b.beginId : b.endId));
  out.handle(330, ctx.idOf(b.id));
  out.str(100, "AcDbEntity");
  if (b.isLayout() && !b.isModelSpace()) out.integer(67, 1);
  out.str(8, LayerName(ctx.db, b.beginLayer));
  if (!begin) {
    out.str(100, "AcDbBlockEnd");
    return;
  }
  out.str(100, "AcDbBlockBegin");
  out.str(2, b.name);
  out.integer(70, b.blockFlags);
  out.point(10, b.basePoint);
  out.str(3, b.name);
  out.str(1, b.xrefPath);
  if (!b.description.empty()) out.str(4, b.description);
}

}  // namespace

void WriteBlocksSection(WriteContext& ctx) {
  const BlockRecord* model = ctx.db.modelSpace();
  const BlockRecord* paper = ctx.db.paperSpace();
  ctx.out.str(0, "SECTION");
  ctx.out.str(2, "BLOCKS");
  for (const auto& b : ctx.db.blocks) {
    WriteBlockEntity(ctx, *b, true);
    // Model space and the current paper space keep their entities in the ENTITIES section.
    if (b.get() != model && b.get() != paper) WriteEntitiesOf(ctx, *b);
    WriteBlockEntity(ctx, *b, false);
  }
  ctx.out.str(0, "ENDSEC");
}

void WriteEntitiesSection(WriteContext& ctx) {
  ctx.out.str(0, "SECTION");
  ctx.out.str(2, "ENTITIES");
  if (const BlockRecord* model = ctx.db.modelSpace()) WriteEntitiesOf(ctx, *model);
  if (const BlockRecord* paper = ctx.db.paperSpace()) WriteEntitiesOf(ctx, *paper);
  ctx.out.str(0, "ENDSEC");
}

}  // namespace tv::cad::dxf_write
