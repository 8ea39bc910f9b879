#include "paper/ctb_writer.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "host/editor.h"
#include "host/text_files.h"
#include "settings/folders.h"

namespace tv::paper {

namespace {
namespace fs = std::filesystem;

struct TableKind {
  std::string_view fileName;
  std::int32_t color;  // 0xC3000000, 0xC3FFFFFF, 0xC30000FF as the host stores them, signed
  std::int32_t colorPolicy;
};

constexpr std::array<TableKind, 3> kKinds{{
    {"黑白.ctb", -1023410176, 5},
    {"彩色.ctb", -1006632961, 1},
    {"蓝白.ctb", -1023409921, 5},
}};

const TableKind* KindOf(std::int32_t kind) {
  return kind >= 1 && kind <= static_cast<std::int32_t>(kKinds.size()) ? &kKinds[static_cast<std::size_t>(kind - 1)]
                                                                        : nullptr;
}

std::vector<std::string> SplitList(const std::string& list) {
  std::vector<std::string> entries;
  std::size_t start = 0;
  while (start <= list.size()) {
    std::size_t end = list.find(';', start);
    if (end == std::string::npos) end = list.size();
    if (end > start) entries.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return entries;
}

}  // namespace

std::string_view PlotStyleTableName(std::int32_t kind) {
  const TableKind* k = KindOf(kind);
  return k ? k->fileName : std::string_view();
}

std::int32_t PlotStyleTableKind(std::string_view fileName) {
  for (std::size_t i = 0; i < kKinds.size(); ++i)
    if (kKinds[i].fileName == fileName) return static_cast<std::int32_t>(i + 1);
  return 0;
}

std::int32_t PlotStyleColor(std::int32_t kind) {
  const TableKind* k = KindOf(kind);
  return k ? k->color : -1;
}

std::int32_t PlotStyleColorPolicy(std::int32_t kind) {
  const TableKind* k = KindOf(kind);
  return k ? k->colorPolicy : 1;
}

const std::vector<std::string>& LineweightChoices() {
  static const std::vector<std::string> kChoices{"自行编辑", "0.05 mm", "0.10 mm", "0.15 mm", "0.20 mm", "0.25 mm",
                                                 "对象线宽", "0.30 mm", "0.35 mm", "0.40 mm", "0.45 mm", "0.50 mm"};
  return kChoices;
}

std::int32_t LineweightValueOf(std::int32_t index) {
  // The numbers are the host's lineweight table positions as the tables have always carried
  // them, shift between the two halves of the list included.
  if (index == kObjectLineweightChoice) return 0;
  if (index == 12) return 1;
  if (index <= 5) return index + 1;
  return index;
}

std::int32_t* StoredLineweightChoice(settings::Config& config, std::int32_t kind) {
  switch (kind) {
    case kBlackWhiteTable:
      return &config.ctb_colour_a;
    case kColourTable:
      return &config.ctb_colour_b;
    case kBlueWhiteTable:
      return &config.ctb_colour_c;
    default:
      return nullptr;
  }
}

std::string PlotStyleTableText(std::int32_t kind, std::int32_t lineweightIndex) {
  const std::string color = std::to_string(PlotStyleColor(kind));
  const std::string policy = std::to_string(PlotStyleColorPolicy(kind));
  const std::string lineweight = std::to_string(LineweightValueOf(lineweightIndex));
  std::string text;
  text.reserve(150000);
  auto line = [&text](std::string_view a, std::string_view b = {}) {
    text.append(a);
    text.append(b);
    text.push_back('\n');
  };
  // The plotter files' marker, on purpose: the host reads both kinds with one parser.
  line("PIAFILEVERSION_2.0,PC3VER1");
  line("description=\"");
  line("aci_table_available=TRUE");
  line("scale_factor=1.0");
  line("apply_factor=FALSE");
  line("custom_lineweight_display_units=0");
  line("aci_table{");
  for (int i = 0; i < 255; ++i) line(" " + std::to_string(i) + "=\"Color_", std::to_string(i + 1));
  line("}");
  line("plot_style{");
  for (int i = 0; i < 255; ++i) {
    const std::string aci = std::to_string(i + 1);
    line(" " + std::to_string(i), "{");
    line("  name=\"Color_", aci);
    line("  localized_name=\"Color_", aci);
    line("  description=\"");
    line("  color=", color);
    line("  mode_color=", color);
    line("  color_policy=", policy);
    line("  physical_pen_number=0");
    line("  virtual_pen_number=0");
    line("  screen=100");
    line("  linepattern_size=0.5");
    line("  linetype=31");
    line("  adaptive_linetype=TRUE");
    line("  lineweight=", lineweight);
    line("  fill_style=73");
    line("  end_style=4");
    line("  join_style=5");
    line("}");
  }
  line("}");
  line("custom_lineweight_table{");
  for (std::string_view entry : {" 0=0.0", " 1=0.05", " 2=0.1", " 3=0.15", " 4=0.2", " 5=0.25", " 6=0.3", " 7=0.35",
                                 " 8=0.4", " 9=0.45", " 10=0.5"})
    line(entry);
  line("}");
  return text;
}

bool WritePlotStyleTable(const std::string& path, std::int32_t kind, std::int32_t lineweightIndex) {
  std::error_code ec;
  if (fs::exists(path, ec)) fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ec);
  if (KindOf(kind) && host::WriteTextFileReplacing(path, PlotStyleTableText(kind, lineweightIndex))) return true;
  if (host::HasEditor()) {
    std::string message(kCtbWriteFailed);
    message.replace(message.find("%s"), 2, path);
    host::CurrentEditor().messageBox(message, kCtbWriteTitle, host::MessageButtons::Ok);
  }
  return false;
}

void EnsurePlotStyleTables() { EnsurePlotStyleTables(settings::PrinterStyleFolders()); }

void EnsurePlotStyleTables(const std::string& styleFolders) {
  std::array<bool, kKinds.size()> present{};
  std::string lastFolder;
  for (const std::string& folder : SplitList(styleFolders)) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    lastFolder = folder;
    for (std::size_t i = 0; i < kKinds.size(); ++i)
      if (!present[i] && fs::exists(fs::path(folder) / std::string(kKinds[i].fileName), ec)) present[i] = true;
    if (present[0] && present[1] && present[2]) return;
  }
  if (lastFolder.empty()) return;  // the host names no style folder: its check at load said so
  for (std::size_t i = 0; i < kKinds.size(); ++i) {
    if (present[i]) continue;
    const auto kind = static_cast<std::int32_t>(i + 1);
    WritePlotStyleTable(lastFolder + "/" + std::string(kKinds[i].fileName), kind, kObjectLineweightChoice);
    *StoredLineweightChoice(settings::GlobalConfig(), kind) = kObjectLineweightChoice;
  }
}

}  // namespace tv::paper
