#include "host/doc_state.h"

namespace tv::host {

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

void KeyWatcher(int) {}

}  // namespace tv::host
