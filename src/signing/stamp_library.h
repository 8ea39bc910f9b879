#pragma once
// The stamp library: pictures of seals with their printed size, kind and validity, kept with the
// image bytes themselves in one binary tvlib2 file (Stamp.tvlib2 in the data folder by default).
#include <cstdint>
#include <optional>
#include <memory>
#include <string>
#include <vector>

#include "signing/library_codes.h"

namespace tv::signing {

// Kinds of stamp, as the stamp form names them.
inline constexpr const char* kStampKindNames[] = {"注册章", "出图章", "项目章", "竣工章", "不分类"};

struct TV_Stamp {
  std::int32_t image_size = 0;  // byte count of `image`
  std::string image;            // the bytes of the picture file, unchanged
  std::string name;             // the key in the library
  double width = 62.0;          // printed size, millimetres
  double height = 28.0;
  std::int32_t auth_code = 0;   // "授权码": 0 to 999999, 0 when none is needed
  std::int32_t valid_until = 20250212;  // "有效期": last valid day, yyyymmdd
  std::int32_t stamp_kind = 0;  // index into kStampKindNames
  std::int32_t enabled = 1;
};

struct StampLibrary {
  std::int32_t library_number = 0;  // carried through the file unchanged
  std::vector<std::unique_ptr<TV_Stamp>> stamps;
};

// The process-wide library, alive from load to unload.
StampLibrary& GlobalStampLibrary();

// Reads a tvlib2 file as LoadSignLibrary reads its file, with the question "原印章库信息是否保留 ？";
// a record whose name the library holds already is dropped.
bool LoadStampLibrary(StampLibrary& library, const std::string& path, bool askMerge);
// Reads a file into the library without asking: with `replace` the library is emptied first.
// False, and nothing changed, when the file can't be opened.
bool ReadStampFileInto(StampLibrary& library, const std::string& path, bool replace);
// The question of a merge: true to keep the records, also without asking when there are none;
// nullopt when it got no answer.
std::optional<bool> AskKeepStamps(const StampLibrary& library);
// Sorts the library by name and writes it, reporting nothing; false when the file doesn't hold
// the library afterwards.
bool SaveStampLibrary(StampLibrary& library, const std::string& path);
void ClearStampLibrary(StampLibrary& library);
// The first stamp named exactly `name`, or null.
TV_Stamp* FindStampByName(const StampLibrary& library, const std::string& name);
void SortStampsByName(StampLibrary& library);

// The file's bytes as the writer composes them (the order of the library as it stands).
std::string ComposeStampLibrary(const StampLibrary& library);
// What the file holds, read into a scratch library; nullopt when it can't be opened.
std::optional<LibraryFileFacts> InspectStampLibraryFile(const std::string& path);

// Fills the stamp's image with the bytes of a file; false for a missing or empty file.
bool LoadStampImage(TV_Stamp& stamp, const std::string& path);
// Writes the image to a file byte by byte; false, and nothing written, when there is none.
bool SaveStampImage(const TV_Stamp& stamp, const std::string& path);

}  // namespace tv::signing
