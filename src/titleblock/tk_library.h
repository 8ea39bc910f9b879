#pragma once
// The library of title-block definitions: which block names are sheet frames, on which paper they
// print, where their fields and stamps lie, how their files are named. Kept per user in
// BPlot_TK.tk in the data folder; the same file form is exported and imported as a .tk file.
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/geometry.h"
#include "paper/paper.h"

namespace tv::titleblock {

// What a definition's areas start as: the box 0,0,0 - 0,0,0, which counts as not set.
inline Extents3d UnsetArea() { return Extents3d(Point3d{}, Point3d{}); }
// An area is set when it is wider and higher than 0.00001.
bool IsAreaSet(const Extents3d& area);

// One title block. Areas are relative to `pick_centre`, in the unrotated position in which the
// frame was picked.
struct TK_Customization {
  Point3d pick_centre;       // centre of the picked insert's extents; never stored
  std::string alias_name;    // carried by the file, used by nothing else
  std::string block_name;    // unique in the library; a dynamic block's own name, never "*U…"
  double rotation = 0.0;     // radians
  double scale = 1.0;        // absolute X scale of the picked insert
  std::string name_rule;     // file naming rule; "" when not defined
  paper::MyPaper paper{297, 210, false};
  Extents3d frame_extents = UnsetArea();
  Extents3d area_drawing_no = UnsetArea();  // "图号(A)"
  Extents3d area_revision = UnsetArea();    // "版次(B)"
  Extents3d area_title = UnsetArea();       // "图名(C)"
  Extents3d area_date = UnsetArea();        // "日期(D)"
  Extents3d area_info1 = UnsetArea();       // "信息1(E)"
  Extents3d area_info2 = UnsetArea();       // "信息2(F)"
  Extents3d print_extents = UnsetArea();    // "调整图框打印范围", when it differs from the frame
  Extents3d stamp_register = UnsetArea();   // "注册章位置"
  Extents3d stamp_issue = UnsetArea();      // "出图章位置"
  Extents3d stamp_project = UnsetArea();    // "项目章位置"
  Extents3d stamp_completed = UnsetArea();  // "竣工章位置"
  std::int32_t serial_digits = 2;
  std::int32_t sort_priority = 1;  // "排序优先级别": 0 to 8, shown as 1 to 9
  std::int32_t is_dynamic = 0;     // "动态图框"
};

// The look of the drawing index.
struct TK_IndexStyle {
  std::string style_name = "Standard";
  std::string font_file = "Tarvex_EN.shx";
  std::string bigfont_file = "Tarvex_HZ.shx";
  double style_text_size = 300.0;
  double style_x_scale = 0.8;
  std::int32_t is_shape_file = 1;
  double text_height = 300.0;
  double width_factor = 0.8;
  std::int32_t color = 256;  // 256 "ByLayer", 0 "ByBlock"
  std::string layer = "0";
  std::int32_t layer_color = 1;
  std::string layer_linetype = "Continuous";
  std::int32_t layer_lineweight = -3;  // the default weight
};

// Columns of the drawing index, as `index_columns` numbers them.
inline constexpr std::array<const char*, 9> kIndexColumnNames{"序号", "图号", "版次", "图名", "日期",
                                                             "信息1", "信息2", "图幅", "比例"};

struct TK_Library {
  std::vector<std::unique_ptr<TK_Customization>> definitions;  // in the order the list shows them
  TK_IndexStyle index_style;
  std::int32_t index_draw_frame = 1;  // "绘制目录内容边框线"
  double index_row_height = 1000.0;
  std::vector<double> index_col_widths{900.0, 2300.0, 9850.0};
  std::vector<std::int32_t> index_columns{0, 1, 3};
  std::int32_t InsertSerial = 0;  // "文件名前面插入序号"
  std::string SerialPrefix;       // "前  缀"
  std::int32_t SerialStart = 1;   // "起始序号"
  std::string SerialSuffix = "_";  // "序号后缀"
  std::int32_t SerialDigits = 2;  // "序号位数"
  // "图框信息自动按录入范围居中布置" for A to F.
  std::array<std::int32_t, 6> CentreInArea{};
  std::string DefaultNameRule = "A_B_T_C";
  std::string TitleSeparator = "+";  // "多图名间字符设置"
  std::int32_t PaperNameStyle = 0;   // how lengthened paper names are written, 0 to 6
  std::int32_t reserved_int = 0;
};

// The process-wide library, alive from load to unload.
TK_Library& GlobalTkLibrary();

// The definition of a block name, compared with regard to case; null when none.
TK_Customization* FindDefinition(const TK_Library& library, const std::string& blockName);

// Removes and deletes every definition, and empties the index's column widths and columns.
void ClearLibrary(TK_Library& library);

// ---- the tk file ----------------------------------------------------------------------------------

// The per-user library file, DataFolder()/BPlot_TK.tk.
std::string DefaultTkPath();

// Without `askUser` replaces the library by the default file; with it, a file the user chooses is
// merged in (after asking whether the current definitions stay). A file that cannot be opened, or
// a cancelled dialog or question, leaves the library as it was: false.
bool LoadTkFile(TK_Library& library, bool askUser);
// The same from a known file; `askMerge` as `askUser` above.
bool LoadTkFileFrom(TK_Library& library, const std::string& path, bool askMerge);

// Asks "原图框信息是否保留 ？" when the library holds definitions: true to keep them (and true
// without asking when there are none), nullopt when the question got no answer.
std::optional<bool> AskKeepDefinitions(const TK_Library& library);
// Reads a file into the library without asking: with `replace` the library is emptied first,
// else the file's definitions are merged in. False when the file cannot be opened.
bool ReadTkFileInto(TK_Library& library, const std::string& path, bool replace);

// Writes the library to the default file, or with `askUser` to a file the user chooses, under the
// file's lock. False when cancelled or when the file does not hold the library afterwards; with
// `reportFailure` the latter is shown.
bool SaveTkFile(const TK_Library& library, bool reportFailure, bool askUser);
bool SaveTkFileTo(const TK_Library& library, const std::string& path, bool reportFailure);

// A change to the user's library file that no other run can come between: under the file's
// lock the library is read again from the file (when there is one), `change` is made to it and
// the file saved. False when the lock can't be had, `change` declines or the save fails.
bool UpdateTkFile(TK_Library& library, const std::function<bool(TK_Library&)>& change, bool reportFailure);

// Saves the five numbering values alone: the rest of the default file stays as it is on disk.
bool SaveTkNamingOnly(TK_Library& library);

// What a file looks like before it is merged: its version and definitions, and whether it is a
// whole library (a date for a version, no count below zero, every value there). nullopt when the
// file cannot be opened.
struct TkFileFacts {
  std::int32_t version = 0;
  std::int32_t definitionCount = 0;
  bool complete = false;
};
std::optional<TkFileFacts> InspectTkFile(const std::string& path);

// ---- capture -------------------------------------------------------------------------------------

// Asks for one insert and fills `definition`'s block name, dynamic flag, rotation, scale, frame
// extents, pick centre and paper from it. False, with the reason shown, when nothing was picked or
// its extents are void.
bool PickFrameBlock(TK_Customization& definition);

}  // namespace tv::titleblock
