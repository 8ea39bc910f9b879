#pragma once
// The signature library (tvlib1) and the stamp library (tvlib2).
#include <memory>
#include <string>
#include <vector>

namespace tv::signing {

struct TV_Sign {};
struct TV_Stamp {};

struct SignLibrary {
  std::vector<std::unique_ptr<TV_Sign>> signs;
};
struct StampLibrary {
  std::vector<std::unique_ptr<TV_Stamp>> stamps;
};

// The process-wide libraries, alive from load to unload.
SignLibrary& GlobalSignLibrary();
StampLibrary& GlobalStampLibrary();

// A missing file leaves the library empty; the library formats are not read yet.
bool LoadSignLibrary(SignLibrary& library, const std::string& path, bool askMerge);
bool LoadStampLibrary(StampLibrary& library, const std::string& path, bool askMerge);

}  // namespace tv::signing
