#include "cli/drawing_list.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>

#include "cli/command_line.h"
#include "cli/plot_command.h"
#include "merge_files.h"

namespace tv::cli {

namespace {

namespace fs = std::filesystem;

constexpr int kExitNotAllWritten = 5;

bool IsDrawingFile(const fs::path& path) {
  std::string ext = path.extension().string();
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext == ".dxf" || ext == ".dwg";
}

// The last line a drawing's run wrote, its summary.
std::string LastLine(const std::string& text) {
  std::string t = text;
  while (!t.empty() && t.back() == '\n') t.pop_back();
  const std::size_t nl = t.rfind('\n');
  return nl == std::string::npos ? t : t.substr(nl + 1);
}

}  // namespace

std::vector<std::string> DrawingsOf(const std::vector<std::string>& words, std::vector<std::string>& empty) {
  std::vector<std::string> drawings;
  for (const std::string& word : words) {
    std::error_code ec;
    if (!fs::is_directory(word, ec)) {
      drawings.push_back(word);
      continue;
    }
    std::vector<std::string> found;
    for (const fs::directory_entry& e : fs::directory_iterator(word, ec))
      if (e.is_regular_file(ec) && IsDrawingFile(e.path())) found.push_back(e.path().string());
    std::sort(found.begin(), found.end());
    if (found.empty()) empty.push_back(word);
    drawings.insert(drawings.end(), found.begin(), found.end());
  }
  return drawings;
}

bool ManyDrawings(const std::vector<std::string>& words) {
  std::error_code ec;
  return words.size() > 1 || (words.size() == 1 && fs::is_directory(words.front(), ec));
}

int RunDrawings(const ParsedArgs& args, CliStreams& io, const FileBatch& batch) {
  const std::string program(batch.program);
  std::vector<std::string> empty;
  const std::vector<std::string> drawings = DrawingsOf(args.positional, empty);
  for (const std::string& folder : empty) io.err << program << ": 文件夹 " << folder << " 中没有 .dxf 或 .dwg 图纸\n";
  if (drawings.empty()) return args.usage(io, "缺少图纸文件");

  // A merge across drawings: each drawing is merged into a numbered file of a folder of this run
  // beside the target, then those files are joined with their bookmarks.
  std::optional<std::string> target;
  fs::path work;
  if (auto v = args.value("--merge"); v && !v->empty()) {
    std::error_code ec;
    fs::path t = fs::absolute(*v, ec).lexically_normal();
    if (t.extension() != ".pdf" && t.extension() != ".PDF") t += ".pdf";
    target = t.string();
    work = t.parent_path() / (".tvplot-multi-" + std::to_string(::getpid()));
  }

  std::size_t good = 0;
  std::vector<std::string> failed;
  std::vector<pdfmerge::MergeEntry> parts;
  for (std::size_t i = 0; i < drawings.size(); ++i) {
    const std::string& drawing = drawings[i];
    const std::string which = "[" + std::to_string(i + 1) + "/" + std::to_string(drawings.size()) + "] ";
    io.err << which << drawing << '\n';
    FileBatch one = batch;
    one.drawing = drawing;
    one.progressPrefix = which + fs::path(drawing).filename().string() + " ";
    std::vector<std::string> bookmarks;
    if (target) one.mergedBookmarks = &bookmarks;
    if (target) {
      std::error_code ec;
      fs::create_directories(work, ec);
      one.merge = (work / (std::to_string(i + 1) + ".pdf")).string();
    }
    std::ostringstream out;
    CliStreams drawingIo{target ? static_cast<std::ostream&>(out) : io.out, io.err, io.errIsTerminal};
    const int code = RunFileBatch(args, drawingIo, one);
    if (code == kExitUsage) {  // the options are wrong for every drawing alike
      std::error_code ec;
      if (target) fs::remove_all(work, ec);
      return code;
    }
    if (target) {
      // The numbered file is a step of this run: the summary names the drawing, not that file.
      std::string summary = LastLine(out.str());
      if (const std::size_t at = summary.find(*one.merge); at != std::string::npos)
        summary.replace(at, one.merge->size(), *target);
      if (!summary.empty()) io.err << drawing << "：" << summary << '\n';  // none when it wasn't read
      std::error_code ec;
      // Every sheet is bookmarked by its file name: one sheet's file carries no outline of its
      // own, so its name is given here; a drawing of several sheets brings their bookmarks.
      const std::string bookmark = bookmarks.size() == 1 ? bookmarks.front() : fs::path(drawing).stem().string();
      if (fs::is_regular_file(*one.merge, ec)) parts.push_back({*one.merge, bookmark, true});
    }
    if (code == kExitOk) ++good;
    else failed.push_back(drawing);
  }

  bool merged = true;
  if (target) {
    std::string error;
    merged = !parts.empty() && pdfmerge::MergeFiles(parts, *target, error);
    if (merged) io.out << *target << '\n';
    else io.err << program << ": 未能合并为 " << *target << (error.empty() ? "" : "：" + error) << '\n';
    std::error_code ec;
    fs::remove_all(work, ec);
  }
  for (const std::string& d : failed) io.err << "未全部输出：" << d << '\n';
  io.out << "共 " << drawings.size() << " 个图纸文件，" << good << " 个全部输出，" << failed.size() << " 个未全部输出";
  if (target && merged) io.out << "，已合并到 " << *target;
  io.out << '\n';
  io.out.flush();
  return failed.empty() && empty.empty() && merged ? kExitOk : kExitNotAllWritten;
}

}  // namespace tv::cli
