#pragma once
// The form of the multi-file run ("多文件打印") as a model: its list of drawings with the cells
// the list shows, the unified edits over selected rows, and the run options of its face. The
// console shows it as text; whatever a run needs is kept in the rows and their record, not here.
#include <cstddef>
#include <string>
#include <vector>

#include "plot/multi_files.h"

namespace tv::plot {

inline constexpr const char* kMultiFilesTitle = "多文件打印";

enum class MultiColumn { Number, File, SortOrder, Filter, Paper, Scale, Style, Range, Signatures, Stamps, Delete };

// "合并为多个PDF", "合并为一个PDF", "不合并PDF".
enum class MergeChoice { PerDrawing = 0, One = 1, None = 2 };

class Dlg_MultiFiles {
 public:
  std::vector<Single_Dwg> rows;
  std::vector<std::string> styles;  // the style list, by `style_index`
  bool signatureLibrary = false;    // the signature and stamp columns are in play only with one
  int batchKind = 0;                // 0 "通用型批打", 1 "图框型批打"
  MergeChoice merge = MergeChoice::None;
  int format = 0;                   // the output formats without DWG

  static const std::vector<std::string>& ColumnTitles();
  std::string Cell(std::size_t row, MultiColumn column) const;
  bool ColumnInPlay(MultiColumn column) const;

  // Sorting by the file column flips between ascending and descending at each click.
  void SortByFile();

  // The title of a unified edit: the unified one when every row of at least two is selected.
  std::string EditTitle(MultiColumn column, std::size_t selected) const;
  static const std::vector<std::string>& PaperChoices();  // in list order, with the paper mode of each
  static const std::vector<std::string>& RangeChoices();
  // Choice `choice` of the list to every selected row; false, changing nothing, for a choice
  // outside the list.
  bool UnifyPaper(const std::vector<std::size_t>& selected, std::size_t choice);
  bool UnifyRange(const std::vector<std::size_t>& selected, std::size_t choice);
  bool UnifyStyle(const std::vector<std::size_t>& selected, std::size_t choice);
  // A click turns the flag over on every selected row, to the opposite of the clicked row's.
  void ToggleSignatures(const std::vector<std::size_t>& selected, std::size_t clicked);
  void ToggleStamps(const std::vector<std::size_t>& selected, std::size_t clicked);
  // A stored format of DWG, which the form doesn't offer, falls to PDF.
  void TakeFormat(int stored);

  // The form as text: title, column titles, a line per row.
  std::string Text() const;

 private:
  bool ascending_ = false;
};

}  // namespace tv::plot
