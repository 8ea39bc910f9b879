#pragma once
// Watching the documents and the editor: the editor reactor, the document tracker with its
// document reactor, the key watcher and the input monitor of the current document.
#include <cstdint>
#include <memory>
#include <string_view>

#include "host/object_id.h"

namespace tv::host {

class MyAcEditorReactor {};

// The documents the module has seen, each with its database reactor.
class DocTracker {
 public:
  DocTracker();
  ~DocTracker();
  // Makes the current document the tracked one.
  void enterCurrentDocument();
  int documentCount() const { return documents_; }

 private:
  int documents_ = 0;
};

// Adds the input monitor to the current document when it isn't there yet; DetachMonitor removes it.
void AttachMonitor();
void DetachMonitor();
bool MonitorAttached();

// The list whose row a plot preview shows (0 none, 1 generic, 2 title-block, 3 paper batch) and
// that row; keys of the preview may move PreviewIndex to a neighbouring row.
extern std::int32_t reviewKind;
extern std::int32_t PreviewIndex;

// The database reactor's notice that an entity of class `className` (empty for the host's own
// classes) was erased. A sheet marker erased by the user, not by the system, takes its row out of
// the open review list.
void ObjectErased(ObjectId id, std::string_view className);

// Registered with the host's message watcher.
void KeyWatcher(int message);

}  // namespace tv::host
