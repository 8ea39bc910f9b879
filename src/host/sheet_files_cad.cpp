// Sheet files of this platform: the sheet copied into a drawing of its own and written as DXF in
// the version and code page of the working drawing.
#include "cad/dxf_writer.h"
#include "cad/layout_viewport.h"
#include "cad/sheet_copy.h"
#include "host/cad_binding.h"
#include "host/sheet_files.h"
#include "host/xrecords_internal.h"

namespace tv::host {

std::string DrawingFileExtension() { return ".dxf"; }

ObjectIdArray OverallViewportIds() {
  ObjectIdArray ids;
  const cad::Database* db = WorkingDatabase();
  if (!db) return ids;
  const auto* space = db->objectAs<cad::BlockRecord>(CurrentSpaceBlockId());
  if (!space || space->isModelSpace()) return ids;
  if (ObjectId own = cad::LayoutViewportOf(*db, *space); !own.isNull()) ids.push_back(own);
  return ids;
}

ObjectId ViewportClipOf(ObjectId viewportId) {
  const cad::Database* db = WorkingDatabase();
  const auto* vp = db ? db->objectAs<cad::Viewport>(viewportId) : nullptr;
  if (!vp || !(vp->statusFlags & cad::Viewport::kClippedNonRect)) return {};
  return vp->clipBoundary;
}

void RenameStandardStyles(const std::string& from, const std::string& to) {
  cad::Database* db = WorkingDatabase();
  if (!db || from == to) return;
  if (cad::TableRecord* style = db->findTableRecord("DIMSTYLE", from); style && !db->findTableRecord("DIMSTYLE", to))
    style->name = to;
  for (const char* key : {"ACAD_MLINESTYLE", "ACAD_MLEADERSTYLE"}) {
    cad::Dictionary* dict = db->namedDictionary(key);
    if (!dict || dict->find(to).value != 0) continue;
    for (auto& [name, id] : dict->entries)
      if (name == from) name = to;
  }
}

void NoteSheetFile(const std::string& path, bool written, const std::string& why) {
  if (Working().onOutputFile) Working().onOutputFile(path, written, why);
}

bool WriteSheetFile(const SheetFile& sheet, const std::string& path, std::string& why) {
  const cad::Database* db = WorkingDatabase();
  if (!db) {
    why = "没有打开的图纸";
    return false;
  }
  cad::SheetCopyRequest request;
  request.space = CurrentSpaceBlockId();
  request.ids = sheet.ids;
  request.base = sheet.base;
  request.asBlock = sheet.asBlock;
  request.blockName = sheet.blockName;
  request.layoutName = sheet.layoutName;
  request.withModelSpace = sheet.withModelSpace;
  request.viewWidth = sheet.viewWidth;
  request.viewHeight = sheet.viewHeight;
  request.limitsMin = sheet.limitsMin;
  request.limitsMax = sheet.limitsMax;
  request.sourceFolder = sheet.sourceFolder;
  cad::Database copy = cad::CopySheet(*db, request);
  for (const auto& [key, items] : sheet.namedRecords) WriteNamedXrecordInto(copy, key, items);
  // The writer offers the two UTF-8 versions: an older drawing's sheets come out in the newer one.
  cad::DxfWriteOptions options;
  options.version = db->version() == cad::DxfVersion::R2013 ? cad::DxfVersion::R2013 : cad::DxfVersion::R2018;
  const cad::Status written = cad::WriteDxf(copy, path, options);
  if (!written.ok) why = written.message;
  return written.ok;
}

}  // namespace tv::host
