// The tk file: the library as text in the ANSI code page, one value a line. Fields added over the
// years stand behind the older ones, and a reader takes only those the file's own version holds.
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/editor.h"
#include "host/file_lock.h"
#include "host/text_files.h"
#include "settings/checked_write.h"
#include "settings/folders.h"
#include "settings/shared_files.h"
#include "settings/value_text.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {

namespace {

constexpr std::string_view kCaption = "Tarvex打印";
constexpr std::string_view kKeepQuestion = "原图框信息是否保留 ？";
constexpr std::string_view kOpenTitle = "读取图框信息配置文件...";
constexpr std::string_view kSaveTitle = "保存图框信息配置文件为...";
constexpr std::string_view kSaveDefaultName = "图框信息配置文件.tk";
constexpr std::string_view kExtension = "tk";
// Versions at which fields joined the format: a record holds a field from its version on, the
// trailer holds a field only above its version.
constexpr std::int32_t kPrintExtentsFrom = 20200629;
constexpr std::int32_t kDynamicFlagFrom = 20200726;
constexpr std::int32_t kCompletedStampFrom = 20220607;
constexpr std::int32_t kNamingDefaultsAbove = 20210124;
constexpr std::int32_t kPaperNameStyleAbove = 20210907;

// A failed read gives zero or the empty string, as the format always had it: a truncated file is
// read to its end without a check.
class TkReader {
 public:
  explicit TkReader(std::vector<std::string> tokens) : values_(std::move(tokens)) {}
  std::int32_t integer() { return values_.integer().value_or(0); }
  double real() { return values_.real().value_or(0.0); }
  std::string text() { return values_.token().value_or(std::string()); }
  // Four doubles: minimum x, y, maximum x, y; taken as they stand, z 0.
  Extents3d area() {
    Extents3d e;
    e.min.x = real();
    e.min.y = real();
    e.max.x = real();
    e.max.y = real();
    e.min.z = e.max.z = 0.0;
    return e;
  }
  bool failed() const { return values_.failed(); }

 private:
  settings::ValueReader values_;
};

void WriteArea(settings::ValueWriter& w, const Extents3d& e) {
  w.real(e.min.x);
  w.real(e.min.y);
  w.real(e.max.x);
  w.real(e.max.y);
}

void ReadDefinition(TkReader& r, std::int32_t version, TK_Customization& d) {
  d.alias_name = r.text();
  d.block_name = r.text();
  d.name_rule = r.text();
  d.rotation = r.real();
  d.scale = r.real();
  d.paper.length = r.integer();
  d.paper.width = r.integer();
  d.frame_extents = r.area();
  for (Extents3d* a : {&d.area_drawing_no, &d.area_revision, &d.area_title, &d.area_date, &d.area_info1,
                       &d.area_info2, &d.stamp_register, &d.stamp_issue, &d.stamp_project})
    *a = r.area();
  d.serial_digits = r.integer();
  d.sort_priority = r.integer();
  if (version < kPrintExtentsFrom) return;
  d.print_extents = r.area();
  if (version < kDynamicFlagFrom) return;
  d.is_dynamic = r.integer();
  if (version < kCompletedStampFrom) return;
  d.stamp_completed = r.area();
}

void WriteDefinition(settings::ValueWriter& w, const TK_Customization& d) {
  w.token(d.alias_name);
  w.token(d.block_name);
  w.token(d.name_rule);
  w.real(d.rotation);
  w.real(d.scale);
  w.integer(d.paper.length);
  w.integer(d.paper.width);
  WriteArea(w, d.frame_extents);
  for (const Extents3d* a : {&d.area_drawing_no, &d.area_revision, &d.area_title, &d.area_date, &d.area_info1,
                             &d.area_info2, &d.stamp_register, &d.stamp_issue, &d.stamp_project})
    WriteArea(w, *a);
  w.integer(d.serial_digits);
  w.integer(d.sort_priority);
  WriteArea(w, d.print_extents);
  w.integer(d.is_dynamic);
  WriteArea(w, d.stamp_completed);
}

void ReadIndexStyle(TkReader& r, TK_IndexStyle& s) {
  s.style_name = r.text();
  s.font_file = r.text();
  s.bigfont_file = r.text();
  s.style_text_size = r.real();
  s.style_x_scale = r.real();
  s.is_shape_file = r.integer();
  s.text_height = r.real();
  s.width_factor = r.real();
  s.color = r.integer();
  s.layer = r.text();
  s.layer_color = r.integer();
  s.layer_linetype = r.text();
  s.layer_lineweight = r.integer();
  // A layer colour of 0 or below is no layer colour at all: the layer falls back to the defaults.
  if (s.layer_color <= 0) {
    s.layer_color = 1;
    s.layer_linetype = "Continuous";
    s.layer_lineweight = -3;
  }
}

void WriteIndexStyle(settings::ValueWriter& w, const TK_IndexStyle& s) {
  w.token(s.style_name);
  w.token(s.font_file);
  w.token(s.bigfont_file);
  w.real(s.style_text_size);
  w.real(s.style_x_scale);
  w.integer(s.is_shape_file);
  w.real(s.text_height);
  w.real(s.width_factor);
  w.integer(s.color);
  w.token(s.layer);
  w.integer(s.layer_color);
  w.token(s.layer_linetype);
  w.integer(s.layer_lineweight);
}

// Reads the definitions after the count: each is appended unless its block name is known already
// (case counts), so on a merge the older entry wins and the order of first appearance stays.
void ReadDefinitions(TkReader& r, std::int32_t version, TK_Library& library) {
  const std::int32_t count = r.integer();
  for (std::int32_t i = 0; i < count; ++i) {
    // Once the file has run out every further record reads the same (all zero, no name), so
    // the first of them decides for all; a count the file doesn't back costs nothing.
    const bool exhausted = r.failed();
    auto definition = std::make_unique<TK_Customization>();
    ReadDefinition(r, version, *definition);
    if (!FindDefinition(library, definition->block_name)) library.definitions.push_back(std::move(definition));
    if (exhausted) break;
  }
}

// Items 5 to 21 of the file: they replace the library's values even on a merge.
void ReadIndexAndNumbering(TkReader& r, TK_Library& library) {
  library.index_draw_frame = r.integer();
  library.index_row_height = r.real();
  library.index_col_widths.clear();
  const std::int32_t widths = r.integer();
  for (std::int32_t i = 0; i < widths && !r.failed(); ++i) {
    const double w = r.real();
    if (!r.failed()) library.index_col_widths.push_back(w);
  }
  library.index_columns.clear();
  const std::int32_t columns = r.integer();
  for (std::int32_t i = 0; i < columns && !r.failed(); ++i) {
    const std::int32_t c = r.integer();
    if (!r.failed()) library.index_columns.push_back(c);
  }
  library.InsertSerial = r.integer();
  library.SerialPrefix = r.text();
  library.SerialStart = r.integer();
  library.SerialSuffix = r.text();
  library.SerialDigits = r.integer();
  for (std::int32_t& flag : library.CentreInArea) flag = r.integer();
}

struct ReadOutcome {
  std::int32_t version = 0;
  std::int32_t definitionCount = 0;
  bool complete = false;
};

// The counts a whole library holds: none below zero.
bool CountsHold(const std::vector<std::string>& tokens) {
  settings::ValueReader r(tokens);
  r.integer();
  const std::optional<std::int32_t> definitions = r.integer();
  return definitions && *definitions >= 0;
}

// With `replace` the library is emptied first; otherwise the file's definitions are merged in.
ReadOutcome ReadLibrary(std::vector<std::string> tokens, TK_Library& library, bool replace) {
  const bool countsHold = CountsHold(tokens);
  TkReader r(std::move(tokens));
  ReadOutcome outcome;
  outcome.version = r.integer();
  if (replace) ClearLibrary(library);
  const std::size_t before = library.definitions.size();
  ReadDefinitions(r, outcome.version, library);
  outcome.definitionCount = static_cast<std::int32_t>(library.definitions.size() - before);
  ReadIndexStyle(r, library.index_style);
  ReadIndexAndNumbering(r, library);
  if (outcome.version > kNamingDefaultsAbove) {
    library.DefaultNameRule = r.text();
    library.TitleSeparator = r.text();
  }
  if (outcome.version > kPaperNameStyleAbove) {
    library.PaperNameStyle = r.integer();
    library.reserved_int = r.integer();
  }
  outcome.complete = !r.failed() && countsHold && settings::IsFileVersion(outcome.version);
  return outcome;
}

std::string ComposeFile(const TK_Library& library) {
  settings::ValueWriter w;
  w.integer(settings::kFileVersion);
  w.integer(static_cast<std::int64_t>(library.definitions.size()));
  for (const auto& d : library.definitions) WriteDefinition(w, *d);
  WriteIndexStyle(w, library.index_style);
  w.integer(library.index_draw_frame);
  w.real(library.index_row_height);
  w.integer(static_cast<std::int64_t>(library.index_col_widths.size()));
  for (double width : library.index_col_widths) w.real(width);
  w.integer(static_cast<std::int64_t>(library.index_columns.size()));
  for (std::int32_t column : library.index_columns) w.integer(column);
  w.integer(library.InsertSerial);
  w.token(library.SerialPrefix);
  w.integer(library.SerialStart);
  w.token(library.SerialSuffix);
  w.integer(library.SerialDigits);
  for (std::int32_t flag : library.CentreInArea) w.integer(flag);
  w.token(library.DefaultNameRule);
  w.token(library.TitleSeparator);
  w.integer(library.PaperNameStyle);
  w.integer(library.reserved_int);
  return w.text();
}

}  // namespace

std::string DefaultTkPath() { return settings::DataFolder() + "/BPlot_TK.tk"; }

std::optional<bool> AskKeepDefinitions(const TK_Library& library) {
  if (library.definitions.empty()) return true;
  const host::MessageAnswer keep =
      host::CurrentEditor().messageBox(kKeepQuestion, kCaption, host::MessageButtons::YesNo);
  // A question that got no answer at all abandons the import, like a cancelled dialog.
  if (keep == host::MessageAnswer::Cancel) return std::nullopt;
  return keep == host::MessageAnswer::Yes;
}

bool ReadTkFileInto(TK_Library& library, const std::string& path, bool replace) {
  std::optional<std::string> bytes = host::ReadFileBytes(path);
  if (!bytes) return false;
  ReadLibrary(host::TextFileTokens(*bytes), library, replace);
  // What the user's own file held is noted, so that saving it unchanged won't undo another run's
  // newer file.
  if (replace && path == DefaultTkPath()) settings::NoteFileAsRead(path, std::move(bytes), ComposeFile(library));
  return true;
}

bool LoadTkFileFrom(TK_Library& library, const std::string& path, bool askMerge) {
  // A new installation has no file yet and simply starts empty.
  if (!host::ReadFileBytes(path)) return false;
  bool replace = !askMerge;
  if (askMerge) {
    const std::optional<bool> keep = AskKeepDefinitions(library);
    if (!keep) return false;
    replace = !*keep;
  }
  return ReadTkFileInto(library, path, replace);
}

bool LoadTkFile(TK_Library& library, bool askUser) {
  if (!askUser) return LoadTkFileFrom(library, DefaultTkPath(), false);
  const std::optional<std::string> path = host::CurrentEditor().askOpenPath(kOpenTitle, kExtension);
  if (!path) return false;
  return LoadTkFileFrom(library, *path, true);
}

std::optional<TkFileFacts> InspectTkFile(const std::string& path) {
  std::optional<std::vector<std::string>> tokens = host::ReadTextFileTokens(path);
  if (!tokens) return std::nullopt;
  TK_Library scratch;
  const ReadOutcome outcome = ReadLibrary(std::move(*tokens), scratch, true);
  return TkFileFacts{outcome.version, outcome.definitionCount, outcome.complete};
}

bool SaveTkFileTo(const TK_Library& library, const std::string& path, bool reportFailure) {
  if (path.empty()) return false;
  return settings::SaveSharedFile(path, ComposeFile(library), reportFailure);
}

bool SaveTkFile(const TK_Library& library, bool reportFailure, bool askUser) {
  if (!askUser) return SaveTkFileTo(library, DefaultTkPath(), reportFailure);
  const std::optional<std::string> path =
      host::CurrentEditor().askSavePath(kSaveTitle, kSaveDefaultName, kExtension);
  if (!path) return false;
  return SaveTkFileTo(library, *path, reportFailure);
}

bool UpdateTkFile(TK_Library& library, const std::function<bool(TK_Library&)>& change, bool reportFailure) {
  const std::string path = DefaultTkPath();
  host::FileLock lock(path);
  if (!lock.held()) {
    if (reportFailure) settings::ReportWriteFailure(path);
    return false;
  }
  // Another run may have saved since this one read the file: its work is the starting point.
  ReadTkFileInto(library, path, true);
  if (!change(library)) return false;
  return SaveTkFileTo(library, path, reportFailure);
}

bool SaveTkNamingOnly(TK_Library& library) {
  const std::int32_t insertSerial = library.InsertSerial;
  const std::string prefix = library.SerialPrefix;
  const std::int32_t start = library.SerialStart;
  const std::string suffix = library.SerialSuffix;
  const std::int32_t digits = library.SerialDigits;
  return UpdateTkFile(
      library,
      [&](TK_Library& fresh) {
        fresh.InsertSerial = insertSerial;
        fresh.SerialPrefix = prefix;
        fresh.SerialStart = start;
        fresh.SerialSuffix = suffix;
        fresh.SerialDigits = digits;
        return true;
      },
      false);
}

}  // namespace tv::titleblock
