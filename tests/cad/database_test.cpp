#include "cad/database.h"

#include <gtest/gtest.h>

namespace tv::cad {
namespace {

TEST(Database, DefaultDrawingHasWhatEveryUserExpects) {
  Database db = Database::createDefault();
  ASSERT_NE(db.modelSpace(), nullptr);
  ASSERT_NE(db.paperSpace(), nullptr);
  EXPECT_NE(db.findLayer("0"), nullptr);
  EXPECT_NE(db.findLinetype("continuous"), nullptr) << "names compare without case";
  EXPECT_NE(db.findTextStyle("STANDARD"), nullptr);
  EXPECT_NE(db.activeViewport(), nullptr);
  ASSERT_NE(db.rootDictionary(), nullptr);
  EXPECT_EQ(db.objects.front()->id, db.rootDictionaryId) << "the root dictionary is written first";
  EXPECT_NE(db.namedDictionary("ACAD_LAYOUT"), nullptr);

  auto layouts = db.layoutsInTabOrder();
  ASSERT_EQ(layouts.size(), 2u);
  EXPECT_EQ(layouts[0]->name, "Model");
  EXPECT_EQ(db.blockOf(*layouts[0]), db.modelSpace());
  EXPECT_EQ(db.blockOf(*layouts[1]), db.paperSpace());
  EXPECT_EQ(db.layoutOf(*db.paperSpace()), layouts[1]);
  EXPECT_EQ(db.version(), DxfVersion::R2018);
  EXPECT_EQ(db.codePage(), "ANSI_936");
}

TEST(Database, HandlesStayUniqueWhateverTheFileSays) {
  Database db = Database::createDefault();
  auto first = std::make_unique<Line>();
  first->id = ObjectId{0x5000};
  Line& a = db.append(*db.modelSpace(), std::move(first));
  EXPECT_EQ(a.id, ObjectId{0x5000});

  // A lower handle out of order is kept when free …
  auto low = std::make_unique<Line>();
  low->id = ObjectId{0x4000};
  Line& b = db.append(*db.modelSpace(), std::move(low));
  EXPECT_EQ(b.id, ObjectId{0x4000});
  // … and replaced when taken, by one above everything in use.
  auto clash = std::make_unique<Line>();
  clash->id = ObjectId{0x4000};
  Line& c = db.append(*db.modelSpace(), std::move(clash));
  EXPECT_GT(c.id.value, 0x5000u);

  EXPECT_EQ(db.entity(ObjectId{0x4000}), &b);
  EXPECT_EQ(db.entity(c.id), &c);
  EXPECT_EQ(db.entity(ObjectId{0x4001}), nullptr);
  EXPECT_EQ(db.entity(ObjectId{}), nullptr);
  EXPECT_GT(db.newHandle().value, c.id.value);
}

TEST(Database, ErasedEntitiesVanishFromLookupAndPurge) {
  Database db = Database::createDefault();
  BlockRecord& ms = *db.modelSpace();
  auto insert = std::make_unique<Insert>();
  insert->attribs.push_back(std::make_unique<Attrib>());
  Insert& ins = db.append(ms, std::move(insert));
  ObjectId attribId = ins.attribs[0]->id;
  ASSERT_FALSE(attribId.isNull());
  EXPECT_EQ(db.ownerBlock(*ins.attribs[0]), &ms) << "an attribute belongs to the block of its insert";
  Line& keep = db.append(ms, std::make_unique<Line>());

  EXPECT_TRUE(db.erase(ins.id));
  EXPECT_FALSE(db.erase(ins.id)) << "erasing twice reports failure";
  EXPECT_EQ(db.entity(attribId), nullptr);
  int live = 0;
  db.forEachEntity(ms, [&](const Entity&) { ++live; });
  EXPECT_EQ(live, 1);

  db.purgeErased();
  ASSERT_EQ(ms.entities.size(), 1u);
  EXPECT_EQ(ms.entities[0].get(), &keep);
  EXPECT_EQ(db.entity(keep.id), &keep);
}

TEST(Database, AnonymousBlocksAndLayoutsGetFreshNames) {
  Database db = Database::createDefault();
  BlockRecord& u1 = db.addBlock("*U");
  BlockRecord& u2 = db.addBlock("*U");
  EXPECT_EQ(u1.name, "*U1");
  EXPECT_EQ(u2.name, "*U2");
  EXPECT_TRUE(u1.isAnonymous());
  EXPECT_EQ(&db.addBlock("*u1"), &u1) << "an existing name gives the existing block";

  Layout& second = db.addLayout("布局2");
  auto layouts = db.layoutsInTabOrder();
  ASSERT_EQ(layouts.size(), 3u);
  EXPECT_EQ(layouts.back(), &second);
  BlockRecord* block = db.blockOf(second);
  ASSERT_NE(block, nullptr);
  EXPECT_TRUE(block->isPaperSpace());
  EXPECT_NE(block, db.paperSpace());
  EXPECT_EQ(db.namedDictionary("ACAD_LAYOUT")->find("布局2"), second.id);
}

TEST(Database, DictionariesXrecordsAndInsertClips) {
  Database db = Database::createDefault();
  Dictionary& root = *db.rootDictionary();
  Dictionary& mine = db.ensureDictionary(root, "DWG_PLOT_SETTING");
  EXPECT_EQ(&db.ensureDictionary(root, "DWG_PLOT_SETTING"), &mine);
  Xrecord& x = db.ensureXrecord(mine, "DATA");
  x.data.emplace_back(1, std::string("图纸"));
  x.data.emplace_back(40, 2.5);
  EXPECT_EQ(&db.ensureXrecord(mine, "DATA"), &x);
  EXPECT_EQ(x.owner, mine.id);

  Insert& ins = db.append(*db.modelSpace(), std::make_unique<Insert>());
  EXPECT_EQ(db.spatialFilterOf(ins), nullptr);
  Dictionary& xdict = db.ensureExtensionDictionary(ins);
  EXPECT_EQ(ins.extensionDictionary(), xdict.id);
  Dictionary& filters = db.ensureDictionary(xdict, "ACAD_FILTER");
  SpatialFilter& clip = db.addObject(std::make_unique<SpatialFilter>(), filters.id);
  filters.set("SPATIAL", clip.id);
  EXPECT_EQ(db.spatialFilterOf(ins), &clip);
}

TEST(Database, CopiesAreDeep) {
  Database db = Database::createDefault();
  auto insert = std::make_unique<Insert>();
  auto att = std::make_unique<Attrib>();
  att->tag = "图号";
  insert->attribs.push_back(std::move(att));
  Insert& ins = db.append(*db.modelSpace(), std::move(insert));
  ins.extras().xdata.emplace_back(1001, std::string("TARVEX"));

  auto copy = ins.clone();
  auto* c = As<Insert>(copy.get());
  ASSERT_NE(c, nullptr);
  ASSERT_EQ(c->attribs.size(), 1u);
  EXPECT_NE(c->attribs[0].get(), ins.attribs[0].get());
  EXPECT_EQ(c->attribs[0]->tag, "图号");
  ASSERT_NE(c->extrasIfAny(), nullptr);
  EXPECT_NE(c->extrasIfAny(), ins.extrasIfAny());
  EXPECT_EQ(As<Line>(copy.get()), nullptr);
}

// Rarely set fields live apart from the record: a copy must own them, and a record that never
// set them reads the defaults.
TEST(Database, CopiesOwnTheirRarelySetFields) {
  Text text;
  EXPECT_EQ(text.normal(), Vector3d::zAxis());
  EXPECT_FALSE(text.hasAlignPoint());
  text.setOblique(0.25);
  text.setAlignPoint({1, 2, 0});
  auto textCopy = text.clone();
  auto* t = As<Text>(textCopy.get());
  ASSERT_NE(t, nullptr);
  t->setOblique(0.5);
  t->setHasAlignPoint(false);
  EXPECT_EQ(text.oblique(), 0.25);
  EXPECT_TRUE(text.hasAlignPoint());
  EXPECT_EQ(t->oblique(), 0.5);
  EXPECT_EQ(t->alignPoint(), Point3d(1, 2, 0));

  Attrib att;
  att.setLockPosition(true);
  att.editDetails().multiline.emplace_back(101, std::string("Embedded Object"));
  auto attCopy = att.clone();
  auto* a = As<Attrib>(attCopy.get());
  ASSERT_NE(a, nullptr);
  a->editDetails().multiline.clear();
  EXPECT_TRUE(a->lockPosition());
  EXPECT_EQ(att.multiline().size(), 1u);

  LwPolyline poly;
  EXPECT_EQ(poly.startWidthAt(0), 0);
  poly.points = {{0, 0}, {1, 0}};
  poly.editDetails().widths = {{1, 2}, {3, 4}};
  poly.setElevation(5);
  auto polyCopy = poly.clone();
  auto* p = As<LwPolyline>(polyCopy.get());
  ASSERT_NE(p, nullptr);
  p->editDetails().widths.clear();
  p->setConstantWidth(7);
  EXPECT_EQ(poly.endWidthAt(1), 4);
  EXPECT_EQ(p->endWidthAt(1), 7);
  EXPECT_EQ(p->elevation(), 5);
}

}  // namespace
}  // namespace tv::cad
