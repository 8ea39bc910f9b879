#pragma once
// The user's files are shared by every run of the program at once. A run that saves what it read,
// unchanged, must not undo what another run wrote to the file in the meantime: the configuration
// is written by every run at its end, mostly as it was read.
#include <optional>
#include <string>

namespace tv::settings {

// Notes what this run read from `path`: the bytes on disk (nullopt when there was no file) and the
// text a save of what was read would write.
void NoteFileAsRead(const std::string& path, std::optional<std::string> bytes, std::string text);

// Saves `utf8Text` to `path` under the file's lock and reads it back (WriteTextFileChecked). When
// the text is the one noted on reading and the file has changed on disk since, the newer file
// stays: nothing is written and the save counts as done.
bool SaveSharedFile(const std::string& path, const std::string& utf8Text, bool reportFailure);

}  // namespace tv::settings
