#pragma once
// Watching the documents and the editor: the editor reactor, the document tracker with its
// document reactor and a database reactor per document, the key watcher and the input monitor of
// the current document. The platform reports its events through the notices at the end; they
// reach the reactors only while the module is loaded.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/object_id.h"

namespace tv::host {

// A document of the host: known by its drawing, named by its file.
struct DocumentRef {
  const void* key = nullptr;
  std::string fileName;
  bool operator==(const DocumentRef& other) const { return key == other.key; }
};
// The document whose drawing is the working one; a null key when there is none.
DocumentRef CurrentDocument();

class MyAcEditorReactor {
 public:
  MyAcEditorReactor();
  ~MyAcEditorReactor();
  MyAcEditorReactor(const MyAcEditorReactor&) = delete;
  MyAcEditorReactor& operator=(const MyAcEditorReactor&) = delete;
  // The workspace's own commands throw the menu away; it is built again when they end.
  void commandEnded(std::string_view name);
  void sysVarChanged(std::string_view name);
};

// The database reactor of one document.
class MyDbReactor {
 public:
  void objectAppended(ObjectId id, bool isEntity);
  // `className`: the class of the erased object, empty for the host's own classes.
  void objectErased(ObjectId id, std::string_view className, bool erased);
};

struct DocNode {
  DocumentRef document;
  std::unique_ptr<MyDbReactor> reactor;
  std::unique_ptr<DocNode> next;
};

class DocTracker;

class MyDocReactor {
 public:
  explicit MyDocReactor(DocTracker& tracker) : tracker_(tracker) {}
  void documentCreated(const DocumentRef& document);
  void documentToBeDestroyed(const DocumentRef& document);
  // A null document is ignored.
  void documentToBeActivated(const DocumentRef* document);
  DocumentRef lastDocument;

 private:
  DocTracker& tracker_;
};

// The documents the module has seen, each with its database reactor, in the order they came.
class DocTracker {
 public:
  DocTracker();
  ~DocTracker();
  DocTracker(const DocTracker&) = delete;
  DocTracker& operator=(const DocTracker&) = delete;

  // The document's node becomes current; a document not yet known gets a node at the end.
  void TrackDocument(const DocumentRef& document);
  // Unlinks the document's node; `current` falls back to the head when it was that node.
  void ForgetDocument(const DocumentRef& document);
  // Tracks the working drawing's document.
  void enterCurrentDocument();

  int documentCount() const;
  const DocNode* head() const { return head_.get(); }
  const DocNode* current() const { return current_; }
  DocNode* nodeOf(const DocumentRef& document) const;
  MyDocReactor& reactor() { return *reactor_; }

 private:
  std::unique_ptr<DocNode> head_;
  DocNode* current_ = nullptr;
  std::unique_ptr<MyDocReactor> reactor_;
};

// The tracker and editor reactor of the loaded module; nullptr when there is none.
DocTracker* LiveDocTracker();
MyAcEditorReactor* LiveEditorReactor();

// ---- state of this part ---------------------------------------------------------------------------
// MENUBAR or WSCURRENT changed: the menu is built again when the command ends.
extern bool menuLost;
// The badge beside the cursor and its caption; a console shows it ahead of each prompt.
extern bool badgeOn;
extern std::string badgeText;
// The document with the input monitor; a null key when none.
extern DocumentRef monitoredDocument;
// While set, entities appended to the drawing are noted in appendedIds.
extern bool recordAppended;
extern ObjectIdArray appendedIds;
// The list whose row a plot preview shows (0 none, 1 generic, 2 title-block, 3 paper batch) and
// that row; keys of the preview may move PreviewIndex to a neighbouring row.
extern std::int32_t reviewKind;
extern std::int32_t PreviewIndex;
// The single plot's prompt is on, and its mode: 0 corner points, 1 entities.
extern bool singlePlotWaiting;
extern std::int32_t singlePlotMode;
// A prompt offers "按S键设置".
extern bool frameSettingKey;
// Tab-cycled modes (0, 1, 2) of the two frame jigs, while each is active.
extern std::int32_t jigMode1, jigMode2;
extern bool jigActive1, jigActive2;

// Shows the badge with `text` for the life of the scope.
class BadgeScope {
 public:
  explicit BadgeScope(std::string text);
  ~BadgeScope();
  BadgeScope(const BadgeScope&) = delete;
  BadgeScope& operator=(const BadgeScope&) = delete;

 private:
  bool keptOn_;
  std::string keptText_;
};
// What a console prints ahead of a prompt in place of the badge: "[caption] ", or empty.
std::string BadgePrefix();

// Adds the input monitor to the current document when it isn't there yet; DetachMonitor removes it.
void AttachMonitor();
void DetachMonitor();
bool MonitorAttached();

// ---- notices of the platform ------------------------------------------------------------------------
void DocumentCreated(const DocumentRef& document);
void DocumentToBeDestroyed(const DocumentRef& document);
void DocumentToBeActivated(const DocumentRef& document);
void CommandEnded(std::string_view name);
void SystemVariableChanged(std::string_view name);
// An entity was appended to the working drawing.
void ObjectAppended(ObjectId id);
// An entity of class `className` (empty for the host's own classes) was erased from the working
// drawing. A sheet marker erased by the user, not by the system, takes its row out of the open
// review list.
void ObjectErased(ObjectId id, std::string_view className);

// ---- keys -------------------------------------------------------------------------------------------
inline constexpr int WM_KEYDOWN = 256;
// What the key watcher did with a key; keys always pass on to the host as well.
enum class KeyAction {
  None,
  FrameSettings,       // the frame settings form was opened
  SinglePlotSettings,  // the single plot's settings form was opened
  SinglePlotMode,      // the single plot's mode was toggled and its prompt restarted
  JigMode,             // a frame jig's mode moved on
  PreviewPrevious,     // the preview moves a row up
  PreviewNext,         // the preview moves a row down
};
// The forms some keys open; the subsystems that own them set these.
extern void (*frameSettingForm)();
extern void (*singlePlotSettingForm)();
// Registered with the host's message watcher: the tests stand in their order of precedence.
KeyAction KeyWatcher(int message, int keyCode);

}  // namespace tv::host
