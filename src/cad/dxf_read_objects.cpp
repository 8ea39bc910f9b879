// OBJECTS section: dictionaries, Xrecords, layouts, image definitions, spatial filters and
// everything else as generic objects.
#include "cad/dxf_reader_internal.h"

namespace tv::cad::dxf_read {

namespace {

inline std::int16_t Int16(const DxfGroup& g) { return static_cast<std::int16_t>(g.integer); }
inline ObjectId Handle(const DxfGroup& g) { return ObjectId(static_cast<std::uint64_t>(g.integer)); }

void SetXyz(Point3d& p, int code, int base, double v) {
  switch ((code - base) / 10) {
    case 0: p.x = v; break;
    case 1: p.y = v; break;
    default: p.z = v; break;
  }
}
void SetXyz(Vector3d& p, int code, int base, double v) {
  switch ((code - base) / 10) {
    case 0: p.x = v; break;
    case 1: p.y = v; break;
    default: p.z = v; break;
  }
}

}  // namespace

bool Reader::readObjects() {
  DxfGroup g;
  bool first = true;
  for (;;) {
    tok_.release();
    reportProgress();
    if (!next(g)) return false;
    if (g.code != 0) {
      warnOnce("objects-stray", Format("OBJECTS 段第 %llu 行有多余的组，已忽略", static_cast<unsigned long long>(g.line)));
      continue;
    }
    std::string_view name = TrimBlanks(g.text);
    if (name == "ENDSEC") return true;
    if (name == "SECTION" || name == "EOF") {
      warn("OBJECTS 段缺少 ENDSEC");
      tok_.pushBack();
      return true;
    }
    std::unique_ptr<DbObject> o = readObject(name);
    if (!o) return false;
    ObjectId id = db_.registerObject(*o);
    if (first) {
      // The named-object dictionary leads the section.
      if (o->type() == ObjectType::Dictionary) db_.rootDictionaryId = id;
      else warn("OBJECTS 段的第一个对象不是根字典");
      first = false;
    }
    db_.objects.push_back(std::move(o));
  }
}

std::unique_ptr<DbObject> Reader::readObject(std::string_view dxfName) {
  // Typed objects first read into their own class; the rest are kept group by group.
  auto read = [this](auto obj, auto member) -> std::unique_ptr<DbObject> {
    if (!readObjectPrefix(*obj)) return nullptr;
    if (!(this->*member)(*obj)) return nullptr;
    return obj;
  };
  if (dxfName == "DICTIONARY" || dxfName == "ACDBDICTIONARYWDFLT") {
    auto d = std::make_unique<Dictionary>();
    d->withDefault = dxfName == "ACDBDICTIONARYWDFLT";
    return read(std::move(d), &Reader::readDictionary);
  }
  if (dxfName == "XRECORD") return read(std::make_unique<Xrecord>(), &Reader::readXrecord);
  if (dxfName == "LAYOUT") return read(std::make_unique<Layout>(), &Reader::readLayout);
  if (dxfName == "IMAGEDEF") return read(std::make_unique<ImageDef>(), &Reader::readImageDef);
  if (dxfName == "SPATIAL_FILTER") return read(std::make_unique<SpatialFilter>(), &Reader::readSpatialFilter);
  auto o = std::make_unique<GenericObject>();
  o->name = std::string(dxfName);
  return read(std::move(o), &Reader::readGenericObject);
}

// After the prefix up to the next 0 group (left unread): subclass markers are dropped, 102
// groups and extended data go to the extras, every other group to `f`, which returns false for a
// group it does not know (kept in extras().unknown).
bool Reader::readObjectBody(DbObject& o, const std::function<bool(const DxfGroup&)>& f) {
  DxfGroup g;
  for (;;) {
    if (!next(g)) return false;
    switch (g.code) {
      case 0:
        tok_.pushBack();
        return true;
      case 100:
        continue;
      case 102:
        if (!read102(o, g)) return false;
        continue;
      case 1001:
        return readXdata(o.extras().xdata, g);
      default:
        if (!f(g)) o.extras().unknown.push_back(toGroup(g));
    }
  }
}

bool Reader::readDictionary(Dictionary& d) {
  std::string key;
  bool haveKey = false;
  return readObjectBody(d, [&](const DxfGroup& g) {
    switch (g.code) {
      case 280: d.hardOwner = g.integer != 0; return true;
      case 281: d.cloning = Int16(g); return true;
      case 3:
        key = text(g.text);
        haveKey = true;
        return true;
      case 350:
      case 360:
        if (!haveKey) return false;  // a value without key: kept as read
        d.entries.emplace_back(std::move(key), Handle(g));
        haveKey = false;
        return true;
      case 340:
        if (!d.withDefault) return false;
        d.defaultEntry = Handle(g);
        return true;
      default: return false;
    }
  });
}

bool Reader::readXrecord(Xrecord& x) {
  // Only the first 100 marker and a 280 right after it are the class's own; everything after
  // is data, whatever its code (102 and 100 included).
  bool marker = false, data = false;
  return forEachGroupOfEntry([&](const DxfGroup& g) {
    if (g.code == 100 && !marker && !data) {
      marker = true;
      return true;
    }
    if (g.code == 280 && !data) {
      x.cloning = Int16(g);
      data = true;
      return true;
    }
    if (g.code == 1001) return readXdata(x.extras().xdata, g);
    data = true;
    x.data.push_back(toGroup(g));
    return true;
  });
}

bool Reader::readLayout(Layout& l) {
  enum class Part { Before, Plot, Layout } part = Part::Before;
  DxfGroup g;
  PlotSettings& p = l.plot;
  for (;;) {
    if (!next(g)) return false;
    const int c = g.code;
    if (c == 0) {
      tok_.pushBack();
      return true;
    }
    if (c == 100) {
      std::string_view v = TrimBlanks(g.text);
      if (v == "AcDbPlotSettings") part = Part::Plot;
      else if (v == "AcDbLayout") part = Part::Layout;
      continue;
    }
    if (c == 102) {
      if (!read102(l, g)) return false;
      continue;
    }
    if (c == 1001) return readXdata(l.extras().xdata, g);
    bool used = true;
    if (part == Part::Plot) {
      switch (c) {
        case 1: p.pageSetupName = text(g.text); break;
        case 2: p.plotterName = text(g.text); break;
        case 4: p.paperSize = text(g.text); break;
        case 6: p.plotViewName = text(g.text); break;
        case 7: p.styleSheet = text(g.text); break;
        case 40: p.marginLeft = g.real; break;
        case 41: p.marginBottom = g.real; break;
        case 42: p.marginRight = g.real; break;
        case 43: p.marginTop = g.real; break;
        case 44: p.paperWidth = g.real; break;
        case 45: p.paperHeight = g.real; break;
        case 46: p.plotOrigin.x = g.real; break;
        case 47: p.plotOrigin.y = g.real; break;
        case 48: p.windowMin.x = g.real; break;
        case 49: p.windowMin.y = g.real; break;
        case 140: p.windowMax.x = g.real; break;
        case 141: p.windowMax.y = g.real; break;
        case 142: p.customScaleNumerator = g.real; break;
        case 143: p.customScaleDenominator = g.real; break;
        case 70: p.layoutFlags = Int16(g); break;
        case 72: p.paperUnits = Int16(g); break;
        case 73: p.rotation = Int16(g); break;
        case 74: p.plotType = Int16(g); break;
        case 75: p.standardScaleType = Int16(g); break;
        case 76: p.shadePlotMode = Int16(g); break;
        case 77: p.shadePlotResolution = Int16(g); break;
        case 78: p.shadePlotDpi = Int16(g); break;
        case 147: p.scaleFactor = g.real; break;
        case 148: p.paperImageOrigin.x = g.real; break;
        case 149: p.paperImageOrigin.y = g.real; break;
        case 333: p.shadePlotId = Handle(g); break;
        default: used = false; break;
      }
    } else if (part == Part::Layout) {
      switch (c) {
        case 1: l.name = text(g.text); break;
        case 70: l.flags = Int16(g); break;
        case 71: l.tabOrder = Int16(g); break;
        case 10: l.limitsMin.x = g.real; break;
        case 20: l.limitsMin.y = g.real; break;
        case 11: l.limitsMax.x = g.real; break;
        case 21: l.limitsMax.y = g.real; break;
        case 12: case 22: case 32: SetXyz(l.insertionBase, c, 12, g.real); break;
        case 14: case 24: case 34: SetXyz(l.extentsMin, c, 14, g.real); break;
        case 15: case 25: case 35: SetXyz(l.extentsMax, c, 15, g.real); break;
        case 13: case 23: case 33: SetXyz(l.ucsOrigin, c, 13, g.real); break;
        case 16: case 26: case 36: SetXyz(l.ucsXAxis, c, 16, g.real); break;
        case 17: case 27: case 37: SetXyz(l.ucsYAxis, c, 17, g.real); break;
        case 146: l.elevation = g.real; break;
        case 76: l.ucsType = Int16(g); break;
        case 330: l.blockRecord = Handle(g); break;
        case 331: l.lastActiveViewport = Handle(g); break;
        case 345: l.ucs = Handle(g); break;
        case 346: l.baseUcs = Handle(g); break;
        default: used = false; break;
      }
    } else {
      used = false;
    }
    if (!used) l.extras().unknown.push_back(toGroup(g));
  }
}

bool Reader::readImageDef(ImageDef& d) {
  return readObjectBody(d, [&](const DxfGroup& g) {
    switch (g.code) {
      case 90: d.classVersion = static_cast<std::int32_t>(g.integer); return true;
      case 1: d.fileName = text(g.text); return true;
      case 10: d.imageSize.x = g.real; return true;
      case 20: d.imageSize.y = g.real; return true;
      case 11: d.pixelSize.x = g.real; return true;
      case 21: d.pixelSize.y = g.real; return true;
      case 280: d.loaded = g.integer != 0; return true;
      case 281: d.resolutionUnits = Int16(g); return true;
      default: return false;
    }
  });
}

bool Reader::readSpatialFilter(SpatialFilter& f) {
  int matrixValues = 0;  // 40 groups taken into the two matrices so far
  int lastCode = 0;
  return readObjectBody(f, [&](const DxfGroup& g) {
    const int previous = lastCode;
    lastCode = g.code;
    switch (g.code) {
      case 70: return true;  // the point count follows from the points
      case 10: f.boundary.push_back({g.real, 0}); return true;
      case 20:
        if (f.boundary.empty()) return false;
        f.boundary.back().y = g.real;
        return true;
      case 210: case 220: case 230: SetXyz(f.normal, g.code, 210, g.real); return true;
      case 11: case 21: case 31: SetXyz(f.origin, g.code, 11, g.real); return true;
      case 71: f.displayBoundary = g.integer != 0; return true;
      case 72: f.frontClip = g.integer != 0; return true;
      case 73: f.backClip = g.integer != 0; return true;
      case 41: f.backDistance = g.real; return true;
      case 40: {
        if (previous == 72 && f.frontClip) {
          f.frontDistance = g.real;
          return true;
        }
        if (matrixValues >= 24) return false;
        Matrix3d& m = matrixValues < 12 ? f.inverseInsertTransform : f.clipTransform;
        const int k = matrixValues % 12;
        m.m[static_cast<std::size_t>(k / 4)][static_cast<std::size_t>(k % 4)] = g.real;
        ++matrixValues;
        return true;
      }
      default: return false;
    }
  });
}

bool Reader::readGenericObject(GenericObject& o) {
  return forEachGroupOfEntry([&](const DxfGroup& g) {
    if (g.code == 1001) return readXdata(o.extras().xdata, g);  // runs to the next 0 group
    o.groups.push_back(toGroup(g));
    return true;
  });
}

}  // namespace tv::cad::dxf_read
