#include "settings/shared_files.h"

#include <map>
#include <mutex>

#include "host/file_lock.h"
#include "host/text_files.h"
#include "settings/checked_write.h"

namespace tv::settings {

namespace {

struct ReadNote {
  std::optional<std::string> bytes;
  std::string text;
};

struct Notes {
  std::mutex mutex;
  std::map<std::string, ReadNote> byPath;
};

Notes& AllNotes() {
  static Notes notes;
  return notes;
}

std::optional<ReadNote> NoteOf(const std::string& path) {
  Notes& notes = AllNotes();
  std::lock_guard<std::mutex> guard(notes.mutex);
  const auto it = notes.byPath.find(path);
  if (it == notes.byPath.end()) return std::nullopt;
  return it->second;
}

}  // namespace

void NoteFileAsRead(const std::string& path, std::optional<std::string> bytes, std::string text) {
  Notes& notes = AllNotes();
  std::lock_guard<std::mutex> guard(notes.mutex);
  notes.byPath[path] = ReadNote{std::move(bytes), std::move(text)};
}

bool SaveSharedFile(const std::string& path, const std::string& utf8Text, bool reportFailure) {
  host::FileLock lock(path);
  if (!lock.held()) {
    if (reportFailure) ReportWriteFailure(path);
    return false;
  }
  if (const std::optional<ReadNote> note = NoteOf(path); note && note->text == utf8Text) {
    std::optional<std::string> now = host::ReadFileBytes(path);
    if (now && now != note->bytes) return true;  // another run's newer file
  }
  if (!WriteTextFileChecked(path, utf8Text, reportFailure)) return false;
  NoteFileAsRead(path, host::TextFileBytes(utf8Text), utf8Text);
  return true;
}

}  // namespace tv::settings
