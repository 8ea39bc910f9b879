#include "plot/sheet_export.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <map>
#include <system_error>

#include "host/editor.h"
#include "host/entity.h"
#include "host/notices.h"
#include "host/run_files.h"
#include "host/sheet_files.h"
#include "host/wrappers.h"
#include "paper/scale_fitting.h"
#include "paper/sheet_info_items.h"
#include "plot/interrupt_flag.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "settings/config.h"
#include "settings/plot_setting_record.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;

constexpr double kOverlapTolerance = 0.01;
constexpr double kInsideTolerance = 1e-6;
constexpr double kVerticalTolerance = 1e-6;
constexpr double kOnLineTolerance = 1e-8;
constexpr double kViewMargin = 1.05;

constexpr std::string_view kStandard = "Standard";

bool IsSheetMarker(const std::string& dxfName) { return dxfName == "Temp_PlotRec" || dxfName == "Temp_PlotRec2"; }

bool InsideRect(const Extents3d& box, Point2d min, Point2d max) {
  return box.min.x >= min.x - kInsideTolerance && box.min.y >= min.y - kInsideTolerance &&
         box.max.x <= max.x + kInsideTolerance && box.max.y <= max.y + kInsideTolerance;
}

// Lines and lightweight polylines: a segment across the rectangle, or the whole inside it.
bool CurveBelongs(const host::Entity& e, const Extents3d& box, Point2d min, Point2d max) {
  std::vector<Point2d> points;
  if (e.kind() == host::EntityClass::Line) {
    points = {e.startPoint().to2d(), e.endPoint().to2d()};
  } else {
    points = e.vertices();
    if (e.closed() && points.size() > 2) points.push_back(points.front());
  }
  for (std::size_t i = 1; i < points.size(); ++i)
    if (SegmentCrosses(points[i - 1], points[i], min, max)) return true;
  return InsideRect(box, min, max);
}

std::string Replaced(std::string_view pattern, const std::string& path) {
  std::string text(pattern);
  if (const auto at = text.find("%s"); at != std::string::npos) text.replace(at, 2, path);
  return text;
}

// The base name of a file: between the last separator and the last dot.
std::string BaseName(const std::string& path) { return fs::path(path).stem().string(); }

// Clears the way for a new file; false when an old one stays (open elsewhere, or not ours to remove).
bool RemoveOld(const std::string& path) {
  std::error_code ec;
  if (!fs::exists(path, ec)) return true;
  fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ec);
  fs::remove(path, ec);
  return !fs::exists(path, ec);
}

// The styles stay parked from the start of a split to its end, whatever way it ends.
class ParkedStyles {
 public:
  ParkedStyles() : name_(std::string(kParkedStylePrefix) + TimeStamp()) { ParkStandardNames(name_); }
  ~ParkedStyles() { RestoreStandardNames(name_); }
  ParkedStyles(const ParkedStyles&) = delete;
  ParkedStyles& operator=(const ParkedStyles&) = delete;

 private:
  std::string name_;
};

// Whether a scale is one a user would set (1:50, 2:1), not one fitted to a paper (1:0.1002).
bool IsRoundScale(double scale) {
  if (!(scale > 0)) return false;
  const double n = scale >= 1 ? scale : 1 / scale;
  return std::abs(n - std::round(n)) < 1e-9 * n;
}

// A sheet file's own plot settings: the drawing's, with the sheet's scale as the default when it
// is a round one (else the run's default, from which the sheet's paper was fitted), so that the
// file's one sheet is found again on its paper; a file plots to PDF rather than cut again.
settings::PlotSettingRec FileSetting(const SheetToPlot& row) {
  settings::PlotSettingRec rec = settings::CurrentPlotSetting();
  if (IsRoundScale(row.scale)) rec.default_scale = row.scale;
  if (rec.format == settings::kFormatDwg) rec.format = settings::kFormatPdf;
  return rec;
}

}  // namespace

std::string TimeStamp() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &local);
  return text;
}

void ParkStandardNames(const std::string& name) { host::RenameStandardStyles(std::string(kStandard), name); }
void RestoreStandardNames(const std::string& name) { host::RenameStandardStyles(name, std::string(kStandard)); }

bool Overlap(const Extents3d& box, Point2d min, Point2d max, double tolerance) {
  if (box.isEmpty()) return false;
  const double ox = std::min(box.max.x, max.x) - std::max(box.min.x, min.x);
  const double oy = std::min(box.max.y, max.y) - std::max(box.min.y, min.y);
  if (ox < 0 || oy < 0) return false;
  return ox >= tolerance * (box.max.x - box.min.x) && oy >= tolerance * (box.max.y - box.min.y);
}

bool SegmentCrosses(Point2d a, Point2d b, Point2d min, Point2d max) {
  const Point2d corners[4] = {{min.x, min.y}, {max.x, min.y}, {max.x, max.y}, {min.x, max.y}};
  const double dx = b.x - a.x, dy = b.y - a.y;
  int sides = 0, onLine = 0;
  for (const Point2d& c : corners) {
    // Vertical segments compare by x; others by the side of the line through the two points.
    const double d = std::abs(dx) < kVerticalTolerance ? c.x - (a.x + b.x) / 2 : (c.y - a.y) - dy / dx * (c.x - a.x);
    if (std::abs(d) <= kOnLineTolerance) ++onLine;
    else sides += d > 0 ? 1 : -1;
  }
  return std::abs(sides) + onLine != 4;
}

namespace {

// What of an entity doesn't depend on the sheet: whether it can belong to one at all, its box.
struct Candidate {
  ObjectId id;
  Extents3d box;
  bool curve = false;  // a line or lightweight polyline: the segment test follows the box test
};

std::vector<Candidate> Candidates(ObjectId space) {
  const ObjectIdArray overall = host::OverallViewportIds();
  const ObjectIdArray& frozen = host::Aids().frozenLayerIds;
  ObjectIdArray all;
  host::CollectSpaceIds(space, all);
  std::vector<Candidate> candidates;
  candidates.reserve(all.size());
  for (const ObjectId id : all) {
    const host::Entity e = host::OpenEntity(id);
    if (!e) continue;
    const host::EntityClass kind = e.kind();
    if (kind == host::EntityClass::Viewport && std::ranges::find(overall, id) != overall.end()) continue;
    if (kind == host::EntityClass::Custom && IsSheetMarker(e.dxfName())) continue;
    if (!e.visible()) continue;
    if (std::ranges::find(frozen, e.layer()) != frozen.end()) continue;
    const std::optional<Extents3d> box = e.geomExtents();
    if (!box) continue;
    candidates.push_back({id, *box, kind == host::EntityClass::Line || kind == host::EntityClass::LwPolyline});
  }
  return candidates;
}

// A split walks each space once for the boxes and then once per sheet over them; the drawing
// doesn't change meanwhile. Outside a split every call walks the space afresh.
struct CandidateCache {
  bool active = false;
  std::map<ObjectId, std::vector<Candidate>> bySpace;
};
CandidateCache& Cache() {
  static CandidateCache cache;
  return cache;
}

class CachedCandidates {
 public:
  CachedCandidates() { Cache().active = true; }
  ~CachedCandidates() { Cache() = CandidateCache{}; }
  CachedCandidates(const CachedCandidates&) = delete;
  CachedCandidates& operator=(const CachedCandidates&) = delete;
};

}  // namespace

SheetIds EntitiesOfSheet(Point2d min, Point2d max) {
  if (min.x > max.x) std::swap(min.x, max.x);
  if (min.y > max.y) std::swap(min.y, max.y);
  const ObjectId space = host::OpenCurrentSpace();
  std::vector<Candidate> fresh;
  const std::vector<Candidate>* candidates = &fresh;
  if (CandidateCache& cache = Cache(); cache.active) {
    auto it = cache.bySpace.find(space);
    if (it == cache.bySpace.end()) it = cache.bySpace.emplace(space, Candidates(space)).first;
    candidates = &it->second;
  } else {
    fresh = Candidates(space);
  }
  SheetIds ids;
  for (const Candidate& c : *candidates) {
    if (!Overlap(c.box, min, max, kOverlapTolerance)) continue;
    if (c.curve && !CurveBelongs(host::OpenEntity(c.id), c.box, min, max)) continue;
    ids.push_back(c.id);
  }
  return ids;
}

namespace {

using NamedRecords = std::vector<std::pair<std::string, std::vector<host::XrecordItem>>>;

bool WriteSheet(Point2d min, Point2d max, const std::string& path, bool openAfter, bool renameLayout,
                NamedRecords records) {
  host::SheetFile sheet;
  sheet.ids = EntitiesOfSheet(min, max);
  sheet.base = Point3d{(min.x + max.x) / 2, (min.y + max.y) / 2, 0};
  const bool inLayout = host::IsPaperSpace();
  if (inLayout) {
    const std::size_t count = sheet.ids.size();
    for (std::size_t i = 0; i < count; ++i) {
      if (host::OpenEntity(sheet.ids[i]).kind() != host::EntityClass::Viewport) continue;
      sheet.withModelSpace = true;
      // A viewport's clip goes with it, wherever the clip lies.
      if (const ObjectId clip = host::ViewportClipOf(sheet.ids[i]);
          !clip.isNull() && std::ranges::find(sheet.ids, clip) == sheet.ids.end())
        sheet.ids.push_back(clip);
    }
    if (renameLayout) sheet.layoutName = BaseName(path);
  }
  sheet.asBlock = settings::GlobalConfig().save_as_block != 0;
  sheet.blockName = std::string(kSheetBlockPrefix) + TimeStamp();

  // The view shows the sheet with a margin, widened to the screen's proportion.
  double width = std::abs(max.x - min.x) * kViewMargin, height = std::abs(max.y - min.y) * kViewMargin;
  if (const std::optional<Point3d> screen = host::AsPoint(host::GetVar("SCREENSIZE"));
      screen && screen->x > 0 && screen->y > 0 && width > 0 && height > 0) {
    const double aspect = screen->x / screen->y;
    if (width / height < aspect) width = height * aspect;
    else height = width / aspect;
  }
  sheet.viewWidth = width;
  sheet.viewHeight = height;
  const double halfX = std::abs(max.x - min.x) / 2, halfY = std::abs(max.y - min.y) / 2;
  sheet.limitsMin = {-halfX, -halfY};
  sheet.limitsMax = {halfX, halfY};
  sheet.sourceFolder = DrawingFolder();
  sheet.namedRecords = std::move(records);

  host::Editor& editor = host::CurrentEditor();
  std::string why;
  const bool written = host::WriteSheetFile(sheet, path, why);
  host::NoteSheetFile(path, written, why);
  if (!written) {
    host::Notify("文件 " + path + " 未能写入：" + why);
    return false;
  }
  editor.print("\n已输出图纸文件 " + path);
  if (openAfter) editor.shellOpen(path);
  return true;
}

// A stored row of the drawing moved with its sheet, which lands centred on the file's origin.
paper::InfoRow MovedRow(paper::InfoRow row, Point2d centre) {
  row.minX -= centre.x;
  row.maxX -= centre.x;
  row.minY -= centre.y;
  row.maxY -= centre.y;
  return row;
}

// What a sheet file keeps of the run for its one sheet: its plot settings, and its scale and
// paper (with its copies, when the drawing stored some) in the file's coordinates, so that the
// sheet comes back on the same paper at the same scale.
NamedRecords FileRecords(const SheetToPlot& row, const std::vector<paper::InfoRow>& storedPapers) {
  NamedRecords records;
  records.emplace_back(std::string(settings::kDwgPlotSettingKey), settings::DwgPlotSettingItems(FileSetting(row)));
  const Point2d centre{(row.min.x + row.max.x) / 2, (row.min.y + row.max.y) / 2};
  paper::InfoRow sheet;
  sheet.minX = std::min(row.min.x, row.max.x);
  sheet.minY = std::min(row.min.y, row.max.y);
  sheet.maxX = std::max(row.min.x, row.max.x);
  sheet.maxY = std::max(row.min.y, row.max.y);
  sheet.scale = row.scale;
  sheet.paperName = row.paperName;
  sheet.fileName = row.fileName;
  if (!sheet.paperName.empty())
    records.emplace_back(std::string(paper::kScInforKey), paper::ScInforItems({MovedRow(sheet, centre)}));
  recognition::Plot_Drawing1 corners;
  corners.minX = sheet.minX;
  corners.minY = sheet.minY;
  corners.maxX = sheet.maxX;
  corners.maxY = sheet.maxY;
  if (const int i = paper::FindInfoRow(storedPapers, corners); i >= 0)
    records.emplace_back(std::string(paper::kPaperInforKey),
                         paper::PaperInforItems({MovedRow(storedPapers[static_cast<std::size_t>(i)], centre)}));
  return records;
}

}  // namespace

bool ExportSheet(Point2d min, Point2d max, const std::string& path, bool openAfter, bool renameLayout,
                 const settings::PlotSettingRec* fileSetting) {
  NamedRecords records;
  if (fileSetting)
    records.emplace_back(std::string(settings::kDwgPlotSettingKey), settings::DwgPlotSettingItems(*fileSetting));
  return WriteSheet(min, max, path, openAfter, renameLayout, std::move(records));
}

bool SplitToDwgFiles(SheetLoop& loop, std::string& folderOut) {
  const ParkedStyles parked;
  const CachedCandidates cached;
  if (folderOut.empty()) folderOut = OutputFolder(loop.setting.path_mode, settings::kFormatDwg, loop.setting.custom_path);
  std::error_code ec;
  fs::create_directories(folderOut, ec);
  Job().LastFolder = folderOut;

  std::vector<paper::InfoRow> storedPapers;
  paper::ReadPaperInfor(storedPapers);

  host::Editor& editor = host::CurrentEditor();
  const ObjectId home = host::OpenCurrentSpace();
  const PlotRunScope running;
  editor.progressBegin("正在分割图纸", static_cast<int>(loop.rows.size()));
  for (std::size_t i = 0; i < loop.rows.size(); ++i) {
    const SheetToPlot& row = loop.rows[i];
    if (!row.spaceId.isNull()) host::ActivateLayoutOf(row.spaceId);
    const std::string path = SheetPath(folderOut, row.fileName, settings::kFormatDwg);
    CheckOutputPathLength(path);
    if (host::IsDrawingFileRead(path)) {
      host::Notify(OutputIsDrawingMessage(path, i + 1));
      host::NoteSheetFile(path, false, "输出会覆盖本次读入的图纸");
    } else if (!RemoveOld(path)) {
      const std::string message = Replaced(kSheetFileOpenMessage, path);
      editor.messageBox(message, kPlotCaption, host::MessageButtons::Ok);
      host::NoteSheetFile(path, false, message);
    } else {
      editor.progressSet(static_cast<int>(i) + 1);
      WriteSheet(row.min, row.max, path, false, true, FileRecords(row, storedPapers));
    }
    if (loop.cancelRequested && CancelAsked(*loop.cancelRequested)) {
      *loop.cancelRequested = false;
      if (editor.messageBox(kSplitCancelQuestion, kPlotCaption, host::MessageButtons::YesNo) == host::MessageAnswer::Yes)
        break;
    }
  }
  host::ActivateLayoutOf(home);
  editor.progressEnd();
  if (loop.finish) loop.finish();
  return true;
}

}  // namespace tv::plot
