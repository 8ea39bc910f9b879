#pragma once
// Drawings that refer to each other as external references, laid out in folders as offices keep
// them, built through the drawing model and written with the project's DXF writer.
#include <filesystem>
#include <memory>
#include <string>

#include "cad/database.h"
#include "cad/dxf_writer.h"
#include "entity_builders.h"

namespace tv::test_support {

// A block of `db` that refers to the file `savedPath` (kept as written, `\` and all).
inline cad::BlockRecord& AddXrefBlock(cad::Database& db, const std::string& name, const std::string& savedPath,
                                      bool overlay = false) {
  cad::BlockRecord& block = db.addBlock(name);
  block.blockFlags |= overlay ? cad::BlockRecord::kXref | cad::BlockRecord::kXrefOverlay : cad::BlockRecord::kXref;
  block.xrefPath = savedPath;
  return block;
}

// An insert of `block` into `space` (model space when none is given) at `at`, scaled alike on both axes.
inline cad::Insert& Place(cad::Database& db, const cad::BlockRecord& block, cad::Point3d at, double scale = 1,
                          cad::BlockRecord* space = nullptr) {
  return db.append(space ? *space : *db.modelSpace(), MakeInsert(block, at, {scale, scale, scale}));
}

// A drawing with one xref placed at the origin.
inline cad::Database Referring(const std::string& name, const std::string& savedPath, bool overlay = false) {
  cad::Database db = cad::Database::createDefault();
  Place(db, AddXrefBlock(db, name, savedPath, overlay), {});
  return db;
}

// Writes `db` to `path`, making its folders; the path back.
inline std::string WriteDrawing(const std::filesystem::path& path, const cad::Database& db) {
  std::filesystem::create_directories(path.parent_path());
  if (!cad::WriteDxf(db, path.string()).ok) return {};
  return path.string();
}

}  // namespace tv::test_support
