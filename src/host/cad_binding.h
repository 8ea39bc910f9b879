#pragma once
// How this platform's drawing model stands behind the seam. Seen only by the seam's
// implementation and by the console host, never by the logic.
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "cad/database.h"
#include "host/object_id.h"

namespace tv::render {
struct PlotterConfig;
}

namespace tv::host {

// The drawing the seam works on, with the state a CAD editor keeps beside it.
struct WorkingDrawing {
  cad::Database* db = nullptr;
  // The current layout: its paper space is the current space, or model space for "Model".
  ObjectId currentLayout;
  // Told of every entity the seam moves or edits in place, is about to erase, or has appended,
  // so that the host's indexes of the drawing follow it.
  std::function<void(const cad::Entity&)> onEntityChange;
  // Told of every file the system writes itself rather than through the plot (or fails to).
  std::function<void(std::string_view path, bool written, std::string_view why)> onOutputFile;
};

// Tells the working drawing's listener, if any, that `e` changed.
void NoteEntityChange(const cad::Entity& e);

// Installs the working drawing (nullptr detaches it); the current layout starts as the one the
// file was saved with ($TILEMODE 1 = model).
void SetWorkingDatabase(cad::Database* db);
cad::Database* WorkingDatabase();
WorkingDrawing& Working();
// Block table record of the current space; null when no drawing is installed.
ObjectId CurrentSpaceBlockId();

// The system's own entity inside the drawing model, for the platform's draw, plot and fence code;
// nullptr when `e` is of another class.
const class CustomEntity* CustomOf(const cad::Entity& e);
// Draws one of the system's own entities into a recorder.
class PrimitiveRecorder;
void DrawCustom(const cad::Entity& e, PrimitiveRecorder& out);

// A print queue seen as a plot device, for the platform's own plot: the queue's media as plotter
// media, printable within the edges the printer can't reach. Nothing for a name that is a plotter
// configuration file (".pc3") or no queue of the print server.
std::optional<render::PlotterConfig> PrintQueueDevice(const std::string& queue);

}  // namespace tv::host
