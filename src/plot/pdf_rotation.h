#pragma once
// The page rotation of a plotted sheet PDF, which the plot engine itself can't turn.
#include <string>

namespace tv::plot {

// Gives the sheet's page the rotation "/Rotate 90" when `angle` is 90, otherwise "/Rotate 270".
// A file of 20 bytes or less, or one that isn't a readable PDF, stays as it is (false).
bool RotatePdf(const std::string& path, int angle);

}  // namespace tv::plot
