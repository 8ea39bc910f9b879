#include "host/doc_state.h"

#include <algorithm>

#include "host/cad_binding.h"
#include "host/editor.h"
#include "host/menu.h"
#include "plot/marker_reactor.h"
#include "recognition/plot_marker.h"
#include "recognition/sheet_records.h"

namespace tv::host {

bool menuLost = false;
bool badgeOn = false;
std::string badgeText;
DocumentRef monitoredDocument;
bool recordAppended = false;
ObjectIdArray appendedIds;
std::int32_t reviewKind = 0;
std::int32_t PreviewIndex = -1;
bool singlePlotWaiting = false;
std::int32_t singlePlotMode = 0;
bool frameSettingKey = false;
std::int32_t jigMode1 = 0, jigMode2 = 0;
bool jigActive1 = false, jigActive2 = false;

namespace {

DocTracker* g_tracker = nullptr;
MyAcEditorReactor* g_editorReactor = nullptr;

bool EqualsNoCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) {
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
    return upper(x) == upper(y);
  });
}

}  // namespace

DocumentRef CurrentDocument() {
  DocumentRef doc;
  doc.key = WorkingDatabase();
  if (doc.key && HasEditor()) doc.fileName = CurrentEditor().documentPath();
  return doc;
}

// ---- editor reactor ---------------------------------------------------------------------------------

MyAcEditorReactor::MyAcEditorReactor() { g_editorReactor = this; }
MyAcEditorReactor::~MyAcEditorReactor() {
  if (g_editorReactor == this) g_editorReactor = nullptr;
}

void MyAcEditorReactor::commandEnded(std::string_view name) {
  static constexpr std::string_view kMenuCommands[] = {"OPTIONS", "CUI", "MENU", "MENUBAR", "WSCURRENT"};
  const bool menuCommand = std::ranges::any_of(kMenuCommands, [&](std::string_view c) { return EqualsNoCase(c, name); });
  if (!menuCommand && !menuLost) return;
  BuildMenu();
  menuLost = false;
}

void MyAcEditorReactor::sysVarChanged(std::string_view name) {
  if (EqualsNoCase(name, "MENUBAR") || EqualsNoCase(name, "WSCURRENT")) menuLost = true;
}

// ---- database reactor -------------------------------------------------------------------------------

void MyDbReactor::objectAppended(ObjectId id, bool isEntity) {
  if (recordAppended && isEntity) appendedIds.push_back(id);
}

void MyDbReactor::objectErased(ObjectId id, std::string_view className, bool erased) {
  // The system takes listenForErase down while it deletes a marker itself; un-erasing changes nothing.
  if (!erased || !recognition::listenForErase || className != recognition::kPlotRecClassName) return;
  plot::RemoveRowOfMarker(id);
}

// ---- documents ----------------------------------------------------------------------------------------

void MyDocReactor::documentCreated(const DocumentRef& document) {
  tracker_.TrackDocument(document);
  AttachMonitor();
}

void MyDocReactor::documentToBeDestroyed(const DocumentRef& document) {
  tracker_.ForgetDocument(document);
  if (monitoredDocument == document) monitoredDocument = {};
  if (lastDocument == document) lastDocument = {};
}

void MyDocReactor::documentToBeActivated(const DocumentRef* document) {
  if (!document || !document->key) return;
  if (!(*document == lastDocument)) {
    tracker_.TrackDocument(*document);
    lastDocument = *document;
  }
  AttachMonitor();
}

DocTracker::DocTracker() : reactor_(std::make_unique<MyDocReactor>(*this)) { g_tracker = this; }

DocTracker::~DocTracker() {
  if (g_tracker == this) g_tracker = nullptr;
  // The document reactor first, then the nodes with their database reactors, without deep recursion.
  reactor_.reset();
  current_ = nullptr;
  while (head_) head_ = std::move(head_->next);
}

DocNode* DocTracker::nodeOf(const DocumentRef& document) const {
  for (DocNode* n = head_.get(); n; n = n->next.get())
    if (n->document == document) return n;
  return nullptr;
}

void DocTracker::TrackDocument(const DocumentRef& document) {
  if (!document.key) return;
  if (DocNode* known = nodeOf(document)) {
    current_ = known;
    return;
  }
  auto node = std::make_unique<DocNode>();
  node->document = document;
  node->reactor = std::make_unique<MyDbReactor>();
  std::unique_ptr<DocNode>* tail = &head_;
  while (*tail) tail = &(*tail)->next;
  *tail = std::move(node);
  current_ = tail->get();
}

void DocTracker::ForgetDocument(const DocumentRef& document) {
  for (std::unique_ptr<DocNode>* link = &head_; *link; link = &(*link)->next) {
    if (!((*link)->document == document)) continue;
    const bool wasCurrent = link->get() == current_;
    *link = std::move((*link)->next);
    if (wasCurrent) current_ = head_.get();
    return;
  }
}

void DocTracker::enterCurrentDocument() { TrackDocument(CurrentDocument()); }

int DocTracker::documentCount() const {
  int count = 0;
  for (const DocNode* n = head_.get(); n; n = n->next.get()) ++count;
  return count;
}

DocTracker* LiveDocTracker() { return g_tracker; }
MyAcEditorReactor* LiveEditorReactor() { return g_editorReactor; }

// ---- monitor and badge ----------------------------------------------------------------------------

void AttachMonitor() {
  const DocumentRef current = CurrentDocument();
  if (!current.key || current == monitoredDocument) return;
  monitoredDocument = current;
}

void DetachMonitor() {
  if (monitoredDocument.key && monitoredDocument == CurrentDocument()) monitoredDocument = {};
}

bool MonitorAttached() { return monitoredDocument.key != nullptr; }

BadgeScope::BadgeScope(std::string text) : keptOn_(badgeOn), keptText_(std::move(badgeText)) {
  badgeOn = true;
  badgeText = std::move(text);
}

BadgeScope::~BadgeScope() {
  badgeOn = keptOn_;
  badgeText = std::move(keptText_);
}

std::string BadgePrefix() { return badgeOn && !badgeText.empty() ? "[" + badgeText + "] " : std::string(); }

// ---- notices ------------------------------------------------------------------------------------------

void DocumentCreated(const DocumentRef& document) {
  if (g_tracker) g_tracker->reactor().documentCreated(document);
}

void DocumentToBeDestroyed(const DocumentRef& document) {
  if (g_tracker) g_tracker->reactor().documentToBeDestroyed(document);
}

void DocumentToBeActivated(const DocumentRef& document) {
  if (g_tracker) g_tracker->reactor().documentToBeActivated(&document);
}

void CommandEnded(std::string_view name) {
  if (g_editorReactor) g_editorReactor->commandEnded(name);
}

void SystemVariableChanged(std::string_view name) {
  if (g_editorReactor) g_editorReactor->sysVarChanged(name);
}

void ObjectAppended(ObjectId id) {
  if (!g_tracker) return;
  if (DocNode* node = g_tracker->nodeOf(CurrentDocument())) node->reactor->objectAppended(id, true);
}

void ObjectErased(ObjectId id, std::string_view className) {
  if (!g_tracker) return;
  if (DocNode* node = g_tracker->nodeOf(CurrentDocument())) node->reactor->objectErased(id, className, true);
}

}  // namespace tv::host
