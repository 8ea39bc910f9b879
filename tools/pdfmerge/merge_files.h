#pragma once
// The work of the merging programs: numbered sheet PDFs joined into one file, one outline entry
// per sheet. The programs differ only in how they learn the list.
#include <string>
#include <vector>

namespace tv::pdfmerge {

struct MergeEntry {
  std::string path;      // a sheet's PDF
  std::string bookmark;  // the outline text of its first page
  // A file that is itself a merge: its own top-level outline entries travel with its pages, and
  // `bookmark` stands only when it has none.
  bool keepOutline = false;
};

// Joins the pages of `entries` in their order into `target`, keeping each page's size and
// rotation. An entry whose file is missing or unreadable is left out and named in `skipped`.
// The target is written under another name and renamed, so it exists afterwards only when the
// merge succeeded (at least one page joined); an old target is removed first. False with the
// reason in `error`.
bool MergeFiles(const std::vector<MergeEntry>& entries, const std::string& target, std::string& error,
                std::vector<std::string>* skipped = nullptr);

// The exchange list: line 1 the target, line 2 the count, then a path and a bookmark per sheet.
// UTF-8, an optional byte order mark, lines ended by LF (a CR before it is dropped). False when the
// text doesn't hold a whole list.
bool ParseMergeList(const std::string& text, std::string& target, std::vector<MergeEntry>& entries);

// The marker files of the third program in `markerFolder`: "<n>.tmpnum" gives the count and each
// "<name>.tmp<i>" the bookmark of sheet i (from 1); the sheets are "<i>.pdf" in `pdfFolder`.
// False when no count marker is there.
bool ReadMarkers(const std::string& markerFolder, const std::string& pdfFolder, std::vector<MergeEntry>& entries);

}  // namespace tv::pdfmerge
