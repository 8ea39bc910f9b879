#include "cad/custom_readers.h"

#include <map>
#include <mutex>

namespace tv::cad {

namespace {

struct ReaderTable {
  std::mutex lock;  // drawings may be read on several threads at once
  std::map<std::string, CustomReader, std::less<>> readers;
};

ReaderTable& Table() {
  static ReaderTable table;
  return table;
}

CustomReader ReaderOf(std::string_view name) {
  ReaderTable& t = Table();
  std::lock_guard guard(t.lock);
  auto it = t.readers.find(name);
  return it == t.readers.end() ? CustomReader{} : it->second;
}

}  // namespace

void RegisterCustomReader(const std::string& dxfName, CustomReader reader) {
  ReaderTable& t = Table();
  std::lock_guard guard(t.lock);
  t.readers[dxfName] = std::move(reader);
}

void RemoveCustomReader(std::string_view dxfName) {
  ReaderTable& t = Table();
  std::lock_guard guard(t.lock);
  if (auto it = t.readers.find(dxfName); it != t.readers.end()) t.readers.erase(it);
}

std::unique_ptr<Entity> ReviveProxy(const ProxyEntity& proxy) {
  const CustomReader reader = ReaderOf(proxy.name);
  if (!reader) return nullptr;
  std::unique_ptr<CustomContent> content = reader(proxy.groups);
  if (!content) return nullptr;
  auto e = std::make_unique<CustomEntity>();
  e->id = proxy.id;
  e->owner = proxy.owner;
  if (const ObjectExtras* extras = proxy.extrasIfAny()) e->extras() = *extras;
  e->colorIndex = proxy.colorIndex;
  e->lineweight = proxy.lineweight;
  e->flags = proxy.flags;
  e->layer = proxy.layer;
  e->linetype = proxy.linetype;
  e->trueColor = proxy.trueColor;
  e->linetypeScale = proxy.linetypeScale;
  e->content = std::move(content);
  return e;
}

}  // namespace tv::cad
