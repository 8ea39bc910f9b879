#include "host/command_bodies.h"

#include <string>

#include "aids/attribute_brush.h"
#include "aids/frame_fit.h"
#include "aids/outer_frame.h"
#include "aids/text_brush.h"
#include "aids/true_color.h"
#include "host/command_prologue.h"
#include "host/command_table.h"
#include "host/editor.h"
#include "host/shortcut_form.h"
#include "plot/old_batch.h"
#include "plot/paper_job.h"
#include "plot/plot_job.h"
#include "plot/single_plot.h"
#include "settings/setting_form.h"
#include "signing/library_forms.h"
#include "signing/sign_approval.h"
#include "signing/sign_placing.h"
#include "titleblock/tk_define_form.h"

namespace tv::host {


void TV_BatchPlot_1() {
  CommandScope scope;
  plot::SinglePlotCommand();
}
void TV_BatchPlot_2() {
  CommandScope scope;
  plot::GenericPlotCommand();
}
void TV_BatchPlot_3() {
  CommandScope scope;
  titleblock::TkDefineCommand();
}
void TV_BatchPlot_4() {
  CommandScope scope;
  plot::TitlePlotCommand();
}
void TV_BatchPlot_5() {
  CommandScope scope;
  plot::PaperPlotCommand();
}
void TV_BatchPlot_6() {
  CommandScope scope;
  signing::SignLibraryCommand();
}
void TV_BatchPlot_7() {
  CommandScope scope;
  signing::SignPlacingCommand();
}
void TV_BatchPlot_8() {
  CommandScope scope;
  signing::SignAuthorisationCommand();
}
// The shortcut form, like the other set-up commands, leaves CMDECHO alone and has no gate.
void TV_BatchPlot_9() { ShortcutCommand(); }
void TV_BatchPlot_13() {
  CommandScope scope;
  signing::StampLibraryCommand();
}
// The settings form leaves CMDECHO alone and has no gate, as the help and the other set-up commands.
void TV_BatchPlot_14() { settings::SettingCommand(); }
void TV_BatchPlot_15() {
  CommandScope scope;
  aids::TextBrushCommand();
}
void TV_BatchPlot_16() {
  CommandScope scope;
  plot::OldPaperBatchCommand();
}
void TV_BatchPlot_17() {
  CommandScope scope;
  aids::OuterFrameCommand();
}
void TV_BatchPlot_18() {
  CommandScope scope;
  aids::FrameFitCommand();
}
void TV_BatchPlot_19() {
  CommandScope scope;
  aids::TrueColorCommand();
}
void TV_BatchPlot_20() {
  CommandScope scope;
  aids::AttributeBrushCommand();
}

// Gets a plotted document of a multi-file run out of the way: closed without a save question.
void singledwg_plot() {
  CommandScope scope;
  Editor& editor = CurrentEditor();
  editor.setModified(false);
  editor.command({"_CLOSE"});
}

// The plot steps below are sent by the review forms and the single plot to themselves; with no
// run waiting they have nothing to do.
void Plot_Temp1() {
  CommandScope scope;
  plot::Plot_Temp1();
}
void Plot_Temp2() {
  CommandScope scope;
  plot::Plot_Temp2();
}
void Plot_Temp3() {
  CommandScope scope;
  plot::Plot_Temp3();
}
void SinglePlot_SelectP() {
  CommandScope scope;
  plot::SinglePlot_SelectP();
}
void SinglePlot_SelectW() {
  CommandScope scope;
  plot::SinglePlot_SelectW();
}
void SinglePlot_Plot_Standby() {
  CommandScope scope;
  plot::SinglePlot_Plot_Standby();
}
void Plot_BaseFun1_Standby() {
  CommandScope scope;
  plot::StandbyGeneric();
}
void Plot_BaseFun2_Standby() {
  CommandScope scope;
  plot::StandbyTitle();
}

}  // namespace tv::host
