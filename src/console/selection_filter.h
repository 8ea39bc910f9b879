#pragma once
// Selection filters compiled for the console's selections: which entities a list of
// (code, text) items lets through.
#include <optional>
#include <string>
#include <vector>

#include "cad/database.h"
#include "host/editor.h"

namespace tv::console {

class EntityFilter {
 public:
  // Lets everything through.
  EntityFilter() = default;
  // nullopt when the list is malformed: an unknown code or operator, an operator left open or
  // closed by the wrong one, a "<not" without exactly one operand, an empty "<or"/"<and".
  // Top-level items combine with and; an empty list lets everything through.
  static std::optional<EntityFilter> Compile(const host::SelectionFilter& items);

  // Code 0 tests the entity's DXF name, 8 its layer's name, 2 the block name of an insert
  // (nothing else has one), all with WildcardMatch.
  bool accepts(const cad::Entity& entity, const cad::Database& db) const;

  struct Node {
    enum class Kind { Type, Layer, Block, And, Or, Not } kind = Kind::And;
    std::string pattern;
    std::vector<Node> operands;
  };

 private:
  Node root_;
};

// The name of the entity's layer; "0" when it has none.
std::string LayerNameOf(const cad::Entity& entity, const cad::Database& db);

}  // namespace tv::console
