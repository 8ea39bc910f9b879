// OBJECTS section: the root dictionary first, then every other object in the order of the drawing.
#include "cad/dxf_writer_internal.h"

namespace tv::cad::dxf_write {

namespace {

class ObjectsWriter {
 public:
  explicit ObjectsWriter(WriteContext& ctx) : ctx_(ctx), out_(ctx.out) {}

  void write() {
    out_.str(0, "SECTION");
    out_.str(2, "OBJECTS");
    const Dictionary* root = ctx_.rootDictionary();
    if (root) writeObject(*root);
    for (const auto& o : ctx_.db.objects)
      if (o.get() != root) writeObject(*o);
    out_.str(0, "ENDSEC");
  }

 private:
  void writeObject(const DbObject& o) {
    const std::string name = o.dxfName();
    if (name.empty()) return;  // nothing a CAD program could read
    WriteObjectHead(ctx_, name, 5, ctx_.idOf(o.id), o, ctx_.ownerOf(o));
    switch (o.type()) {
      case ObjectType::Dictionary: dictionary(static_cast<const Dictionary&>(o)); break;
      case ObjectType::Xrecord: xrecord(static_cast<const Xrecord&>(o)); break;
      case ObjectType::Layout: layout(static_cast<const Layout&>(o)); break;
      case ObjectType::ImageDef: imageDef(static_cast<const ImageDef&>(o)); break;
      case ObjectType::SpatialFilter: spatialFilter(static_cast<const SpatialFilter&>(o)); break;
      case ObjectType::GenericObject: storedGroups(static_cast<const GenericObject&>(o).groups); break;
      default: break;
    }
    WriteObjectTail(ctx_, o);
    ctx_.flushIfLarge();
  }

  void storedGroups(const Groups& groups) {
    for (const Group& g : groups)
      if (g.code > 0) out_.group(g);  // a 0 group would end the object early
  }

  void dictionary(const Dictionary& d) {
    out_.str(100, "AcDbDictionary");
    if (d.hardOwner) out_.integer(280, 1);
    out_.integer(281, d.cloning);
    for (const auto& [key, value] : d.entries) {
      if (value.isNull()) continue;  // an entry pointing nowhere breaks the dictionary for CAD programs
      out_.str(3, key);
      out_.handle(d.hardOwner ? 360 : 350, value);
    }
    if (d.withDefault) {
      out_.str(100, "AcDbDictionaryWithDefault");
      out_.handle(340, d.defaultEntry);
    }
  }

  void xrecord(const Xrecord& x) {
    out_.str(100, "AcDbXrecord");
    out_.integer(280, x.cloning);
    storedGroups(x.data);
  }

  void plotSettings(const PlotSettings& p) {
    out_.str(100, "AcDbPlotSettings");
    out_.str(1, p.pageSetupName);
    out_.str(2, p.plotterName);
    out_.str(4, p.paperSize);
    out_.str(6, p.plotViewName);
    out_.real(40, p.marginLeft);
    out_.real(41, p.marginBottom);
    out_.real(42, p.marginRight);
    out_.real(43, p.marginTop);
    out_.real(44, p.paperWidth);
    out_.real(45, p.paperHeight);
    out_.real(46, p.plotOrigin.x);
    out_.real(47, p.plotOrigin.y);
    out_.real(48, p.windowMin.x);
    out_.real(49, p.windowMin.y);
    out_.real(140, p.windowMax.x);
    out_.real(141, p.windowMax.y);
    out_.real(142, p.customScaleNumerator);
    out_.real(143, p.customScaleDenominator);
    out_.integer(70, p.layoutFlags);
    out_.integer(72, p.paperUnits);
    out_.integer(73, p.rotation);
    out_.integer(74, p.plotType);
    out_.str(7, p.styleSheet);
    out_.integer(75, p.standardScaleType);
    out_.integer(76, p.shadePlotMode);
    out_.integer(77, p.shadePlotResolution);
    out_.integer(78, p.shadePlotDpi);
    out_.real(147, p.scaleFactor);
    out_.real(148, p.paperImageOrigin.x);
    out_.real(149, p.paperImageOrigin.y);
    if (!p.shadePlotId.isNull()) out_.handle(333, p.shadePlotId);
  }

  void layout(const Layout& l) {
    plotSettings(l.plot);
    out_.str(100, "AcDbLayout");
    out_.str(1, l.name);
    out_.integer(70, l.flags);
    out_.integer(71, l.tabOrder);
    out_.point2d(10, l.limitsMin);
    out_.point2d(11, l.limitsMax);
    out_.point(12, l.insertionBase);
    out_.point(14, l.extentsMin);
    out_.point(15, l.extentsMax);
    out_.real(146, l.elevation);
    out_.point(13, l.ucsOrigin);
    out_.vector(16, l.ucsXAxis);
    out_.vector(17, l.ucsYAxis);
    out_.integer(76, l.ucsType);
    ObjectId block = l.blockRecord;
    if (const BlockRecord* b = ctx_.db.blockOf(l)) block = ctx_.idOf(b->id);
    out_.handle(330, block);
    if (!l.lastActiveViewport.isNull()) out_.handle(331, l.lastActiveViewport);
    if (!l.ucs.isNull()) out_.handle(345, l.ucs);
    if (!l.baseUcs.isNull()) out_.handle(346, l.baseUcs);
  }

  void imageDef(const ImageDef& d) {
    out_.str(100, "AcDbRasterImageDef");
    out_.integer(90, d.classVersion);
    out_.str(1, d.fileName);
    out_.real(10, d.imageSize.x);
    out_.real(20, d.imageSize.y);
    out_.real(11, d.pixelSize.x);
    out_.real(21, d.pixelSize.y);
    out_.integer(280, d.loaded ? 1 : 0);
    out_.integer(281, d.resolutionUnits);
  }

  void matrix(const Matrix3d& m) {
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 4; ++c) out_.real(40, m.m[r][c]);
  }

  void spatialFilter(const SpatialFilter& f) {
    out_.str(100, "AcDbFilter");
    out_.str(100, "AcDbSpatialFilter");
    out_.integer(70, static_cast<std::int64_t>(f.boundary.size()));
    for (Point2d p : f.boundary) out_.point2d(10, p);
    out_.vector(210, f.normal);  // always: a filter without it does not read back in some programs
    out_.point(11, f.origin);
    out_.integer(71, f.displayBoundary ? 1 : 0);
    out_.integer(72, f.frontClip ? 1 : 0);
    if (f.frontClip) out_.real(40, f.frontDistance);
    out_.integer(73, f.backClip ? 1 : 0);
    if (f.backClip) out_.real(41, f.backDistance);
    matrix(f.inverseInsertTransform);
    matrix(f.clipTransform);
  }

  WriteContext& ctx_;
  DxfOutput& out_;
};

}  // namespace

void WriteObjectsSection(WriteContext& ctx) { ObjectsWriter(ctx).write(); }

}  // namespace tv::cad::dxf_write
