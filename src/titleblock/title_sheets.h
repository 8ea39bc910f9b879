#pragma once
// The sheets of the title-block batch: every insert of a block the library defines is one sheet,
// its rectangle, paper and scale follow from the definition, and its fields, stamp points and
// file name are read off the frame.
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "paper/paper.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {

// What the title-block batch says when the library defines no frame.
inline constexpr std::string_view kEmptyLibraryMessage =
    "图框信息库为空 !\n\n请先在 < 图框信息库管理 > 中进行图框信息录入 !";

// A stamp point that stands for "no position": its stamp has no area in the definition.
inline constexpr Point2d kNoStampPoint{-123.123, 456.456};
inline bool IsNoStampPoint(const Point2d& p) { return p.x == kNoStampPoint.x && p.y == kNoStampPoint.y; }

// One sheet of the title-block batch. Owns its on-screen marker, which goes when the row does.
class Plot_Drawing2 {
 public:
  Plot_Drawing2() = default;
  ~Plot_Drawing2();
  Plot_Drawing2(const Plot_Drawing2&) = delete;
  Plot_Drawing2& operator=(const Plot_Drawing2&) = delete;

  ObjectId insert_id;  // the title-block insert
  ObjectId space_id;   // model space or the layout block that holds it; null for a picked insert
  const TK_Customization* definition = nullptr;  // not owned: a definition of the library
  ObjectId rec_id;     // its Temp_PlotRec
  std::int32_t number = 0;  // place in the list, from 1
  bool portrait = false;    // higher than wide
  // The rectangle, working coordinates.
  double min_x = 0.0, min_y = 0.0, max_x = 0.0, max_y = 0.0;
  double width = 0.0, height = 0.0;
  // Drawing number, revision, title, date, info 1, info 2; the title and the infos may hold
  // line marks.
  std::array<std::string, 6> field_text;
  std::array<ObjectIdArray, 6> field_ids;
  // Register, issue, project and completed stamp: the middles of their areas.
  std::array<Point2d, 4> stamp_point{kNoStampPoint, kNoStampPoint, kNoStampPoint, kNoStampPoint};
  double stamp_rotation = 0.0;
  std::string file_name;
  double scale = 0.0;  // drawing units per paper millimetre; 0 until a paper gave one
};

using TitleSheetList = std::vector<std::unique_ptr<Plot_Drawing2>>;

// The whole analysis: the library checked, the range asked ("自动遍历" on Enter), the spaces
// walked, the rows numbered. `list` is emptied first; it stays empty on cancel.
void ScanTitleBlocks(TitleSheetList& list);
// Appends the sheets of the candidates that are inserts of defined blocks, in `spaceId` (null:
// the current space). Covered sheets are dropped.
void FilterTitleBlocks(TitleSheetList& list, const ObjectIdArray& ids, ObjectId spaceId);
// Rectangle, orientation and marker of a row whose insert and definition are set.
bool SheetFromInsert(Plot_Drawing2& row, ObjectId layerId, ObjectId spaceId);
// The six fields, the stamp points and the file name.
bool ReadSheetFields(Plot_Drawing2& row);
// Paper and scale of a row: from its scale when it has one, else from its definition's paper,
// and the row's scale follows that paper.
bool SheetPaper(Plot_Drawing2& row, paper::MyPaper& paper);
// A dynamic frame's paper grows with the stretched insert.
void DynamicPaperAdjust(const TK_Customization& definition, ObjectId insertId, paper::MyPaper& paper);
// The row's file name by its definition's rule.
void ExpandNameRule(Plot_Drawing2& row);
// Whether the fields its name is made of hold text the drawing's file garbled (see
// HasUnreadableText), which the name shows as "_".
bool NameHasUnreadableText(const Plot_Drawing2& row);

}  // namespace tv::titleblock
