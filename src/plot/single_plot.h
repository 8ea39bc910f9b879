#pragma once
// One rectangle at a time to one file: the user picks two corners, the scale and paper are found
// as for a recognised sheet, the file goes where the user says (or into the temporary folder to
// be looked at), and the pick starts again.
#include <string>

#include "host/geometry.h"

namespace tv::plot {

// The command "单张打印到文件": the plot prologue, then the pick loop until the user cancels.
void SinglePlotCommand();

// The pick loops: corners, or the extents of a selection; each hands over to the other on Tab.
void SinglePlot_SelectP();
void SinglePlot_SelectW();

// Plots the rectangle of the two corners (working coordinates). False when nothing came out.
bool RunSinglePlot(const Point3d& first, const Point3d& second);

// The file of one single plot: a throw-away in the temporary folder, or the user's choice.
// False when the user cancelled.
bool ChooseSinglePath(std::string& out);

// The second try of a plot the host didn't finish at once.
void SinglePlot_Plot_Standby();

}  // namespace tv::plot
