#include "reports/drawn_index.h"

#include <numeric>
#include <string>

#include "host/drawn_table.h"
#include "host/editor.h"
#include "host/wrappers.h"
#include "paper/paper.h"
#include "reports/file_list.h"
#include "titleblock/file_naming.h"
#include "titleblock/tk_library.h"

namespace tv::reports {

namespace {

bool ShowsTitle(const titleblock::TK_Library& library) {
  for (std::int32_t code : library.index_columns)
    if (code == 3) return true;
  return false;
}

std::int32_t RowLines(const ReportRow& row, bool showsTitle) {
  return showsTitle ? std::max<std::int32_t>(1, static_cast<std::int32_t>(TitlePieces(row.fields[2]).size())) : 1;
}

std::string PaperCell(const ReportRow& row) {
  std::string name = row.paperName;
  if (name.empty()) return name;
  paper::RenderPaperName(name);
  // "∕" (U+2215) reads as "/" in a drawing's fonts.
  for (std::size_t at; (at = name.find("\xE2\x88\x95")) != std::string::npos;) name.replace(at, 3, "/");
  return name;
}

std::string CellText(std::int32_t code, const ReportRow& row, std::int32_t index, const titleblock::TK_Library& library) {
  switch (code) {
    case 0: return titleblock::SerialText(library.SerialStart + index, library.SerialDigits);
    case 7: return PaperCell(row);
    case 8: return ReportScaleText(row.scale);
    default: return code >= 1 && code <= 6 ? row.fields[static_cast<std::size_t>(code - 1)] : std::string();
  }
}

}  // namespace

std::int32_t IndexLineCount(const std::vector<ReportRow>& rows, const titleblock::TK_Library& library) {
  const bool showsTitle = ShowsTitle(library);
  std::int32_t lines = 0;
  for (const ReportRow& row : rows) lines += RowLines(row, showsTitle);
  return lines;
}

void DrawIndex(const std::vector<ReportRow>& rows, const titleblock::TK_Library& library, Point3d origin) {
  const titleblock::TK_IndexStyle& look = library.index_style;
  const double h = library.index_row_height;
  const ObjectId style = host::FindOrAddTextStyle(
      {look.style_name, look.font_file, look.bigfont_file, look.style_text_size, look.style_x_scale, look.is_shape_file != 0});
  bool existed = false;
  const ObjectId layer = host::FindOrAddLayer(look.layer, &existed);
  if (!existed) host::SetLayerLook(layer, look.layer_color, look.layer_linetype, look.layer_lineweight);
  const ObjectId frameLayer = host::FindOrAddLayer("Defpoints");
  const auto widthOf = [&](std::size_t column) {
    return column < library.index_col_widths.size() ? library.index_col_widths[column] : 0.0;
  };
  const auto put = [&](double x, double y, host::TextPlacement placement, std::string text) {
    if (text.empty()) return;
    host::AppendToSpace(
        host::NewPlacedText({x, y, origin.z}, placement, look.text_height, look.width_factor, style, std::move(text)),
        look.color, layer);
  };

  const bool showsTitle = ShowsTitle(library);
  std::int32_t line = 1;  // the row's first line, from 1
  for (std::size_t r = 0; r < rows.size(); ++r) {
    const ReportRow& row = rows[r];
    const double y = origin.y - (line - 0.5) * h;
    double x = origin.x;
    for (std::size_t c = 0; c < library.index_columns.size(); ++c) {
      const std::int32_t code = library.index_columns[c];
      const double width = widthOf(c);
      if (code == 3) {
        std::int32_t piece = 0;
        for (std::string& text : TitlePieces(row.fields[2]))
          put(x + h / 3, y - h * piece++, host::TextPlacement::LeftMiddle, std::move(text));
      } else {
        put(x + width / 2, y, host::TextPlacement::MiddleCentre, CellText(code, row, static_cast<std::int32_t>(r), library));
      }
      x += width;
    }
    line += RowLines(row, showsTitle);
  }

  if (library.index_draw_frame == 0) return;
  const std::int32_t lines = line - 1;
  double total = 0;
  for (std::size_t c = 0; c < library.index_columns.size(); ++c) total += widthOf(c);
  for (std::int32_t k = 0; k <= lines; ++k) {
    const double y = origin.y - k * h;
    host::AppendToSpace(host::NewLine({origin.x, y, origin.z}, {origin.x + total, y, origin.z}), 256, frameLayer);
  }
  double x = origin.x;
  for (std::size_t c = 0; c <= library.index_columns.size(); ++c) {
    host::AppendToSpace(host::NewLine({x, origin.y, origin.z}, {x, origin.y - lines * h, origin.z}), 256, frameLayer);
    x += widthOf(c);
  }
}

bool DrawIndexFromList(const plot::Dlg_BPlot2& form) {
  const titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  host::Editor& editor = host::CurrentEditor();
  if (library.index_columns.empty()) {
    editor.messageBox(kEmptyIndexMessage, "Tarvex打印", host::MessageButtons::Ok);
    return false;
  }
  Point3d picked;
  if (editor.getPoint("\n选择插入点：", nullptr, picked) != host::RTNORM) return false;
  DrawIndex(RowsOfTitleList(form), library, host::Trans(picked, 1, 0));
  return true;
}

}  // namespace tv::reports
