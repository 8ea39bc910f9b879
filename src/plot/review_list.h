#pragma once
// The review lists of the file batches as the console works them: the rows as a numbered table,
// the controls numbered with their values, and one short command per edit (see list_command.h).
// An edit changes exactly the rows it names, or is refused with a message and changes nothing.
// Settings are the form's own copy until a run starts; closing the list keeps no change.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "paper/paper.h"
#include "plot/list_controls.h"
#include "settings/plot_setting.h"

namespace tv::plot {

struct Dlg_BPlot1;
struct Dlg_BPlot2;
struct Dlg_BPlot3;

// What the list needs of a form; one implementation per family.
class ListRows {
 public:
  virtual ~ListRows() = default;
  virtual bool titleBlock() const = 0;
  // The form's title; the file lists share "批打印至文件".
  virtual std::string_view title() const;
  // The controls beside the rows, in the order of the form.
  virtual std::vector<ListControl> controls();
  // The paper list: its device, copies and media instead of formats, names and scales.
  virtual Dlg_BPlot3* paperForm() { return nullptr; }
  virtual std::vector<std::string> columns() const = 0;
  virtual std::vector<std::vector<std::string>> cells() const = 0;
  virtual std::size_t size() const = 0;
  virtual settings::PlotSettingRec& setting() = 0;
  virtual std::int32_t& styleIndex() = 0;

  // ---- papers and scales -------------------------------------------------------------------------
  virtual paper::PaperList& papers() = 0;
  virtual std::string paperName(std::size_t row) const = 0;  // internal; empty when unknown
  virtual void drawnSize(std::size_t row, double& x, double& y) const = 0;
  // Gives the row a paper of the job's list; its scale, cells and note follow.
  virtual void setPaper(std::size_t row, const paper::MyPaper& listed) = 0;
  // The paper of the row at `scale`; false when none can be worked out.
  virtual bool paperAtScale(std::size_t row, double scale, paper::MyPaper& out) = 0;
  // Names that hold the paper follow it; notes follow the format.
  virtual void refreshNamesAndNotes() = 0;

  // ---- names, copies, rows -----------------------------------------------------------------------
  virtual void setName(std::size_t row, const std::string& name) = 0;
  virtual bool hasCopies() const = 0;
  virtual std::int32_t copies(std::size_t row) const = 0;
  virtual void setCopies(std::size_t row, std::int32_t copies) = 0;
  // Removes the rows; their markers are erased and they are not plotted.
  virtual void remove(const std::vector<std::size_t>& rows) = 0;

  // ---- the rest of the form --------------------------------------------------------------------------
  virtual void OnFormatChanged(bool rebuildPapers) = 0;
  virtual bool preview(std::size_t row) = 0;
  virtual void scaleAndFilter() {}
  virtual void nameRule() {}
  virtual void sortType(std::int32_t style) { (void)style; }
  // "生 成 目 录": the drawing index of the rows as they stand.
  virtual void makeIndex() {}
  // "文件清单" and "绘制目录" of the title-block list.
  virtual void makeFileList() {}
  virtual void drawIndex() {}
  // "文件名前面插入序号" and "图号重编" (`typed` the rows, all when empty) of the title-block list;
  // true when the rows changed.
  virtual bool serialNaming(const std::string& typed) { (void)typed; return false; }
  virtual bool renumber(const std::string& typed) { (void)typed; return false; }
  // "纸张统计": the rows' papers converted into the base, 1 A4 to 5 A0.
  virtual void paperStatistics(std::int32_t base) = 0;
  // The OK: the checks and, when they pass, the run started. False leaves the list open.
  virtual bool run() = 0;
};

// Shows the list and takes commands until a run starts (true) or the list is closed (false).
// The first showing is the stage "显示对话框", timed from `stageTick`.
bool WorkReviewList(ListRows& rows, std::int64_t stageTick);

// The lists of the two file families.
bool WorkGenericList(Dlg_BPlot1& form);
bool WorkTitleList(Dlg_BPlot2& form);
bool WorkPaperList(Dlg_BPlot3& form);

// The paper column of the paper list: a medium of its device for the rows, chosen from the
// device's media or typed ("A3", a medium's name). True when the rows changed.
bool UnifyMedia(Dlg_BPlot3& form, const std::vector<std::size_t>& rows, const std::string& typed);

}  // namespace tv::plot
