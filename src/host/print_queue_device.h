#pragma once
// A print queue seen as a plot device, for the platform's own plot (src/console): the queue's
// media as plotter media, printable within the edges the printer can't reach. Subsystems go
// through host/layout_plot.h.
#include <optional>
#include <string>

#include "render/plotter_files.h"

namespace tv::host {

// Nothing for a name that is a plotter configuration file (".pc3") or no queue of the server.
std::optional<render::PlotterConfig> PrintQueueDevice(const std::string& queue);

}  // namespace tv::host
