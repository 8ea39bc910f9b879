#include "host/doc_state.h"

#include "plot/marker_reactor.h"
#include "recognition/plot_marker.h"
#include "recognition/sheet_records.h"

namespace tv::host {

std::int32_t reviewKind = 0;
std::int32_t PreviewIndex = -1;

namespace {
bool g_monitorAttached = false;
}  // namespace

DocTracker::DocTracker() = default;
DocTracker::~DocTracker() = default;

void DocTracker::enterCurrentDocument() {
  // One console session holds one document; the tracker knows it once.
  if (documents_ == 0) documents_ = 1;
}

void AttachMonitor() { g_monitorAttached = true; }
void DetachMonitor() { g_monitorAttached = false; }
bool MonitorAttached() { return g_monitorAttached; }

void ObjectErased(ObjectId id, std::string_view className) {
  if (!recognition::listenForErase || className != recognition::kPlotRecClassName) return;
  plot::RemoveRowOfMarker(id);
}

void KeyWatcher(int) {}

}  // namespace tv::host
