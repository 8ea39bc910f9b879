#pragma once
// Watching the documents and the editor: the editor reactor, the document tracker with its
// document reactor, the key watcher and the input monitor of the current document.
#include <memory>

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

// Registered with the host's message watcher.
void KeyWatcher(int message);

}  // namespace tv::host
