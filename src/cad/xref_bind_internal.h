#pragma once
// How the content of one referenced file joins the drawing that refers to it: its names under the
// reference's name, its entities copied with every reference remapped. Not part of the API.
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cad/database.h"

namespace tv::cad {

// Where the names of one file went in the drawing, for one xref name.
struct BoundNames {
  std::unordered_map<std::uint64_t, ObjectId> ids;  // the file's record ids -> the drawing's
  // The file's nested xref blocks, to be loaded once the names are in place.
  std::vector<std::pair<const BlockRecord*, BlockRecord*>> nested;
};

class XrefBinder {
 public:
  explicit XrefBinder(Database& db);
  ~XrefBinder();
  XrefBinder(const XrefBinder&) = delete;
  XrefBinder& operator=(const XrefBinder&) = delete;

  // Adds the layers, linetypes, text styles, dimension styles and blocks of `src` under `prefix`,
  // noting in `names` where each went and which blocks are nested references.
  void bind(const std::string& prefix, const Database& src, BoundNames& names);
  // Copies the entities of `from` (a block of `src`) into `to`, up to kMaxXrefEntities a load.
  void copyEntities(const BlockRecord& from, BlockRecord& to, const BoundNames& names, const Database& src);

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace tv::cad
