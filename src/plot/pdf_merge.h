#pragma once
// One PDF for the whole set: the sheets are plotted as numbered files into a folder of the run,
// and a merging program joins them, one bookmark per sheet. The programs lie in the installation
// folder and take nothing on the command line: what they need is in exchange files of the data
// folder (a list for the first two, marker file names for the third), which is why only one merge
// runs at a time. Each program is judged only by the file it should have written.
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tv::plot {

inline constexpr std::string_view kMergeListName = "plot2.tm";
inline constexpr std::string_view kMergeListCopyName = "plot3.tm";
inline constexpr std::string_view kMergeMarkerFolderName = "Tarvex_Temp";
inline constexpr std::string_view kMergeFailedMessage = "调用PDF合并命令出错 !\n\n";
inline constexpr std::string_view kMergeFailedTitle = "文件合并报错";
inline constexpr std::string_view kMissingFileTitle = "文件缺失报错";

// A merging program and the files it can't run without, all in the installation folder.
struct MergeTool {
  std::string program;
  std::vector<std::string> companions;
};
// The programs in the order they are tried: two that read the list, one that reads the markers.
const std::vector<MergeTool>& MergeTools();

// "文件 < path > 缺失!…": a file of the installation is gone.
std::string MissingFileMessage(const std::string& path);

// The text of the list: the target, the count, then the numbered PDF of `folder` and the name of
// each sheet; UTF-8 with a byte order mark, lines ended by a line feed.
std::string MergeListText(const std::string& target, const std::string& folder, const std::vector<std::string>& names);
// Writes the list as plot2.tm of the data folder and copies it over plot3.tm, so that a program
// never reads a half-written list. False when either can't be written.
bool WriteMergeList(const std::string& target, const std::string& folder, const std::vector<std::string>& names);

// The folder of the third program's markers: "Tarvex_Temp" in the data folder.
std::string MergeMarkerFolder();
// Empties the marker folder (creating it) and writes "<count>.tmpnum" and "<name>.tmp<i>", all
// of zero length.
bool WriteMergeMarkers(const std::vector<std::string>& names);
// The folder of the merge that runs: where the numbered PDFs are and the third program writes
// "0.pdf".
const std::string& MergeTempFolder();

// Starts `exePath` with no arguments in `workingFolder` and waits for it without a limit; true
// when `expectedFile` exists afterwards, written by the program (not a file that was there).
bool RunTool(const std::string& exePath, const std::string& workingFolder, const std::string& expectedFile);

// Tries the programs in turn until one leaves the merged file at the job's target. False, after
// saying so, when none did.
bool RunMergeTools(const std::string& folder, const std::vector<std::string>& names);

// After the generic loop: the numbered PDFs of `folder` (one per name, in order) into the job's
// target. Nothing for no sheet; one sheet is copied. True when the target was written.
bool MergePdfs(const std::string& folder, const std::vector<std::string>& names);
// After the title-block loop: the same, with the line marks of the names replaced by the title
// separator for the bookmarks.
bool MergeTitlePdfs(const std::string& folder, const std::vector<std::string>& names);

// Told of the bookmarks of each merge as it starts, in list order; for a caller that joins the
// merged files further and keeps their sheets' bookmarks. Empty: nobody listens.
using MergeListener = std::function<void(const std::vector<std::string>& bookmarks)>;
void SetMergeListener(MergeListener listener);

// Removes the numbered files of a merge and the run's own folder when it is empty then.
void EmptyMergeFolder(const std::string& folder);

}  // namespace tv::plot
