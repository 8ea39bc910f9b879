#include <sstream>
#include <string>
#include <utility>

#include "cad/dxf_reader.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "fuzz/fuzz_targets.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "plot/generic_review.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::fuzz {

// The steps of `tvplot sheets DRAWING --range all`, short of printing the list.
void RunDrawingSheets(std::string_view bytes) {
  cad::DxfReadResult read = cad::ReadDxfFromBytes(std::string(bytes), "fuzz.dxf");
  if (!read.ok()) return;

  std::ostringstream transcript;
  console::SessionOptions options;
  options.out = &transcript;
  console::Session session(std::move(*read.db), "fuzz.dxf", options);
  host::OnLoad();
  const settings::Config userConfig = settings::GlobalConfig();
  const settings::PlotSettingRec drawingSetting = settings::CurrentPlotSetting();
  // Enter at the range prompt, then "布局+模型".
  session.editor().answers().pushFront({"", "3"});
  if (plot::Dlg_BPlot1* form = plot::RecogniseGenericBatch(false, std::nullopt)) {
    plot::BPlot1Cells(*form);
    host::ListLayouts();
  }
  settings::GlobalConfig() = userConfig;
  settings::CurrentPlotSetting() = drawingSetting;
  host::OnUnload();
}

}  // namespace tv::fuzz
