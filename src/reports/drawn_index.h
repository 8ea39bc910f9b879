#pragma once
// The drawing index drawn into the drawing as texts and lines, its top left corner where the user
// points, in the look of the title-block library.
#include <cstdint>
#include <vector>

#include "host/geometry.h"
#include "reports/report_rows.h"

namespace tv::titleblock {
struct TK_Library;
}

namespace tv::reports {

// Lines the table takes: one per row, or one per title piece when the title column is shown.
std::int32_t IndexLineCount(const std::vector<ReportRow>& rows, const titleblock::TK_Library& library);
// Draws the table with its top left corner at `origin` (world coordinates) into the current space.
void DrawIndex(const std::vector<ReportRow>& rows, const titleblock::TK_Library& library, Point3d origin);
// The review list's button: the check of the columns, the point asked ("选择插入点："), the table
// drawn. False when nothing was drawn.
bool DrawIndexFromList(const plot::Dlg_BPlot2& form);

}  // namespace tv::reports
