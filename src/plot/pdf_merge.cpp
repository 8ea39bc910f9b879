#include "plot/pdf_merge.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include "host/editor.h"
#include "host/run_lock.h"
#include "host/tool_process.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "titleblock/tk_library.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;

std::string& CurrentMergeFolder() {
  static std::string folder;
  return folder;
}

void Show(std::string_view text, std::string_view title) {
  if (host::HasEditor()) host::CurrentEditor().messageBox(text, title, host::MessageButtons::Ok);
}

bool CopyOver(const std::string& from, const std::string& to) {
  std::error_code ec;
  return fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec) && !ec;
}

void OpenWhenAsked(const std::string& target) {
  if (settings::GlobalConfig().pdf_open_after_merge != 0 && host::HasEditor()) host::CurrentEditor().shellOpen(target);
}

std::string InInstallFolder(const std::string& name) { return (fs::path(settings::InstallFolder()) / name).string(); }

MergeListener& Listener() {
  static MergeListener listener;
  return listener;
}

// Copies `from` beside `to` and renames the copy over it: `to` is replaced whole or not at all.
bool ReplaceWith(const std::string& from, const std::string& to) {
  const fs::path beside = fs::path(to).parent_path() / ("." + fs::path(to).filename().string() + ".part");
  std::error_code ec;
  if (CopyOver(from, beside.string())) {
    fs::rename(beside, to, ec);
    if (!ec) return true;
  }
  fs::remove(beside, ec);
  return false;
}

bool Merge(const std::string& folder, const std::vector<std::string>& names) {
  const std::string& target = Job().MergedPdfPath;
  if (names.empty() || target.empty()) return false;
  if (Listener()) Listener()(names);
  std::error_code ec;
  if (names.size() == 1) {
    if (!ReplaceWith(MergeSheetPath(folder, 1), target)) {
      Show(kMergeFailedMessage, kMergeFailedTitle);
      return false;
    }
    OpenWhenAsked(target);
    return true;
  }
  fs::create_directories(settings::DataFolder(), ec);
  // The exchange files have fixed names: a second run of the user waits for the merge of the first.
  const std::optional<host::RunLock> lock =
      host::RunLock::Acquire((fs::path(settings::DataFolder()) / "plot.tm.lock").string(), [] {
        if (host::HasEditor()) host::CurrentEditor().print("\n另一个PDF合并正在进行，等待其完成…");
      });
  if (!WriteMergeList(target, folder, names)) {
    Show(kMergeFailedMessage, kMergeFailedTitle);
    return false;
  }
  return RunMergeTools(folder, names);
}

}  // namespace

const std::vector<MergeTool>& MergeTools() {
  // This platform's programs carry their PDF library inside: the program is its only file. The
  // third is looked for by starting it alone.
  static const std::vector<MergeTool> tools{{"Tpr2", {"Tpr2"}}, {"Tpr3", {"Tpr3"}}, {"Tpr4", {}}};
  return tools;
}

std::string MissingFileMessage(const std::string& path) {
  return "文件 < " + path + " > 缺失!\n\n该文件可能被杀毒软件错删\n\n可在杀毒软件中恢复该文件\n或重新安装本程序";
}

std::string MergeListText(const std::string& target, const std::string& folder, const std::vector<std::string>& names) {
  std::string text = "\xEF\xBB\xBF" + target + "\n" + std::to_string(names.size()) + "\n";
  for (std::size_t i = 0; i < names.size(); ++i)
    text += MergeSheetPath(folder, static_cast<std::int32_t>(i) + 1) + "\n" + names[i] + "\n";
  return text;
}

bool WriteMergeList(const std::string& target, const std::string& folder, const std::vector<std::string>& names) {
  const fs::path data(settings::DataFolder());
  std::error_code ec;
  fs::create_directories(data, ec);
  const fs::path list = data / kMergeListName;
  {
    std::ofstream out(list, std::ios::binary | std::ios::trunc);
    out << MergeListText(target, folder, names);
    if (!out.flush()) return false;
  }
  return CopyOver(list.string(), (data / kMergeListCopyName).string());
}

std::string MergeMarkerFolder() { return (fs::path(settings::DataFolder()) / kMergeMarkerFolderName).string(); }

bool WriteMergeMarkers(const std::vector<std::string>& names) {
  const fs::path folder(MergeMarkerFolder());
  std::error_code ec;
  fs::create_directories(folder, ec);
  // Only files: the working folders of runs may live here too.
  for (const fs::directory_entry& e : fs::directory_iterator(folder, ec))
    if (std::error_code fe; e.is_regular_file(fe)) fs::remove(e.path(), fe);
  bool ok = static_cast<bool>(std::ofstream(folder / (std::to_string(names.size()) + ".tmpnum")));
  for (std::size_t i = 0; i < names.size(); ++i)
    ok = static_cast<bool>(std::ofstream(folder / (names[i] + ".tmp" + std::to_string(i + 1)))) && ok;
  return ok;
}

const std::string& MergeTempFolder() { return CurrentMergeFolder(); }

bool RunTool(const std::string& exePath, const std::string& workingFolder, const std::string& expectedFile) {
  const std::vector<std::pair<std::string, std::string>> environment{
      {"TARVEX_DATA_FOLDER", settings::DataFolder()}, {"TARVEX_MERGE_FOLDER", MergeTempFolder()}};
  // A file left from before (one a viewer kept from being deleted) is no output of the program.
  const std::optional<FileStamp> before = StampOf(expectedFile);
  host::RunProgramAndWait(exePath, workingFolder, environment);
  return IsFreshOutput(expectedFile, before);
}

bool RunMergeTools(const std::string& folder, const std::vector<std::string>& names) {
  const std::string& target = Job().MergedPdfPath;
  CurrentMergeFolder() = folder;
  std::error_code ec;
  fs::remove(target, ec);  // a file held open by a viewer stays: then no program's output shows
  const std::vector<MergeTool>& tools = MergeTools();
  bool merged = false;
  for (std::size_t t = 0; t < tools.size() && !merged; ++t) {
    for (const std::string& companion : tools[t].companions)
      if (!fs::exists(InInstallFolder(companion), ec)) Show(MissingFileMessage(InInstallFolder(companion)), kMissingFileTitle);
    const bool listReader = t + 1 < tools.size();
    if (listReader) {
      merged = RunTool(InInstallFolder(tools[t].program), settings::InstallFolder(), target);
      continue;
    }
    WriteMergeMarkers(names);
    const std::string joined = (fs::path(folder) / "0.pdf").string();
    fs::remove(joined, ec);
    merged = RunTool(InInstallFolder(tools[t].program), settings::InstallFolder(), joined) && CopyOver(joined, target);
  }
  CurrentMergeFolder().clear();
  if (!merged) {
    Show(kMergeFailedMessage, kMergeFailedTitle);
    return false;
  }
  OpenWhenAsked(target);
  return true;
}

bool MergePdfs(const std::string& folder, const std::vector<std::string>& names) { return Merge(folder, names); }

bool MergeTitlePdfs(const std::string& folder, const std::vector<std::string>& names) {
  std::vector<std::string> bookmarks;
  bookmarks.reserve(names.size());
  const std::string& separator = titleblock::GlobalTkLibrary().TitleSeparator;
  for (const std::string& name : names) bookmarks.push_back(WithTitleSeparator(name, separator));
  return Merge(folder, bookmarks);
}

void SetMergeListener(MergeListener listener) { Listener() = std::move(listener); }

void EmptyMergeFolder(const std::string& folder) {
  std::error_code ec;
  for (const fs::directory_entry& e : fs::directory_iterator(folder, ec))
    if (std::error_code fe; e.is_regular_file(fe)) fs::remove(e.path(), fe);
  if (fs::path(folder).filename().string().rfind("run-", 0) == 0) fs::remove(folder, ec);
}

}  // namespace tv::plot
