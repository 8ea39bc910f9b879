#include "cad/entities.h"

#include "cad/names_internal.h"
#include "cad/tables.h"

namespace tv::cad {

bool ObjectExtras::empty() const {
  return extensionDictionary.isNull() && reactors.empty() && appGroups.empty() && xdata.empty() && unknown.empty() &&
         colorBookName.empty() && !transparency && plotStyle.isNull() && material.isNull() && !shadowMode;
}

Insert::Insert(const Insert& o) : EntityOf(o), block(o.block), position(o.position), scale(o.scale), rotation(o.rotation),
      columnCount(o.columnCount), rowCount(o.rowCount), columnSpacing(o.columnSpacing), rowSpacing(o.rowSpacing),
      normal(o.normal), seqendId(o.seqendId) {
  attribs.reserve(o.attribs.size());
  for (const auto& a : o.attribs) attribs.push_back(std::make_unique<Attrib>(*a));
}

std::string ProxyEntity::text() const {
  const Group* g = FindGroup(groups, 1);
  return g ? g->asString() : std::string{};
}

bool BlockRecord::isModelSpace() const { return EqualsNoCase(name, "*Model_Space"); }

bool BlockRecord::isPaperSpace() const { return StartsWithNoCase(name, "*Paper_Space"); }

BlockRecord::BlockRecord(const BlockRecord& o)
    : RecordOf(o), blockFlags(o.blockFlags), basePoint(o.basePoint), xrefPath(o.xrefPath), description(o.description),
      layout(o.layout), insertUnits(o.insertUnits), explodable(o.explodable), scalable(o.scalable), preview(o.preview),
      beginId(o.beginId), endId(o.endId), beginLayer(o.beginLayer), externalContent(o.externalContent) {
  entities.reserve(o.entities.size());
  for (const auto& e : o.entities) entities.push_back(e->clone());
}

}  // namespace tv::cad
