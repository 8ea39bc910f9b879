#pragma once
// `--window X1,Y1 X2,Y2` of `tvplot plot`: one rectangle plotted to one file by the single plot.
#include <optional>
#include <string>
#include <vector>

#include "cli/command_line.h"

namespace tv::cli {

struct PlotWindow {
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

// Reads the window from "--window" and, when the second corner came as its own word, takes that
// word out of `positional`. The message for the user when the window is bad.
std::optional<std::string> ReadWindowOption(const ParsedArgs& args, std::vector<std::string>& positional,
                                            std::optional<PlotWindow>& window);

// The answers of the single plot for the window: the two corners, the file, then Esc.
std::vector<std::string> WindowAnswers(const PlotWindow& window, const std::string& path);

// True when no entity of the current space lies in the window.
bool WindowIsEmpty(const PlotWindow& window);

}  // namespace tv::cli
