#include "host/xrecords.h"

#include "cad/database.h"
#include "cad/objects.h"
#include "host/cad_binding.h"
#include "host/xrecords_internal.h"

namespace tv::host {

std::optional<std::vector<XrecordItem>> ReadNamedXrecord(const std::string& key) {
  const cad::Database* db = WorkingDatabase();
  if (!db) return std::nullopt;
  const cad::Dictionary* dict = db->namedDictionary(key);
  if (!dict) return std::nullopt;
  const auto* record = db->objectAs<cad::Xrecord>(dict->find(key));
  if (!record) return std::nullopt;

  std::vector<XrecordItem> items;
  items.reserve(record->data.size());
  for (const cad::Group& g : record->data) {
    if (const auto* s = std::get_if<std::string>(&g.value))
      items.push_back({g.code, *s});
    else if (const auto* d = std::get_if<double>(&g.value))
      items.push_back({g.code, *d});
    else if (const auto* i = std::get_if<std::int64_t>(&g.value))
      items.push_back({g.code, static_cast<std::int32_t>(*i)});
  }
  return items;
}

bool WriteNamedXrecord(const std::string& key, const std::vector<XrecordItem>& items) {
  cad::Database* db = WorkingDatabase();
  return db && WriteNamedXrecordInto(*db, key, items);
}

bool WriteNamedXrecordInto(cad::Database& drawing, const std::string& key, const std::vector<XrecordItem>& items) {
  cad::Database* db = &drawing;
  cad::Dictionary* root = db->rootDictionary();
  if (!root) return false;
  cad::Dictionary& dict = db->ensureDictionary(*root, key);
  // An entry of the same name that is no Xrecord is not ours to keep.
  if (!db->objectAs<cad::Xrecord>(dict.find(key))) dict.remove(key);
  cad::Xrecord& record = db->ensureXrecord(dict, key);

  cad::Groups data;
  data.reserve(items.size());
  for (const XrecordItem& item : items) {
    std::visit(
        [&](const auto& v) {
          using T = std::decay_t<decltype(v)>;
          if constexpr (std::is_same_v<T, std::int32_t>)
            data.emplace_back(item.code, static_cast<std::int64_t>(v));
          else
            data.emplace_back(item.code, v);
        },
        item.value);
  }
  record.data = std::move(data);
  return true;
}

}  // namespace tv::host
