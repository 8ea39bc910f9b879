// HEADER and CLASSES sections.
#include <algorithm>
#include <array>
#include <set>

#include "cad/dxf_writer_internal.h"

namespace tv::cad::dxf_write {

namespace {

// Variables a CAD program expects in every header, in the order they appear in its own files.
constexpr std::array<std::string_view, 14> kRequired = {"$ACADVER",  "$ACADMAINTVER", "$DWGCODEPAGE", "$INSBASE", "$EXTMIN",
                                                        "$EXTMAX",   "$LIMMIN",       "$LIMMAX",      "$LTSCALE", "$CELTSCALE",
                                                        "$HANDSEED", "$TILEMODE",     "$MEASUREMENT", "$INSUNITS"};

int RequiredIndex(std::string_view name) {
  auto it = std::find(kRequired.begin(), kRequired.end(), name);
  return it == kRequired.end() ? -1 : static_cast<int>(it - kRequired.begin());
}

Groups Point(Point3d p, bool threeD) {
  Groups g{Group{10, p.x}, Group{20, p.y}};
  if (threeD) g.emplace_back(30, p.z);
  return g;
}

// Default values of a required variable the drawing does not have (a metric drawing).
Groups DefaultOf(std::string_view name) {
  if (name == "$DWGCODEPAGE") return {Group{3, std::string("ANSI_936")}};
  if (name == "$INSBASE") return Point({0, 0, 0}, true);
  if (name == "$EXTMIN") return Point({1e20, 1e20, 1e20}, true);
  if (name == "$EXTMAX") return Point({-1e20, -1e20, -1e20}, true);
  if (name == "$LIMMIN") return Point({0, 0}, false);
  if (name == "$LIMMAX") return Point({420, 297}, false);
  if (name == "$LTSCALE" || name == "$CELTSCALE") return {Group{40, 1.0}};
  if (name == "$TILEMODE" || name == "$MEASUREMENT") return {Group{70, std::int64_t{1}}};
  if (name == "$INSUNITS") return {Group{70, std::int64_t{4}}};
  return {};
}

class HeaderWriter {
 public:
  explicit HeaderWriter(WriteContext& ctx) : ctx_(ctx), header_(ctx.db.header) {}

  void write() {
    DxfOutput& out = ctx_.out;
    out.str(0, "SECTION");
    out.str(2, "HEADER");
    emit("$ACADVER", {Group{1, std::string(AcadVerText(ctx_.version))}});
    emit("$ACADMAINTVER", maintenanceVersion());
    for (const HeaderVariable& v : header_.variables) {
      if (v.values.empty() || written_.count(v.name)) continue;
      if (int k = RequiredIndex(v.name); k >= 0) emitMissingBefore(k);
      emit(v.name, v.values);
    }
    emitMissingBefore(static_cast<int>(kRequired.size()));
    out.str(0, "ENDSEC");
  }

 private:
  // The maintenance version belongs to the release: keep the drawing's only when it is of the same one.
  Groups maintenanceVersion() const {
    const bool r2018 = ctx_.version == DxfVersion::R2018;
    std::int64_t value = r2018 ? 155 : 105;
    if (const HeaderVariable* v = header_.find("$ACADMAINTVER"); v && !v->values.empty() && ctx_.db.version() == ctx_.version)
      value = v->values.front().asInt(value);
    return {Group{r2018 ? 90 : 70, value}};
  }

  void emitMissingBefore(int index) {
    for (int i = 0; i < index; ++i) {
      std::string name(kRequired[static_cast<std::size_t>(i)]);
      if (written_.count(name)) continue;
      const HeaderVariable* v = header_.find(name);
      if (v && !v->values.empty()) continue;  // written at its own place
      emit(name, DefaultOf(name));
    }
  }

  void emit(const std::string& name, const Groups& values) {
    written_.insert(name);
    DxfOutput& out = ctx_.out;
    out.str(9, name);
    if (name == "$HANDSEED") {
      out.handle(5, ObjectId{ctx_.handleSeed()});
      return;
    }
    for (const Group& g : values)
      if (g.code > 0) out.group(g);
  }

  WriteContext& ctx_;
  const Header& header_;
  std::set<std::string, std::less<>> written_;
};

// Class records of the objects and entities this writer may put out, as CAD programs write them.
struct KnownClass {
  const char* dxfName;
  const char* cppName;
  const char* appName;
  std::int32_t proxyFlags;
  bool isEntity;
};

constexpr KnownClass kKnownClasses[] = {
    {"ACDBDICTIONARYWDFLT", "AcDbDictionaryWithDefault", "ObjectDBX Classes", 0, false},
    {"ACDBPLACEHOLDER", "AcDbPlaceHolder", "ObjectDBX Classes", 0, false},
    {"DICTIONARYVAR", "AcDbDictionaryVar", "ObjectDBX Classes", 0, false},
    {"TABLESTYLE", "AcDbTableStyle", "ObjectDBX Classes", 4095, false},
    {"MATERIAL", "AcDbMaterial", "ObjectDBX Classes", 1153, false},
    {"VISUALSTYLE", "AcDbVisualStyle", "ObjectDBX Classes", 4095, false},
    {"SCALE", "AcDbScale", "ObjectDBX Classes", 1153, false},
    {"MLEADERSTYLE", "AcDbMLeaderStyle", "ACDB_MLEADERSTYLE_CLASS", 4095, false},
    {"CELLSTYLEMAP", "AcDbCellStyleMap", "ObjectDBX Classes", 1152, false},
    {"SUN", "AcDbSun", "SCENEOE", 1153, false},
    {"SORTENTSTABLE", "AcDbSortentsTable", "ObjectDBX Classes", 0, false},
    {"LAYER_INDEX", "AcDbLayerIndex", "ObjectDBX Classes", 0, false},
    {"SPATIAL_INDEX", "AcDbSpatialIndex", "ObjectDBX Classes", 0, false},
    {"SPATIAL_FILTER", "AcDbSpatialFilter", "ObjectDBX Classes", 0, false},
    {"IDBUFFER", "AcDbIdBuffer", "ObjectDBX Classes", 0, false},
    {"PLOTSETTINGS", "AcDbPlotSettings", "ObjectDBX Classes", 0, false},
    {"FIELD", "AcDbField", "ObjectDBX Classes", 1152, false},
    {"FIELDLIST", "AcDbFieldList", "ObjectDBX Classes", 1152, false},
    {"GEODATA", "AcDbGeoData", "ObjectDBX Classes", 4095, false},
    {"RASTERVARIABLES", "AcDbRasterVariables", "ISM", 0, false},
    {"IMAGEDEF", "AcDbRasterImageDef", "ISM", 0, false},
    {"IMAGEDEF_REACTOR", "AcDbRasterImageDefReactor", "ISM", 1, false},
    {"IMAGE", "AcDbRasterImage", "ISM", 2175, true},
    {"WIPEOUTVARIABLES", "AcDbWipeoutVariables", "WipeOut|AutoCAD Express Tool|expresstool", 0, false},
    {"WIPEOUT", "AcDbWipeout", "WipeOut|AutoCAD Express Tool|expresstool", 127, true},
    {"PDFDEFINITION", "AcDbPdfDefinition", "ObjectDBX Classes", 1153, false},
    {"PDFREFERENCE", "AcDbPdfReference", "ObjectDBX Classes", 1153, true},
    {"ACAD_TABLE", "AcDbTable", "ObjectDBX Classes", 1025, true},
    {"TABLECONTENT", "AcDbTableContent", "ObjectDBX Classes", 1152, false},
    {"TABLEGEOMETRY", "AcDbTableGeometry", "ObjectDBX Classes", 1152, false},
    {"MULTILEADER", "AcDbMLeader", "ACDB_MLEADER_CLASS", 1025, true},
    {"ARC_DIMENSION", "AcDbArcDimension", "ObjectDBX Classes", 1025, true},
    {"LARGE_RADIAL_DIMENSION", "AcDbRadialDimensionLarge", "ObjectDBX Classes", 1025, true},
    {"MESH", "AcDbSubDMesh", "ObjectDBX Classes", 0, true},
    {"SURFACE", "AcDbSurface", "ObjectDBX Classes", 4095, true},
};

// Types R13 files declared as classes that are built into every later version.
bool IsBuiltInType(std::string_view name) {
  for (std::string_view builtIn : {"LWPOLYLINE", "HATCH", "XRECORD", "OLE2FRAME", "GROUP", "MLINESTYLE", "DICTIONARY"})
    if (EqualsNoCase(name, builtIn)) return true;
  return false;
}

}  // namespace

void WriteHeaderSection(WriteContext& ctx) { HeaderWriter(ctx).write(); }

void WriteClassesSection(WriteContext& ctx) {
  std::vector<DxfClass> classes;
  auto present = [&](std::string_view name) {
    return std::any_of(classes.begin(), classes.end(), [&](const DxfClass& c) { return EqualsNoCase(c.dxfName, name); });
  };
  for (const DxfClass& c : ctx.db.classes)
    if (!c.dxfName.empty() && !IsBuiltInType(c.dxfName) && !present(c.dxfName)) classes.push_back(c);
  for (const auto& [name, record] : ctx.customClasses)
    if (!present(name)) classes.push_back(DxfClass{name, name, record.appName, record.proxyFlags, 0, false, true});
  for (const KnownClass& k : kKnownClasses)
    if (ctx.nameCounts.count(k.dxfName) && !present(k.dxfName))
      classes.push_back(DxfClass{k.dxfName, k.cppName, k.appName, k.proxyFlags, 0, false, k.isEntity});

  DxfOutput& out = ctx.out;
  out.str(0, "SECTION");
  out.str(2, "CLASSES");
  for (const DxfClass& c : classes) {
    auto count = ctx.nameCounts.find(c.dxfName);
    out.str(0, "CLASS");
    out.str(1, c.dxfName);
    out.str(2, c.cppName);
    out.str(3, c.appName);
    out.integer(90, c.proxyFlags);
    out.integer(91, count == ctx.nameCounts.end() ? 0 : count->second);
    out.integer(280, c.wasProxy ? 1 : 0);
    out.integer(281, c.isEntity ? 1 : 0);
  }
  out.str(0, "ENDSEC");
}

}  // namespace tv::cad::dxf_write
