#include "plot/row_preview.h"

#include "host/editor.h"

namespace tv::plot {

bool PreviewRow(Dlg_BPlot1&, std::size_t) {
  host::Print("\n预览尚未提供");
  return false;
}

bool PreviewRow(Dlg_BPlot2&, std::size_t) {
  host::Print("\n预览尚未提供");
  return false;
}

}  // namespace tv::plot
