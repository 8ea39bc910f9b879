#pragma once
// The system's own text files (configuration, title-block library): bytes in the ANSI code page on
// disk, so that they travel to and from installations on Chinese Windows; UTF-8 in the program.
#include <optional>
#include <string>
#include <vector>

namespace tv::host {

// The code page of those files: $TARVEX_ANSI_CODEPAGE when set and known, else GBK ("ANSI_936").
std::string AnsiCodePage();

// The whitespace-separated tokens of a file, each converted to UTF-8. A token longer than 511 bytes
// in the code page is cut there, at a character boundary, as the readers' buffers always did.
// nullopt when the file cannot be opened.
std::optional<std::vector<std::string>> ReadTextFileTokens(const std::string& path);

// The file's bytes as they stand on disk; nullopt when it cannot be opened.
std::optional<std::string> ReadFileBytes(const std::string& path);
// The tokens of those bytes, as ReadTextFileTokens gives them.
std::vector<std::string> TextFileTokens(const std::string& bytes);
// Those bytes whole in UTF-8, for files read line by line.
std::string TextFileText(const std::string& bytes);

// Writes `utf8Text` in the code page, under the file's lock (host/file_lock.h). The text goes to
// a temporary file in the same folder, flushed to disk, which then replaces the target: readers
// and a crash see the old file or the new one, never a part. The target keeps its permissions,
// and one the user may not write is left alone. The file is read back afterwards, so "written"
// means its content is the text given. Characters the code page lacks become '?'. False when
// anything fails; the target is then untouched.
bool WriteTextFileReplacing(const std::string& path, const std::string& utf8Text);

// The same for bytes written as they stand (the binary stamp library).
bool WriteFileReplacing(const std::string& path, const std::string& bytes);

// The bytes `utf8Text` becomes on disk; nullopt when it can't be converted.
std::optional<std::string> TextFileBytes(const std::string& utf8Text);

}  // namespace tv::host
