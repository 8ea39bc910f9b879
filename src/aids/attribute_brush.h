#pragma once
// "刷图块属性": the attribute values of one block reference copied by tag onto other references,
// through the form "图块属性刷新" where the user picks the attributes that count.
#include <string>
#include <vector>

#include "host/object_id.h"

namespace tv::aids {

struct AttributeRow {
  std::string tag;
  std::string value;  // a multiline attribute's contents, formatting left in
  bool refresh = true;
};

// The rows of a reference's attributes in their order: those not invisible and on no frozen or
// switched-off layer. Empties `rows` first.
void ReadAttributes(ObjectId insertId, std::vector<AttributeRow>& rows);

// The rows by tag or value, ascending or descending; rows that compare equal keep their order.
void SortAttributeRows(std::vector<AttributeRow>& rows, bool byValue, bool ascending);

// Writes `value` into every attribute tagged `tag` on the references; a reference without the
// tag is left alone. The number of attributes written.
int WriteAttributeValue(const ObjectIdArray& insertIds, const std::string& tag, const std::string& value);

// The command body.
void AttributeBrushCommand();

}  // namespace tv::aids
