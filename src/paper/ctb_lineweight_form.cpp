#include "paper/ctb_lineweight_form.h"

#include <filesystem>
#include <system_error>

#include "host/editor.h"
#include "paper/ctb_writer.h"
#include "settings/config.h"
#include "settings/folders.h"

namespace tv::paper {

namespace {
namespace fs = std::filesystem;

std::string WithoutLeadingBlanks(const std::string& text) {
  const std::size_t at = text.find_first_not_of(' ');
  return at == std::string::npos ? std::string() : text.substr(at);
}

// The first of the host's plot style folders that holds the table.
std::string FindStyleTable(const std::string& name) {
  const std::string& folders = settings::PrinterStyleFolders();
  std::size_t start = 0;
  while (start <= folders.size()) {
    std::size_t end = folders.find(';', start);
    if (end == std::string::npos) end = folders.size();
    if (end > start) {
      const fs::path candidate = fs::path(folders.substr(start, end - start)) / name;
      std::error_code ec;
      if (fs::is_regular_file(candidate, ec)) return candidate.string();
    }
    start = end + 1;
  }
  return {};
}

std::optional<std::int32_t> AskHostEditor(const Dlg_LineWeight& form) {
  if (!host::HasEditor()) return std::nullopt;
  return host::CurrentEditor().chooseItem(form.title(), Dlg_LineWeight::items(), form.selected);
}

// After the host's editor the style list may have grown (a table saved under a new name).
bool RefillStyles(std::vector<std::string>& list, std::int32_t& selectedIndex, const StyleListReader& readStyles) {
  if (!readStyles) return false;
  const std::vector<std::string> styles = readStyles();
  if (list.size() >= styles.size()) return false;
  const std::string selectedName =
      selectedIndex >= 0 && static_cast<std::size_t>(selectedIndex) < list.size()
          ? WithoutLeadingBlanks(list[static_cast<std::size_t>(selectedIndex)])
          : std::string();
  list.clear();
  selectedIndex = 0;
  for (const std::string& style : styles) {
    if (style == selectedName) selectedIndex = static_cast<std::int32_t>(list.size());
    list.push_back(" " + style);
  }
  return true;
}

}  // namespace

Dlg_LineWeight::Dlg_LineWeight(std::int32_t kind) : kind_(kind) {
  const std::int32_t* stored = StoredLineweightChoice(settings::GlobalConfig(), kind);
  const auto count = static_cast<std::int32_t>(items().size());
  selected = stored && *stored >= 0 && *stored < count ? *stored : kObjectLineweightChoice;
}

std::string Dlg_LineWeight::title() const { return "修改<" + std::string(PlotStyleTableName(kind_)) + ">的打印线宽"; }

const std::vector<std::string>& Dlg_LineWeight::items() { return LineweightChoices(); }

bool Dlg_LineWeight::accept(const std::string& path) const {
  if (std::int32_t* stored = StoredLineweightChoice(settings::GlobalConfig(), kind_)) *stored = selected;
  if (selected == kEditInHostChoice) return true;
  return WritePlotStyleTable(path, kind_, selected);
}

bool EditPlotStyle(const std::string& styleName, std::vector<std::string>& list, std::int32_t& selectedIndex,
                   const LineweightChooser& choose, const StyleListReader& readStyles) {
  const std::string name = WithoutLeadingBlanks(styleName);
  const std::string path = FindStyleTable(name);
  if (path.empty()) return false;

  if (const std::int32_t kind = PlotStyleTableKind(name); kind != 0) {
    Dlg_LineWeight form(kind);
    const std::optional<std::int32_t> answer = choose ? choose(form) : AskHostEditor(form);
    if (!answer || *answer < 0 || *answer >= static_cast<std::int32_t>(Dlg_LineWeight::items().size())) return false;
    form.selected = *answer;
    form.accept(path);
    if (form.selected != kEditInHostChoice) return true;
  }
  // This platform's host has no plot style editor of its own; what it lists may still have
  // changed on disk, so the form's list is brought up to date all the same.
  RefillStyles(list, selectedIndex, readStyles);
  return true;
}

}  // namespace tv::paper
