#pragma once
// A file of this process in the temporary folder, for readers that only take a path.
#include <string>
#include <string_view>

namespace tv::fuzz {

// The path of the process's scratch file `name` (one per name), filled with `bytes`. Empty when
// it cannot be written.
std::string WriteScratchFile(std::string_view name, std::string_view bytes);

}  // namespace tv::fuzz
