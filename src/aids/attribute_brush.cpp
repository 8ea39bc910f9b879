#include "aids/attribute_brush.h"

#include <algorithm>
#include <optional>
#include <sstream>

#include "host/editor.h"
#include "host/entity.h"
#include "host/text_edit.h"
#include "host/wrappers.h"

namespace tv::aids {

namespace {

constexpr const char* kSourcePrompt = "\n选择带属性图块（属性源）：";
constexpr const char* kTargetPrompt = "\n选择属性图块：";
constexpr const char* kTitle = "图块属性刷新";
constexpr const char* kFormPrompt =
    "\n刷新(R 序号) / 属性值(V 序号) / 排序(S 属性名|属性值) / 选择图框刷新属性(B) / 退 出(Q) <B>: ";

bool OnHiddenLayer(const host::Entity& e) {
  const host::DrawingAids& aids = host::Aids();
  return FindId(aids.frozenLayerIds, e.layer()) >= 0 || FindId(aids.offLayerIds, e.layer()) >= 0;
}

void ShowRows(const std::vector<AttributeRow>& rows) {
  std::vector<std::vector<std::string>> cells;
  for (std::size_t i = 0; i < rows.size(); ++i)
    cells.push_back({std::to_string(i + 1), rows[i].refresh ? "√" : "", rows[i].tag, rows[i].value});
  host::CurrentEditor().showList(kTitle, {"序 号", " 刷 新 ", " 属 性 名 ", " 属 性 值 "}, cells);
}

// A row number typed after a command letter; nullopt when it names no row.
std::optional<std::size_t> RowOf(std::istringstream& in, std::size_t count) {
  std::size_t n = 0;
  if (!(in >> n) || n < 1 || n > count) return std::nullopt;
  return n - 1;
}

// "选择图框刷新属性": the checked rows written onto the references selected.
void RefreshSelected(const std::vector<AttributeRow>& rows) {
  ObjectIdArray targets;
  if (host::CurrentEditor().select("_:$", {kTargetPrompt, ""}, {}, host::TypeFilter({"insert"}), targets) != host::RTNORM)
    return;
  int written = 0;
  for (const AttributeRow& row : rows)
    if (row.refresh) written += WriteAttributeValue(targets, row.tag, row.value);
  host::RegenDrawing();
  host::Print("\n已刷新属性 " + std::to_string(written) + " 个。");
}

}  // namespace

void ReadAttributes(ObjectId insertId, std::vector<AttributeRow>& rows) {
  rows.clear();
  const host::Entity insert = host::OpenEntity(insertId);
  if (!insert || insert.kind() != host::EntityClass::BlockReference) return;
  for (ObjectId id : insert.attributeIds()) {
    const host::Entity a = host::OpenEntity(id);
    if (!a || host::IsInvisibleAttribute(id) || OnHiddenLayer(a)) continue;
    rows.push_back({a.attributeTag(), a.storedText(), true});
  }
}

void SortAttributeRows(std::vector<AttributeRow>& rows, bool byValue, bool ascending) {
  const auto key = [byValue](const AttributeRow& r) -> const std::string& { return byValue ? r.value : r.tag; };
  std::stable_sort(rows.begin(), rows.end(), [&](const AttributeRow& a, const AttributeRow& b) {
    return ascending ? key(a) < key(b) : key(b) < key(a);
  });
}

int WriteAttributeValue(const ObjectIdArray& insertIds, const std::string& tag, const std::string& value) {
  int written = 0;
  for (ObjectId insertId : insertIds) {
    const host::Entity insert = host::OpenEntity(insertId);
    if (!insert || insert.kind() != host::EntityClass::BlockReference) continue;
    for (ObjectId id : insert.attributeIds()) {
      const host::Entity a = host::OpenEntity(id);
      if (a && a.attributeTag() == tag && host::SetEntityText(id, value)) ++written;
    }
  }
  return written;
}

void AttributeBrushCommand() {
  host::ReadLayerStates();
  host::Editor& editor = host::CurrentEditor();
  ObjectIdArray sources;
  if (editor.select("_:$", {kSourcePrompt, ""}, {}, host::TypeFilter({"insert"}), sources) == host::RTCAN) return;
  std::vector<AttributeRow> rows;
  for (ObjectId id : sources) {
    ReadAttributes(id, rows);
    if (!rows.empty()) break;
  }
  if (rows.empty()) {
    host::Print("\n未选择到带属性图块！！！");
    return;
  }
  bool ascending = true;
  ShowRows(rows);
  for (;;) {
    std::string answer;
    if (editor.getString(kFormPrompt, answer) != host::RTNORM) return;
    std::istringstream in(answer);
    std::string command;
    in >> command;
    if (command.empty() || command == "B" || command == "b" || command == "选择图框刷新属性") {
      RefreshSelected(rows);
    } else if (command == "Q" || command == "q" || command == "退出" || command == "退 出") {
      return;
    } else if (command == "R" || command == "r") {
      const std::optional<std::size_t> row = RowOf(in, rows.size());
      if (!row) {
        host::Print("\n无效的序号。");
        continue;
      }
      rows[*row].refresh = !rows[*row].refresh;
    } else if (command == "V" || command == "v") {
      const std::optional<std::size_t> row = RowOf(in, rows.size());
      if (!row) {
        host::Print("\n无效的序号。");
        continue;
      }
      // The one-line text form "属性值", its field holding the value as it stands.
      std::string value;
      if (editor.getString("\n属性值 <" + rows[*row].value + ">: ", value) != host::RTNORM) continue;
      if (!value.empty()) rows[*row].value = value;
    } else if (command == "S" || command == "s") {
      std::string column;
      in >> column;
      const bool byValue = column == "属性值" || column == "值" || column == "V" || column == "v";
      if (!byValue && column != "属性名" && column != "名" && column != "N" && column != "n") {
        host::Print("\n请指明按属性名或属性值排序。");
        continue;
      }
      SortAttributeRows(rows, byValue, ascending);
      ascending = !ascending;
    } else {
      host::Print("\n无效的选项。");
      continue;
    }
    ShowRows(rows);
  }
}

}  // namespace tv::aids
