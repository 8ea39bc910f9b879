#pragma once
// The one check of a title-block library file that a command is about to read (`tk import`,
// `titleblock --tk`): a file cut short or one that is no library at all is refused, never read as
// zeros and empty names.
#include <optional>
#include <string>

namespace tv::cli {

// Why the file can't be taken (for exit code 2), or nullopt when it is a whole library.
std::optional<std::string> TkFileRefusal(const std::string& path);

// The `--tk FILE` of the commands that read the drawing's title blocks: the file checked, then
// read into the global library in place of what it held. Why it can't be taken, or nullopt.
std::optional<std::string> ReadTkOption(const std::string& path);

}  // namespace tv::cli
