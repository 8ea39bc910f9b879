#pragma once
// Writing one of the user's text files and finding out whether it was written, saying so when not.
#include <string>

namespace tv::settings {

// "文件 < path > 写入操作有误!" and the reasons and remedies that follow it.
std::string WriteFailureText(const std::string& path);
// Shows that text in an information box.
void ReportWriteFailure(const std::string& path);

// Replaces the file with `utf8Text` (in the ANSI code page; the old file survives a failed
// write) and reads it back. False when the file does not hold the text afterwards; with
// `reportFailure` that is shown.
bool WriteTextFileChecked(const std::string& path, const std::string& utf8Text, bool reportFailure);

}  // namespace tv::settings
