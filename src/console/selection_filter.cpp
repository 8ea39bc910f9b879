#include "console/selection_filter.h"

#include <cstddef>

#include "console/text_match.h"

namespace tv::console {

namespace {

using Node = EntityFilter::Node;

// Reads operands until `closing` (or the end of the list when `closing` is empty).
bool ParseOperands(const host::SelectionFilter& items, std::size_t& i, const std::string& closing,
                   std::vector<Node>& operands) {
  while (i < items.size()) {
    const host::FilterItem& item = items[i++];
    switch (item.code) {
      case 0: operands.push_back({Node::Kind::Type, item.text, {}}); break;
      case 8: operands.push_back({Node::Kind::Layer, item.text, {}}); break;
      case 2: operands.push_back({Node::Kind::Block, item.text, {}}); break;
      case -4: {
        const std::string op = AsciiUpper(TrimBlanks(item.text));
        if (!closing.empty() && op == closing) return true;
        Node group;
        if (op == "<OR") group.kind = Node::Kind::Or;
        else if (op == "<AND") group.kind = Node::Kind::And;
        else if (op == "<NOT") group.kind = Node::Kind::Not;
        else return false;  // an unknown operator, or one closing a group that is not open
        const std::string close = op.substr(1) + ">";
        if (!ParseOperands(items, i, close, group.operands)) return false;
        if (group.kind == Node::Kind::Not ? group.operands.size() != 1 : group.operands.empty()) return false;
        operands.push_back(std::move(group));
        break;
      }
      default: return false;
    }
  }
  return closing.empty();  // a group still open at the end is malformed
}

std::string BlockNameOf(const cad::Entity& entity, const cad::Database& db) {
  if (auto* insert = cad::As<cad::Insert>(&entity))
    if (auto* block = db.objectAs<cad::BlockRecord>(insert->block)) return block->name;
  return {};
}

bool Evaluate(const Node& node, const cad::Entity& entity, const cad::Database& db) {
  switch (node.kind) {
    case Node::Kind::Type: return WildcardMatch(node.pattern, entity.dxfName());
    case Node::Kind::Layer: return WildcardMatch(node.pattern, LayerNameOf(entity, db));
    case Node::Kind::Block:
      return cad::As<cad::Insert>(&entity) && WildcardMatch(node.pattern, BlockNameOf(entity, db));
    case Node::Kind::And:
      for (const Node& n : node.operands)
        if (!Evaluate(n, entity, db)) return false;
      return true;
    case Node::Kind::Or:
      for (const Node& n : node.operands)
        if (Evaluate(n, entity, db)) return true;
      return false;
    case Node::Kind::Not: return !Evaluate(node.operands.front(), entity, db);
  }
  return false;
}

}  // namespace

std::optional<EntityFilter> EntityFilter::Compile(const host::SelectionFilter& items) {
  EntityFilter filter;
  std::size_t i = 0;
  if (!ParseOperands(items, i, {}, filter.root_.operands)) return std::nullopt;
  return filter;
}

bool EntityFilter::accepts(const cad::Entity& entity, const cad::Database& db) const {
  return Evaluate(root_, entity, db);
}

std::string LayerNameOf(const cad::Entity& entity, const cad::Database& db) {
  if (auto* layer = db.objectAs<cad::Layer>(entity.layer)) return layer->name;
  return "0";
}

}  // namespace tv::console
