#include "cad/dxf_entity_codec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <utility>
#include <vector>

#include "cad/codepage.h"

namespace tv::cad {
namespace {

// The reader's side as the entity decoder sees it: UTF-8 text, records created on first use.
class FakeContext final : public DxfReadContext {
 public:
  explicit FakeContext(DxfVersion v = DxfVersion::R2018) : db_(Database::createDefault()), version_(v) {}
  Database& db() override { return db_; }
  DxfVersion version() const override { return version_; }
  std::string text(std::string_view raw) override { return DecodeDxfEscapes(raw); }
  ObjectId layerByName(std::string_view n) override { return n.empty() ? ObjectId{} : db_.addLayer(std::string(n)).id; }
  ObjectId linetypeByName(std::string_view n) override { return n.empty() ? ObjectId{} : db_.addLinetype(std::string(n)).id; }
  ObjectId textStyleByName(std::string_view n) override { return n.empty() ? ObjectId{} : db_.addTextStyle(std::string(n)).id; }
  ObjectId blockByName(std::string_view n) override { return n.empty() ? ObjectId{} : db_.addBlock(std::string(n)).id; }
  ObjectId dimStyleByName(std::string_view n) override {
    return n.empty() ? ObjectId{} : db_.addTableRecord("DIMSTYLE", std::string(n)).id;
  }
  void warn(std::string message) override { warnings.push_back(std::move(message)); }
  std::vector<std::string> warnings;

 private:
  Database db_;
  DxfVersion version_;
};

// "0|LINE|8|0" -> the lines of a DXF snippet.
std::string Snip(std::string_view compact) {
  std::string s(compact);
  std::replace(s.begin(), s.end(), '|', '\n');
  return s + "\n";
}

using Pairs = std::vector<std::pair<int, std::string>>;
Pairs ToPairs(const std::string& dxf) {
  Pairs pairs;
  std::istringstream in(dxf);
  std::string code, value;
  while (std::getline(in, code) && std::getline(in, value)) pairs.emplace_back(std::stoi(code), value);
  return pairs;
}

const char* const kLine =
    "0|LINE|5|2A|102|{MYAPP|1|note|102|}|102|{ACAD_REACTORS|330|2B|102|}|102|{ACAD_XDICTIONARY|360|2C|102|}|"
    "330|1F|100|AcDbEntity|8|Walls|6|DASHED|62|1|370|50|48|0.5|60|1|420|16711680|100|AcDbLine|39|2.5|"
    "10|1|20|2|30|0|11|3|21|4|31|0|1001|ACAD|1000|hello|1040|1.5";
const char* const kPolyline =
    "0|POLYLINE|5|60|330|1F|100|AcDbEntity|8|0|100|AcDb2dPolyline|66|1|10|0|20|0|30|0|70|1|"
    "0|VERTEX|5|61|330|60|100|AcDbEntity|8|0|100|AcDbVertex|100|AcDb2dVertex|10|0|20|0|30|0|42|1|70|0|"
    "0|VERTEX|5|62|330|60|100|AcDbEntity|8|0|100|AcDbVertex|100|AcDb2dVertex|10|10|20|0|30|0|40|1|41|2|70|0|"
    "0|SEQEND|5|63|330|60|100|AcDbEntity|8|0";
const char* const kInsert =
    "0|INSERT|5|70|330|1F|100|AcDbEntity|8|0|100|AcDbBlockReference|66|1|2|DOOR|10|1|20|2|30|0|41|2|42|2|50|90|"
    "0|ATTRIB|5|71|330|70|100|AcDbEntity|8|0|100|AcDbText|10|1|20|2|30|0|40|2.5|1|D-01|"
    "100|AcDbAttribute|280|0|2|NUM|70|0|74|2|280|1|"
    "0|ATTRIB|5|72|330|70|100|AcDbEntity|8|0|100|AcDbText|10|1|20|0|30|0|40|2.5|1|Oak|"
    "100|AcDbAttribute|280|0|2|MATERIAL|70|1|"
    "0|SEQEND|5|73|330|70|100|AcDbEntity|8|0";
const char* const kHatch =
    "0|HATCH|5|90|330|1F|100|AcDbEntity|8|0|100|AcDbHatch|10|0|20|0|30|0|210|0|220|0|230|1|2|ANSI31|70|0|71|1|91|2|"
    "92|3|72|1|73|1|93|3|10|0|20|0|42|0.5|10|10|20|0|42|0|10|10|20|10|42|0|97|0|"
    "92|1|93|4|72|1|10|0|20|0|11|10|21|0|72|2|10|10|20|5|40|5|50|270|51|90|73|1|"
    "72|3|10|5|20|10|11|5|21|0|40|0.5|50|0|51|180|73|1|"
    "72|4|94|3|73|1|74|0|95|8|96|4|40|0|40|0|40|0|40|0|40|1|40|1|40|1|40|1|"
    "10|0|20|10|42|1|10|-2|20|8|42|0.5|10|-2|20|2|42|0.5|10|0|20|0|42|1|97|0|"
    "97|2|330|91|330|92|75|0|76|1|52|0|41|1|77|0|78|2|"
    "53|45|43|0|44|0|45|-2.2|46|2.2|79|0|53|135|43|0|44|0|45|-2.2|46|2.2|79|2|49|3|49|-1|"
    "47|0.02|98|1|10|5|20|5|450|0|451|0|460|0|461|0|452|0|470|LINEAR";

const char* const kText =
    "0|TEXT|5|38|330|1F|100|AcDbEntity|8|0|100|AcDbText|10|1|20|2|30|0|40|2.5|1|Hello|50|90|7|Notes|72|1|"
    "11|5|21|2|31|0|100|AcDbText|73|2";
const char* const kAttDef =
    "0|ATTDEF|5|40|330|1F|100|AcDbEntity|8|0|100|AcDbText|10|0|20|0|30|0|40|2.5|1|default|72|1|11|0|21|0|31|0|"
    "100|AcDbAttributeDefinition|280|0|3|Number?|2|TAG1|70|1|73|4|74|2|280|1";
const char* const kDimension =
    "0|DIMENSION|5|B3|330|1F|100|AcDbEntity|8|0|100|AcDbDimension|280|0|2|*D3|10|10|20|3.9|30|0|11|5|21|5.8|31|0|"
    "70|33|71|5|42|10|73|0|74|0|75|0|3|ISO-25|100|AcDbAlignedDimension|13|0|23|0|33|0|14|10|24|0|34|0";
const char* const kViewport =
    "0|VIEWPORT|5|B1|330|1B|100|AcDbEntity|67|1|8|0|100|AcDbViewport|10|46|20|152|30|0|40|69|41|45|68|4|69|2|"
    "12|303|22|229|13|0|23|0|14|10|24|10|15|10|25|10|16|0|26|0|36|1|17|0|27|0|37|0|42|50|43|0|44|0|45|486|"
    "50|0|51|30|72|100|331|9F|331|A0|90|819296|1||281|0|71|1|74|0|110|0|120|0|130|0|111|1|121|0|131|0|"
    "112|0|122|1|132|0|79|0|146|0|170|0|61|5|348|29|292|0|282|1|141|0|142|0|63|250|361|B2";
const char* const kTchText =
    "0|TCH_TEXT|5|80|330|1F|100|AcDbEntity|8|TEXT|62|3|100|TDbText|10|1|20|2|30|0|40|3.5|1|天正文字|7|Standard|50|0";

// One snippet per class; each must decode, and encode to the same text after a second decode.
const std::vector<std::string> kSnippets = {
    kLine, kPolyline, kInsert, kHatch,
    "0|LWPOLYLINE|5|30|330|1F|100|AcDbEntity|8|0|100|AcDbPolyline|90|3|70|1|43|0|10|0|20|0|42|0.5|10|10|20|0|"
    "40|1|41|2|10|10|20|10|210|0|220|0|230|-1",
    "0|CIRCLE|5|31|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|5|20|5|30|0|40|2.5",
    "0|ARC|5|32|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|0|20|0|30|0|40|1|100|AcDbArc|50|30|51|120",
    "0|ELLIPSE|5|33|330|1F|100|AcDbEntity|8|0|100|AcDbEllipse|10|0|20|0|30|0|11|10|21|0|31|0|210|0|220|0|230|1|"
    "40|0.5|41|0|42|3.14159",
    "0|SPLINE|5|34|330|1F|100|AcDbEntity|8|0|100|AcDbSpline|70|8|71|3|72|8|73|4|74|0|42|1e-10|43|1e-10|"
    "40|0|40|0|40|0|40|0|40|1|40|1|40|1|40|1|10|0|20|0|30|0|10|1|20|1|30|0|10|2|20|-1|30|0|10|3|20|0|30|0",
    "0|POINT|5|35|330|1F|100|AcDbEntity|8|0|100|AcDbPoint|10|1|20|2|30|3|50|45",
    "0|SOLID|5|36|330|1F|100|AcDbEntity|8|0|100|AcDbTrace|10|0|20|0|30|0|11|1|21|0|31|0|12|0|22|1|32|0|13|1|23|1|33|0",
    "0|3DFACE|5|37|330|1F|100|AcDbEntity|8|0|100|AcDbFace|10|0|20|0|30|0|11|1|21|0|31|0|12|1|22|1|32|1|13|0|23|1|33|1|70|3",
    kText,
    "0|MTEXT|5|39|330|1F|100|AcDbEntity|8|0|100|AcDbMText|10|0|20|0|30|0|40|2.5|41|100|71|5|72|1|3|abc|1|def|"
    "7|Standard|11|1|21|0|31|0|73|1|44|1|90|1|63|1|45|1.5|441|0|75|2|76|2|78|0|79|1|48|50|49|5|50|10|50|10",
    kAttDef,
    kDimension,
    "0|LEADER|5|41|330|1F|100|AcDbEntity|8|0|100|AcDbLeader|3|Standard|71|1|72|0|73|3|74|1|75|0|40|2.5|41|10|"
    "76|2|10|0|20|0|30|0|10|5|20|5|30|0|77|256|340|42|211|1|221|0|231|0",
    kViewport,
    "0|IMAGE|5|43|330|1F|100|AcDbEntity|8|0|100|AcDbRasterImage|90|0|10|0|20|0|30|0|11|0.1|21|0|31|0|12|0|22|0.1|32|0|"
    "13|640|23|480|340|50|70|7|280|0|281|50|282|50|283|0|360|51|71|1|91|2|14|-0.5|24|-0.5|14|639.5|24|479.5",
    "0|WIPEOUT|5|318|330|2CC|100|AcDbEntity|8|0|160|12|310|8C0000000100|370|0|100|AcDbWipeout|90|0|10|-1|20|-1|30|0|"
    "11|2|21|0|31|0|12|0|22|2|32|0|13|1|23|1|340|0|70|7|280|1|281|50|282|50|283|0|290|0|360|0|71|2|91|3|"
    "14|-0.5|24|0.5|14|0.5|24|0.5|14|-0.5|24|-0.5",
    kTchText,
};

class EntityCodec : public ::testing::Test {
 protected:
  // Decodes the entity of a snippet; the group after it must be left for the caller.
  std::unique_ptr<Entity> decode(const std::string& dxf) {
    auto tok = DxfTokenizer::fromBytes(dxf + "  0\nEOF\n");
    DxfGroup g;
    if (!tok.next(g) || g.code != 0) return nullptr;
    auto e = DecodeEntity(std::string(g.text), tok, ctx);
    if (e) {
      EXPECT_TRUE(tok.next(g) && g.code == 0 && g.text == "EOF") << "the next entity was not left unread";
    }
    return e;
  }
  std::string encode(const Entity& e) {
    DxfOutput out;
    EncodeEntity(e, ctx.db(), DxfVersion::R2018, out);
    return out.take();
  }
  // Decode, encode, decode again: the second encoding must be the first.
  std::unique_ptr<Entity> roundTrip(const std::string& compact) {
    auto first = decode(Snip(compact));
    if (!first) {
      ADD_FAILURE() << "does not decode: " << compact;
      return nullptr;
    }
    const std::string text = encode(*first);
    auto second = decode(text);
    if (!second) {
      ADD_FAILURE() << "own output does not decode:\n" << text;
      return nullptr;
    }
    EXPECT_EQ(encode(*second), text);
    return second;
  }
  FakeContext ctx;
};

TEST(DxfOutput, WritesGroupsAsCadProgramsDo) {
  DxfOutput out;
  out.str(0, "LINE");
  out.handle(5, ObjectId(0x2AB));
  out.real(10, 1.0);
  out.real(20, 0.1);
  out.real(30, -0.0);
  out.real(40, 1e-20);
  out.integer(1071, -7);
  out.str(1, "two\nlines");
  out.group(Group(1040, 2.5));
  out.normal(210, Vector3d::zAxis());
  EXPECT_EQ(out.buffer(), "  0\nLINE\n  5\n2AB\n 10\n1.0\n 20\n0.1\n 30\n0.0\n 40\n1e-20\n1071\n-7\n  1\ntwo lines\n1040\n2.5\n");

  DxfOutput bin;
  bin.binary(310, Bytes(300, 0xAB));
  const Pairs pairs = ToPairs(bin.take());
  ASSERT_EQ(pairs.size(), 3u);
  std::string chunk;
  for (int i = 0; i < 127; ++i) chunk += "AB";
  EXPECT_EQ(pairs[0], (std::pair<int, std::string>{310, chunk}));
  EXPECT_EQ(pairs[2].second.size(), 92u);
}

TEST_F(EntityCodec, EveryClassSurvivesARoundTrip) {
  for (const std::string& s : kSnippets) {
    SCOPED_TRACE(s.substr(0, 40));
    auto e = roundTrip(s);
    ASSERT_TRUE(e);
    EXPECT_FALSE(As<ProxyEntity>(e.get()) && s.rfind("0|TCH_", 0) != 0) << "decoded as a proxy";
  }
}

TEST_F(EntityCodec, CommonGroupsExtensionDictionaryAndXdataArePreserved) {
  auto e = roundTrip(kLine);
  ASSERT_TRUE(e);
  auto* line = As<Line>(e.get());
  ASSERT_TRUE(line);
  EXPECT_EQ(line->id, ObjectId(0x2A));
  EXPECT_EQ(line->owner, ObjectId(0x1F));
  EXPECT_EQ(ctx.db().objectAs<Layer>(line->layer)->name, "Walls");
  EXPECT_EQ(ctx.db().objectAs<Linetype>(line->linetype)->name, "DASHED");
  EXPECT_EQ(line->colorIndex, 1);
  EXPECT_EQ(line->trueColor, 0xFF0000);
  EXPECT_EQ(line->lineweight, 50);
  EXPECT_FLOAT_EQ(line->linetypeScale, 0.5f);
  EXPECT_FALSE(line->isVisible());
  EXPECT_EQ(line->end, (Point3d{3, 4, 0}));
  const ObjectExtras* x = line->extrasIfAny();
  ASSERT_TRUE(x);
  EXPECT_EQ(x->extensionDictionary, ObjectId(0x2C));
  EXPECT_EQ(x->reactors, std::vector<ObjectId>{ObjectId(0x2B)});
  EXPECT_EQ(x->appGroups, (Groups{{102, std::string("{MYAPP")}, {1, std::string("note")}, {102, std::string("}")}}));
  EXPECT_EQ(x->unknown, (Groups{{39, 2.5}}));
  EXPECT_EQ(x->xdata, (Groups{{1001, std::string("ACAD")}, {1000, std::string("hello")}, {1040, 1.5}}));

  // The common entity carries no extras at all.
  auto plain = decode(Snip("0|LINE|5|2D|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|0|20|0|30|0|11|1|21|0|31|0"));
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->extrasIfAny(), nullptr);
}

TEST_F(EntityCodec, AnglesAreRadiansInsideAndDegreesInTheFile) {
  auto e = roundTrip("0|ARC|5|32|330|1F|100|AcDbEntity|8|0|100|AcDbCircle|10|0|20|0|30|0|40|1|100|AcDbArc|50|30|51|120");
  auto* arc = As<Arc>(e.get());
  ASSERT_TRUE(arc);
  EXPECT_NEAR(arc->startAngle, kPi / 6, 1e-12);
  EXPECT_NE(encode(*arc).find(" 50\n30.0\n 51\n120.0\n"), std::string::npos);
}

TEST_F(EntityCodec, TextAlignmentAndAttributeSubclass) {
  auto text = roundTrip(kText);
  auto* t = As<Text>(text.get());
  ASSERT_TRUE(t);
  EXPECT_TRUE(t->hasAlignPoint());
  EXPECT_EQ(t->hAlign, TextHAlign::Center);
  EXPECT_EQ(t->vAlign, TextVAlign::Middle);
  EXPECT_EQ(ctx.db().objectAs<TextStyle>(t->style)->name, "Notes");

  auto def = roundTrip(kAttDef);
  auto* a = As<AttDef>(def.get());
  ASSERT_TRUE(a);
  EXPECT_EQ(a->tag, "TAG1");
  EXPECT_EQ(a->prompt, "Number?");
  EXPECT_EQ(a->fieldLength, 4);
  EXPECT_EQ(a->vAlign, TextVAlign::Middle);
  EXPECT_TRUE(a->lockPosition());
}

TEST_F(EntityCodec, TangentTextKeepsItsStringAsAProxy) {
  auto e = roundTrip(kTchText);
  auto* p = As<ProxyEntity>(e.get());
  ASSERT_TRUE(p);
  EXPECT_EQ(p->name, "TCH_TEXT");
  EXPECT_EQ(p->text(), "天正文字");
  EXPECT_EQ(p->colorIndex, 3);
  EXPECT_EQ(p->groups.front(), (Group{100, std::string("TDbText")}));
}

TEST_F(EntityCodec, InsertTakesItsAttributesAndSeqend) {
  auto e = roundTrip(kInsert);
  auto* ins = As<Insert>(e.get());
  ASSERT_TRUE(ins);
  EXPECT_EQ(ctx.db().objectAs<BlockRecord>(ins->block)->name, "DOOR");
  EXPECT_NEAR(ins->rotation, kPi / 2, 1e-12);
  EXPECT_EQ(ins->seqendId, ObjectId(0x73));
  ASSERT_EQ(ins->attribs.size(), 2u);
  const Attrib& num = *ins->attribs[0];
  EXPECT_EQ(num.id, ObjectId(0x71));
  EXPECT_EQ(num.owner, ins->id);
  EXPECT_EQ(num.tag, "NUM");
  EXPECT_EQ(num.text, "D-01");
  EXPECT_EQ(num.vAlign, TextVAlign::Middle);
  EXPECT_TRUE(num.lockPosition());
  EXPECT_TRUE(ins->attribs[1]->isInvisible());

  // An erased attribute is not written; with none left, neither is the SEQEND.
  ins->attribs[0]->flags |= Entity::kErased;
  std::string text = encode(*ins);
  EXPECT_EQ(text.find("NUM"), std::string::npos);
  EXPECT_NE(text.find("MATERIAL"), std::string::npos);
  ins->attribs[1]->flags |= Entity::kErased;
  text = encode(*ins);
  EXPECT_EQ(text.find("SEQEND"), std::string::npos);
  EXPECT_EQ(text.find(" 66\n"), std::string::npos);
}

TEST_F(EntityCodec, PolylineTakesItsVertices) {
  auto e = roundTrip(kPolyline);
  auto* p = As<Polyline>(e.get());
  ASSERT_TRUE(p);
  EXPECT_TRUE(p->isClosed());
  ASSERT_EQ(p->vertices.size(), 2u);
  EXPECT_EQ(p->vertices[0].id, ObjectId(0x61));
  EXPECT_EQ(p->vertices[0].bulge, 1.0);
  EXPECT_EQ(p->vertices[1].position, (Point3d{10, 0, 0}));
  EXPECT_EQ(p->vertices[1].endWidth, 2.0);
  EXPECT_EQ(p->seqendId, ObjectId(0x63));

  // A file that ends before the SEQEND keeps what was read, with a warning.
  std::string cut = Snip(kPolyline);
  cut.resize(cut.find("0\nSEQEND"));
  auto partial = decode(cut);
  ASSERT_TRUE(As<Polyline>(partial.get()));
  EXPECT_EQ(As<Polyline>(partial.get())->vertices.size(), 2u);
  EXPECT_FALSE(ctx.warnings.empty());
}

TEST_F(EntityCodec, HatchBoundaryEdgesPatternAndSeeds) {
  auto e = roundTrip(kHatch);
  auto* h = As<Hatch>(e.get());
  ASSERT_TRUE(h);
  ASSERT_EQ(h->paths.size(), 2u);
  const HatchPath& poly = h->paths[0];
  EXPECT_TRUE(poly.isPolyline());
  EXPECT_EQ(poly.vertices.size(), 3u);
  EXPECT_EQ(poly.bulges, (std::vector<double>{0.5, 0, 0}));
  const HatchPath& edges = h->paths[1];
  ASSERT_EQ(edges.edges.size(), 4u);
  EXPECT_EQ(edges.edges[0].kind, HatchEdge::Kind::Line);
  EXPECT_EQ(edges.edges[1].kind, HatchEdge::Kind::Arc);
  EXPECT_EQ(edges.edges[1].endAngle, 90.0);
  EXPECT_EQ(edges.edges[2].kind, HatchEdge::Kind::Ellipse);
  EXPECT_EQ(edges.edges[2].majorAxis, (Vector2d{5, 0}));
  const HatchEdge& spline = edges.edges[3];
  EXPECT_EQ(spline.kind, HatchEdge::Kind::Spline);
  EXPECT_TRUE(spline.rational);
  EXPECT_EQ(spline.knots.size(), 8u);
  EXPECT_EQ(spline.controlPoints.size(), 4u);
  EXPECT_EQ(spline.weights, (std::vector<double>{1, 0.5, 0.5, 1}));
  EXPECT_EQ(edges.sourceObjects, (std::vector<ObjectId>{ObjectId(0x91), ObjectId(0x92)}));
  ASSERT_EQ(h->patternLines.size(), 2u);
  EXPECT_EQ(h->patternLines[1].dashes, (std::vector<double>{3, -1}));
  EXPECT_EQ(h->seedPoints, (std::vector<Point2d>{{5, 5}}));
  EXPECT_EQ(h->gradient.size(), 6u);
  EXPECT_EQ(h->extrasIfAny(), nullptr);
}

TEST_F(EntityCodec, LongChineseMTextIsWrittenInWholeCharacterPieces) {
  MText m;
  std::string text;
  for (int i = 0; i < 150; ++i) text += i % 10 == 9 ? "图纸\\P" : "图纸";  // 3-byte characters across 250-byte cuts
  m.text = text;
  const std::string out = encode(m);
  std::string joined;
  for (const auto& [code, value] : ToPairs(out)) {
    if (code != 3 && code != 1) continue;
    EXPECT_LE(value.size(), 250u);
    EXPECT_NE(static_cast<unsigned char>(value[0]) & 0xC0, 0x80) << "piece starts inside a character";
    joined += value;
  }
  EXPECT_EQ(joined, text);
  auto back = decode(out);
  ASSERT_TRUE(As<MText>(back.get()));
  EXPECT_EQ(As<MText>(back.get())->text, text);
}

TEST_F(EntityCodec, ClassSpecificRestIsKeptAsRead) {
  auto dim = roundTrip(kDimension);
  auto* d = As<Dimension>(dim.get());
  ASSERT_TRUE(d);
  EXPECT_EQ(ctx.db().objectAs<BlockRecord>(d->block)->name, "*D3");
  EXPECT_EQ(ctx.db().objectAs<TableRecord>(d->dimStyle)->name, "ISO-25");
  EXPECT_NE(std::find(d->subclassData.begin(), d->subclassData.end(), Group(100, std::string("AcDbAlignedDimension"))),
            d->subclassData.end());

  auto vp = roundTrip(kViewport);
  auto* v = As<Viewport>(vp.get());
  ASSERT_TRUE(v);
  EXPECT_EQ(v->frozenLayers, (std::vector<ObjectId>{ObjectId(0x9F), ObjectId(0xA0)}));
  EXPECT_NEAR(v->twist, kPi / 6, 1e-12);
  EXPECT_EQ(v->viewHeight, 486.0);
  EXPECT_NE(std::find(v->otherData.begin(), v->otherData.end(), Group(361, ObjectId(0xB2))), v->otherData.end());
}

TEST_F(EntityCodec, PaperSpaceEntitiesSayWhereTheyLive) {
  Line line;
  line.owner = ctx.db().paperSpace()->id;
  EXPECT_NE(encode(line).find(" 67\n1\n"), std::string::npos);
  line.owner = ctx.db().modelSpace()->id;
  EXPECT_EQ(encode(line).find(" 67\n"), std::string::npos);
}

TEST_F(EntityCodec, R12EntitiesWithoutMarkersOrHandles) {
  FakeContext r12(DxfVersion::R12);
  auto decodeR12 = [&](const char* compact) {
    auto tok = DxfTokenizer::fromBytes(Snip(compact));
    DxfGroup g;
    tok.next(g);
    return DecodeEntity(std::string(g.text), tok, r12);
  };
  auto line = decodeR12("0|LINE|8|0|67|1|62|5|10|1|20|2|30|0|11|3|21|4|31|0");
  ASSERT_TRUE(As<Line>(line.get()));
  EXPECT_EQ(line->colorIndex, 5);
  // Without an owner only the 67 flag tells the reader the entity belongs to paper space.
  ASSERT_TRUE(line->extrasIfAny());
  EXPECT_EQ(line->extrasIfAny()->unknown, (Groups{{67, std::int64_t{1}}}));
  auto att = decodeR12("0|ATTRIB|8|0|10|0|20|0|30|0|40|1|1|v|2|T|70|0|73|6|74|3");
  ASSERT_TRUE(As<Attrib>(att.get()));
  EXPECT_EQ(As<Attrib>(att.get())->fieldLength, 6);
  EXPECT_EQ(As<Attrib>(att.get())->vAlign, TextVAlign::Top);
}

TEST_F(EntityCodec, OddDataNeverCrashes) {
  // Counts that disagree with the data, values before their vertex, absurd sizes.
  auto lw = decode(Snip("0|LWPOLYLINE|8|0|100|AcDbPolyline|90|2000000000|42|1|40|3|20|5|10|1|20|2|42|0.5"));
  ASSERT_TRUE(As<LwPolyline>(lw.get()));
  EXPECT_EQ(As<LwPolyline>(lw.get())->points.size(), 1u);
  EXPECT_EQ(As<LwPolyline>(lw.get())->bulges, std::vector<double>{0.5});
  EXPECT_TRUE(decode(Snip("0|SPLINE|8|0|100|AcDbSpline|71|3|72|99999|73|99999|20|1")));
  EXPECT_TRUE(decode(Snip("0|HATCH|8|0|100|AcDbHatch|91|99999|92|2|93|99999|42|1|92|0|93|9999|72|4|95|9999|20|1")));
  // A value the tokenizer rejects ends the entity with nothing.
  EXPECT_EQ(decode(Snip("0|LINE|8|0|10|abc")), nullptr);

  // Every snippet cut after each line, and each value in turn replaced by a huge number.
  for (const std::string& s : kSnippets) {
    const std::string full = Snip(s);
    for (std::size_t at = full.find('\n'); at != std::string::npos; at = full.find('\n', at + 1)) {
      auto tok = DxfTokenizer::fromBytes(full.substr(0, at + 1));
      DxfGroup g;
      tok.next(g);
      (void)DecodeEntity(std::string(g.text), tok, ctx);
    }
    std::vector<std::string> lines;
    std::istringstream in(full);
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    for (std::size_t i = 3; i < lines.size(); i += 2) {
      std::string mutated;
      for (std::size_t j = 0; j < lines.size(); ++j) mutated += (j == i ? "99999999" : lines[j]) + "\n";
      auto tok = DxfTokenizer::fromBytes(mutated);
      DxfGroup g;
      tok.next(g);
      if (auto e = DecodeEntity(std::string(g.text), tok, ctx)) (void)encode(*e);
    }
  }
}

}  // namespace
}  // namespace tv::cad
