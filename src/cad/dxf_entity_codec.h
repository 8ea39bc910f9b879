#pragma once
// Reads and writes one entity in DXF: the common entity groups and the groups of each class.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "cad/database.h"
#include "cad/dxf_output.h"
#include "cad/dxf_tokenizer.h"

namespace tv::cad {

// What the entity decoder needs from the reader around it.
class DxfReadContext {
 public:
  virtual ~DxfReadContext() = default;
  virtual Database& db() = 0;
  virtual DxfVersion version() const = 0;
  // File text (in the file's code page, with \U+ and \M+ escapes) to UTF-8.
  virtual std::string text(std::string_view raw) = 0;
  // Table records by name; a missing layer, linetype, style, block or dimension style is created
  // (real files refer to undeclared ones). Empty names give null (ByLayer linetype, default style).
  virtual ObjectId layerByName(std::string_view name) = 0;
  virtual ObjectId linetypeByName(std::string_view name) = 0;
  virtual ObjectId textStyleByName(std::string_view name) = 0;
  virtual ObjectId blockByName(std::string_view name) = 0;
  virtual ObjectId dimStyleByName(std::string_view name) = 0;
  // The record an entity names by `raw`, its name as the file spells it (not decoded): the layer
  // (8), the linetype (6, null for ByLayer), the text style (7) or the inserted block (2). The
  // same as the lookups above after text(raw); a reader may remember the few names that
  // thousands of entities repeat.
  enum class EntityName : std::uint8_t { Layer, Linetype, TextStyle, Block };
  virtual ObjectId recordOfEntity(EntityName kind, std::string_view raw);
  // A problem that does not stop reading (kept for `tvplot info` and logs).
  virtual void warn(std::string message) = 0;
};

// Reads an entity whose "0 NAME" group has just been read, up to (not including) the next 0 group.
// POLYLINE takes its VERTEX entities and SEQEND, INSERT with 66 = 1 its ATTRIBs and SEQEND.
// Returns nullptr after a tokenizer error (the caller reports tok.error()); a 0 group that ends
// a POLYLINE or INSERT early is a warning, not an error.
std::unique_ptr<Entity> DecodeEntity(std::string_view dxfName, DxfTokenizer& tok, DxfReadContext& ctx);

// Writes one entity with its 0 group, as of the given version (R2000 and later; R12 output is not offered).
// POLYLINE writes its VERTEX entities and SEQEND, INSERT its ATTRIBs and SEQEND.
void EncodeEntity(const Entity& e, const Database& db, DxfVersion version, DxfOutput& out);

}  // namespace tv::cad
