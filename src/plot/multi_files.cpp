#include "plot/multi_files.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <optional>
#include <set>
#include <sstream>

#include "host/text_files.h"
#include "settings/folders.h"
#include "settings/plot_setting.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

bool SamePath(const std::string& a, const std::string& b) { return Upper(a) == Upper(b); }

// The values of a row after its path, in the record's order.
template <typename Visit>
void EachField(Single_Dwg& row, Visit&& visit) {
  visit(row.number);
  visit(row.name);
  visit(row.sort_order);
  visit(row.scale);
  visit(row.auto_scale);
  visit(row.margin);
  visit(row.plot_signatures);
  visit(row.stamp_on);
  for (std::int32_t& flag : row.flags) visit(flag);
  visit(row.filter_ratio);
  visit(row.paper_mode);
  visit(row.style_index);
  visit(row.range);
  visit(row.order_mode);
  visit(row.last_flag);
}

bool ReadValue(const std::string& line, std::string& value) {
  value = line;
  return true;
}
bool ReadValue(const std::string& line, std::int32_t& value) {
  const auto [p, ec] = std::from_chars(line.data(), line.data() + line.size(), value);
  return ec == std::errc() && p == line.data() + line.size();
}
bool ReadValue(const std::string& line, double& value) {
  std::istringstream in(line);
  in >> value;
  return !in.fail();
}

}  // namespace

Single_Dwg NewRow(const settings::PlotSettingRec* rec) {
  Single_Dwg row;
  if (!rec) return row;
  row.sort_order = rec->sort_style;
  row.scale = rec->default_scale;
  row.auto_scale = rec->auto_scale;
  row.margin = rec->margin;
  row.plot_signatures = rec->plot_signatures;
  row.stamp_on = rec->plot_stamps;
  row.flags = {rec->stamp_register_on, rec->stamp_issue_on, rec->stamp_project_on, rec->stamp_completed_on,
               rec->legacy_flag_a};
  row.filter_ratio = rec->filter_ratio;
  return row;
}

std::string MultiFilesPath() { return (fs::path(settings::DataFolder()) / kMultiFilesName).string(); }

std::string MultiFileRowsText(const std::vector<Single_Dwg>& current, const std::vector<Single_Dwg>& stored) {
  std::vector<Single_Dwg> kept;
  std::set<std::string> paths;
  for (const std::vector<Single_Dwg>* list : {&current, &stored})
    for (const Single_Dwg& row : *list) {
      if (kept.size() >= kMultiFilesMaxRows) break;
      if (paths.insert(Upper(row.path)).second) kept.push_back(row);
    }
  std::ostringstream out;
  out.precision(17);
  out << kMultiFilesVersion << '\n' << kept.size() << '\n';
  for (Single_Dwg& row : kept) {
    out << row.path << '\n';
    EachField(row, [&](const auto& value) { out << value << '\n'; });
  }
  return out.str();
}

std::vector<Single_Dwg> ParseMultiFileRows(const std::string& text) {
  std::istringstream in(text);
  std::string line;
  std::int32_t version = 0, count = 0;
  // The version stamp isn't held against this module's: an older record reads the same.
  if (!std::getline(in, line) || !ReadValue(line, version)) return {};
  if (!std::getline(in, line) || !ReadValue(line, count) || count < 0) return {};
  std::vector<Single_Dwg> rows;
  for (std::int32_t i = 0; i < count; ++i) {
    Single_Dwg row;
    bool ok = static_cast<bool>(std::getline(in, row.path));
    EachField(row, [&](auto& value) {
      if (ok) ok = std::getline(in, line) && ReadValue(line, value);
    });
    if (!ok) return {};
    rows.push_back(std::move(row));
  }
  return rows;
}

void LoadMultiFileRows(std::vector<Single_Dwg>& store, const std::string& file) {
  const std::optional<std::string> bytes = host::ReadFileBytes(file);
  store = ParseMultiFileRows(bytes ? host::TextFileText(*bytes) : std::string());
}

bool SaveMultiFileRows(const std::vector<Single_Dwg>& current, const std::vector<Single_Dwg>& store,
                       const std::string& file) {
  // In the code page of the system's files, replaced whole, so a reader never meets half a record.
  return host::WriteTextFileReplacing(file, MultiFileRowsText(current, store));
}

bool ApplyStoredRow(const std::vector<Single_Dwg>& store, Single_Dwg& row) {
  const auto it = std::find_if(store.begin(), store.end(), [&](const Single_Dwg& s) { return SamePath(s.path, row.path); });
  if (it == store.end()) return false;
  const std::int32_t number = row.number;
  const std::string path = row.path, name = row.name;
  row = *it;
  row.number = number;
  row.path = path;
  row.name = name;
  return true;
}

bool CountsAsDrawing(const std::string& name) {
  return Upper(name).find(".DWG") != std::string::npos && fs::path(name).has_parent_path();
}

void AddFiles(std::vector<Single_Dwg>& rows, const std::vector<std::string>& files,
              const std::vector<Single_Dwg>& store, const settings::PlotSettingRec* rec) {
  const auto add = [&](const std::string& file) {
    if (!CountsAsDrawing(file)) return;
    Single_Dwg row = NewRow(rec);
    row.path = file;
    row.name = fs::path(file).filename().string();
    ApplyStoredRow(store, row);
    rows.push_back(std::move(row));
  };
  for (const std::string& file : files) {
    std::error_code ec;
    if (!fs::is_directory(file, ec)) {
      add(file);
      continue;
    }
    std::vector<std::string> found;
    for (fs::recursive_directory_iterator it(file, ec), end; !ec && it != end; it.increment(ec))
      if (it->is_regular_file(ec)) found.push_back(it->path().string());
    std::sort(found.begin(), found.end());
    for (const std::string& f : found) add(f);
  }
  // A later duplicate goes; the first row of a path keeps its place and choices.
  std::set<std::string> seen;
  std::erase_if(rows, [&](const Single_Dwg& row) { return !seen.insert(Upper(row.path)).second; });
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i].number = static_cast<std::int32_t>(i + 1);
}

}  // namespace tv::plot
