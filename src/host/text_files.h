#pragma once
// The system's own text files (configuration, title-block library): bytes in the ANSI code page on
// disk, so that they travel to and from installations on Chinese Windows; UTF-8 in the program.
#include <cstdint>
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

// Writes `utf8Text` in the code page. The text goes to a temporary file beside the target, which
// then replaces it, so the old file survives any failure. Characters the code page lacks become
// '?'. False when anything fails; the target is then untouched.
bool WriteTextFileReplacing(const std::string& path, const std::string& utf8Text);

// The modification time in whole seconds; nullopt when the file does not exist.
std::optional<std::int64_t> FileModifiedSecond(const std::string& path);

}  // namespace tv::host
