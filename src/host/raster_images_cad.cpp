// Raster images on the drawing model: definitions in ACAD_IMAGE_DICT, IMAGE entities, draw order.
#include <algorithm>
#include <memory>

#include "host/cad_binding.h"
#include "host/pictures.h"
#include "host/raster_images.h"

namespace tv::host {

namespace {

constexpr const char* kImageDictionary = "ACAD_IMAGE_DICT";

cad::Dictionary* ImageDictionary(cad::Database& db) { return db.namedDictionary(kImageDictionary); }

// Drops a non-graphical object from the drawing for good.
void DeleteObject(cad::Database& db, ObjectId id) {
  const auto it = std::find_if(db.objects.begin(), db.objects.end(), [&](const auto& o) { return o->id == id; });
  if (it == db.objects.end()) return;
  db.unregisterObject(id);
  db.objects.erase(it);
}

}  // namespace

ObjectId FindImageDefinition(const std::string& key) {
  cad::Database* db = WorkingDatabase();
  const cad::Dictionary* dict = db ? ImageDictionary(*db) : nullptr;
  if (!dict) return {};
  const ObjectId id = dict->find(key);
  return db->objectAs<cad::ImageDef>(id) ? id : ObjectId{};
}

bool RemoveImageDefinition(const std::string& key) {
  cad::Database* db = WorkingDatabase();
  cad::Dictionary* dict = db ? ImageDictionary(*db) : nullptr;
  if (!dict) return false;
  const ObjectId id = dict->find(key);
  if (id.isNull() || !dict->remove(key)) return false;
  if (const auto* def = db->objectAs<cad::ImageDef>(id)) {
    std::vector<ObjectId> reactors;
    if (const cad::ObjectExtras* extras = def->extrasIfAny()) reactors = extras->reactors;
    // An image still standing on the definition forgets its reactor with it.
    for (const ObjectId r : reactors) {
      if (const auto* reactor = db->object(r))
        if (auto* image = db->objectAs<cad::Image>(reactor->owner)) image->imageDefReactor = ObjectId{};
      DeleteObject(*db, r);
    }
  }
  DeleteObject(*db, id);
  return true;
}

void DropEmptyImageDictionary() {
  cad::Database* db = WorkingDatabase();
  cad::Dictionary* root = db ? db->rootDictionary() : nullptr;
  const cad::Dictionary* dict = db ? ImageDictionary(*db) : nullptr;
  if (!root || !dict || !dict->entries.empty()) return;
  const ObjectId id = dict->id;
  root->remove(kImageDictionary);
  DeleteObject(*db, id);
}

ObjectId AddImageDefinition(const std::string& key, const std::string& file, ImageDefinitionFailure& why) {
  why = ImageDefinitionFailure::None;
  const std::optional<PictureSize> size = OpenPicture(file);
  if (!size) {
    why = ImageDefinitionFailure::NotLoaded;
    return {};
  }
  cad::Database* db = WorkingDatabase();
  cad::Dictionary* root = db ? db->rootDictionary() : nullptr;
  if (!root) {
    why = ImageDefinitionFailure::NoDictionary;
    return {};
  }
  cad::Dictionary& dict = db->ensureDictionary(*root, kImageDictionary);
  if (const ObjectId present = dict.find(key); db->objectAs<cad::ImageDef>(present)) return present;
  auto def = std::make_unique<cad::ImageDef>();
  def->fileName = file;
  def->imageSize = {static_cast<double>(size->width), static_cast<double>(size->height)};
  def->loaded = true;
  cad::ImageDef& added = db->addObject(std::move(def), dict.id);
  dict.set(key, added.id);
  return added.id;
}

ObjectId AppendImage(ObjectId definitionId, Point3d lowerLeft, double width, double height, ObjectId layerId) {
  cad::Database* db = WorkingDatabase();
  auto* def = db ? db->objectAs<cad::ImageDef>(definitionId) : nullptr;
  auto* space = db ? db->objectAs<cad::BlockRecord>(CurrentSpaceBlockId()) : nullptr;
  if (!def || !space || !(def->imageSize.x > 0) || !(def->imageSize.y > 0)) return {};
  auto image = std::make_unique<cad::Image>();
  image->imageDef = definitionId;
  image->imageSize = def->imageSize;
  image->position = lowerLeft;
  image->uPixel = {width / def->imageSize.x, 0, 0};
  image->vPixel = {0, height / def->imageSize.y, 0};
  image->displayFlags = 1 | 2 | 8;  // shown, also when not aligned, transparent
  image->clipping = false;
  if (db->objectAs<cad::Layer>(layerId)) image->layer = layerId;
  cad::Image& added = db->append(*space, std::move(image));
  // The definition knows its images through one reactor each, owned by the image.
  auto reactor = std::make_unique<cad::GenericObject>();
  reactor->name = "IMAGEDEF_REACTOR";
  reactor->groups = {cad::Group{100, std::string("AcDbRasterImageDefReactor")}, cad::Group{90, std::int64_t{2}},
                     cad::Group{330, added.id}};
  cad::GenericObject& link = db->addObject(std::move(reactor), added.id);
  added.imageDefReactor = link.id;
  def->extras().reactors.push_back(link.id);
  NoteEntityChange(added);
  return added.id;
}

void SetLayerColor(ObjectId layerId, int colorIndex) {
  cad::Database* db = WorkingDatabase();
  if (auto* layer = db ? db->objectAs<cad::Layer>(layerId) : nullptr)
    if (colorIndex >= 1 && colorIndex <= 255) layer->colorIndex = static_cast<std::int16_t>(colorIndex);
}

bool MoveInDrawOrder(ObjectId id, bool front) {
  cad::Database* db = WorkingDatabase();
  const cad::Entity* e = db ? db->entity(id) : nullptr;
  cad::BlockRecord* block = e ? db->ownerBlock(*e) : nullptr;
  if (!block) return false;
  auto& list = block->entities;
  const auto it = std::find_if(list.begin(), list.end(), [&](const auto& p) { return p.get() == e; });
  if (it == list.end()) return false;
  if (front) std::rotate(it, it + 1, list.end());
  else std::rotate(list.begin(), it, it + 1);
  NoteEntityChange(*e);
  return true;
}

}  // namespace tv::host
