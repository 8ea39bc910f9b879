// A host::CustomEntity as the content of the drawing model's custom entity.
#include <charconv>

#include "cad/custom_readers.h"
#include "cad/dxf_tokenizer.h"
#include "host/cad_binding.h"
#include "host/custom_internal.h"

namespace tv::host {

namespace {

class CustomAdapter final : public cad::CustomContent {
 public:
  // `object` is never null.
  explicit CustomAdapter(std::unique_ptr<CustomEntity> object);

  std::string dxfName() const override;
  // nullptr when the object would not copy itself.
  std::unique_ptr<cad::CustomContent> clone() const override;
  std::vector<cad::CustomPrimitive> primitives() const override;
  bool isTransient() const override;
  cad::Groups dxfGroups() const override;
  std::optional<ClassRecord> classRecord() const override;
  bool transformBy(const Matrix3d& xf) override { return object_->transformBy(xf); }

  CustomEntity& object() { return *object_; }
  const CustomEntity& object() const { return *object_; }

 private:
  std::unique_ptr<CustomEntity> object_;
};

CustomAdapter::CustomAdapter(std::unique_ptr<CustomEntity> object) : object_(std::move(object)) {}

std::string CustomAdapter::dxfName() const { return object_->className(); }

std::unique_ptr<cad::CustomContent> CustomAdapter::clone() const {
  auto copy = object_->clone();
  if (!copy) return nullptr;
  return std::make_unique<CustomAdapter>(std::move(copy));
}

std::vector<cad::CustomPrimitive> CustomAdapter::primitives() const {
  PrimitiveRecorder recorder;
  object_->worldDraw(recorder);
  std::vector<cad::CustomPrimitive> out;
  out.reserve(recorder.primitives().size());
  for (const DrawnPrimitive& p : recorder.primitives()) {
    cad::CustomPrimitive q;
    q.kind = p.kind == DrawnPrimitive::Kind::Polygon ? cad::CustomPrimitive::Kind::Polygon : cad::CustomPrimitive::Kind::Polyline;
    q.colorIndex = p.colorIndex;
    q.filled = p.filled;
    q.points = p.points;
    out.push_back(std::move(q));
  }
  return out;
}

bool CustomAdapter::isTransient() const { return object_->isTransient(); }

// A value the class gave as text, typed as its group code wants it so that binary files hold the
// right kind; text that doesn't read as that kind stays text.
cad::GroupValue TypedValue(int code, const std::string& text) {
  const char* end = text.data() + text.size();
  switch (cad::KindOfGroupCode(code)) {
    case cad::GroupKind::Double: {
      double v = 0;
      auto [p, ec] = std::from_chars(text.data(), end, v);
      if (ec == std::errc{} && p == end) return v;
      break;
    }
    case cad::GroupKind::Int16: case cad::GroupKind::Int32: case cad::GroupKind::Int64: case cad::GroupKind::Bool: {
      std::int64_t v = 0;
      auto [p, ec] = std::from_chars(text.data(), end, v);
      if (ec == std::errc{} && p == end) return v;
      break;
    }
    default: break;
  }
  return text;
}

cad::Groups CustomAdapter::dxfGroups() const {
  cad::Groups groups;
  for (auto& [code, value] : object_->dxfGroups()) groups.emplace_back(code, TypedValue(code, value));
  return groups;
}

std::optional<cad::CustomContent::ClassRecord> CustomAdapter::classRecord() const {
  std::optional<EntityClassData> data = object_->classData();
  if (!data) return std::nullopt;
  return ClassRecord{data->appName, data->proxyFlags};
}

// A read group's value as the text the class wrote: numbers in their shortest exact form.
std::string GroupText(const cad::GroupValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  char buffer[64];
  if (const auto* real = std::get_if<double>(&value)) {
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, *real);
    return ec == std::errc{} ? std::string(buffer, end) : std::string();
  }
  if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
  return {};
}

CustomAdapter* AdapterOf(cad::Entity& e) {
  auto* custom = cad::As<cad::CustomEntity>(&e);
  return custom ? dynamic_cast<CustomAdapter*>(custom->content.get()) : nullptr;
}

const CustomAdapter* AdapterOf(const cad::Entity& e) {
  const auto* custom = cad::As<cad::CustomEntity>(&e);
  return custom ? dynamic_cast<const CustomAdapter*>(custom->content.get()) : nullptr;
}

}  // namespace

void RegisterEntityReader(const std::string& className, EntityReader reader) {
  if (!reader) {
    cad::RemoveCustomReader(className);
    return;
  }
  cad::RegisterCustomReader(className, [reader = std::move(reader)](const cad::Groups& groups) -> std::unique_ptr<cad::CustomContent> {
    DxfGroupList list;
    list.reserve(groups.size());
    for (const cad::Group& g : groups) list.emplace_back(g.code, GroupText(g.value));
    return MakeCustomContent(reader(list));
  });
}

std::unique_ptr<cad::CustomContent> MakeCustomContent(std::unique_ptr<CustomEntity> object) {
  if (!object) return nullptr;
  return std::make_unique<CustomAdapter>(std::move(object));
}

CustomEntity* MutableCustomOf(cad::Entity& e) {
  CustomAdapter* adapter = AdapterOf(e);
  return adapter ? &adapter->object() : nullptr;
}

const CustomEntity* CustomOf(const cad::Entity& e) {
  const CustomAdapter* adapter = AdapterOf(e);
  return adapter ? &adapter->object() : nullptr;
}

void DrawCustom(const cad::Entity& e, PrimitiveRecorder& out) {
  if (const CustomAdapter* adapter = AdapterOf(e)) {
    adapter->object().worldDraw(out);
    return;
  }
  // Content of another kind draws through what it reports.
  const auto* custom = cad::As<cad::CustomEntity>(&e);
  if (!custom || !custom->content) return;
  for (const cad::CustomPrimitive& p : custom->content->primitives()) {
    out.setColor(p.colorIndex);
    if (p.kind == cad::CustomPrimitive::Kind::Polygon) {
      out.setFill(p.filled);
      out.polygon(p.points);
    } else {
      out.polyline(p.points);
    }
  }
}

}  // namespace tv::host
