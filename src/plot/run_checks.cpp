#include "plot/run_checks.h"

#include "host/editor.h"
#include "plot/plot_job.h"
#include "signing/stamp_library.h"
#include "signing/sign_approval.h"

namespace tv::plot {

namespace {

bool Continue(const char* question) {
  return host::CurrentEditor().messageBox(question, kPlotCaption, host::MessageButtons::YesNo) ==
         host::MessageAnswer::Yes;
}

}  // namespace

bool SignatureCheckPasses(const settings::PlotSettingRec& setting) {
  if (setting.plot_signatures == 0 || setting.format == settings::kFormatDwg) return true;
  if (!signing::AnyUnapprovedSign()) return true;
  return Continue(kUnapprovedSignQuestion);
}

bool StampCheckPasses(const settings::PlotSettingRec& setting, bool& stampsOff) {
  stampsOff = false;
  if (setting.plot_stamps == 0 || setting.format == settings::kFormatPlt || setting.format == settings::kFormatDwg)
    return true;
  if (!signing::GlobalStampLibrary().stamps.empty()) return true;
  if (!Continue(kEmptyStampLibraryQuestion)) return false;
  stampsOff = true;
  return true;
}

}  // namespace tv::plot
