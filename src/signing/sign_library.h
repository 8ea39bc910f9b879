#pragma once
// The signature library: people's hand-drawn names as closed outlines, kept in a tvlib1 text file
// (Sign.tvlib1 in the data folder by default, or the file the settings name).
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "signing/library_codes.h"

namespace tv::signing {

// One closed outline; the edge from the last vertex back to the first is implied.
struct MyShape {
  std::int32_t is_outer = 1;  // 0 for a hole
  std::vector<double> xs;     // relative to the signature's centre, drawing units
  std::vector<double> ys;     // as many as xs
};

struct TV_Sign {
  std::vector<std::unique_ptr<MyShape>> shapes;
  double width = 1.0;   // of the outlines' extents
  double height = 1.0;
  std::int32_t person_id = 0;  // "人员编号": the key in the library
  std::string person_name;     // "人员姓名"
  std::int32_t auth_code = 0;  // "授权码": 0 to 999999, 0 when no approval is needed
  std::int32_t reserved_a = 0, reserved_b = 0, reserved_c = 0;
  std::int32_t enabled = 1;  // 0 keeps it from being offered for insertion
  std::optional<std::int32_t> days_granted;  // chosen in the approval form; never stored
};

struct SignLibrary {
  std::int32_t library_number = 0;  // carried through the file unchanged
  std::vector<std::unique_ptr<TV_Sign>> signs;
};

// The process-wide library, alive from load to unload.
SignLibrary& GlobalSignLibrary();

// Reads a tvlib1 file. Without `askMerge` the library is emptied first; with it, a library that
// holds records asks "原签名库信息是否保留 ？" and is emptied on No. Records whose person_id the
// library holds already are dropped, so the record held wins. A file that can't be opened leaves
// the library as the question left it: false. False too, and nothing changed, when the question
// got no answer. A file cut short is read to its end, the missing values as zeros.
bool LoadSignLibrary(SignLibrary& library, const std::string& path, bool askMerge);
// Reads a file into the library without asking: with `replace` the library is emptied first.
// False, and nothing changed, when the file can't be opened.
bool ReadSignFileInto(SignLibrary& library, const std::string& path, bool replace);
// The question of a merge: true to keep the records, also without asking when there are none;
// nullopt when it got no answer.
std::optional<bool> AskKeepSigns(const SignLibrary& library);
// Sorts the library by name and writes it; the file is read back, and when it doesn't hold the
// library "文件 < path > 写入操作有误!…" is shown (with `reportFailure`) and false returned.
bool SaveSignLibrary(SignLibrary& library, const std::string& path, bool reportFailure = true);
// Deletes every record; library_number stays.
void ClearSignLibrary(SignLibrary& library);
// The first record of `personId`, or null.
TV_Sign* FindSignById(const SignLibrary& library, std::int32_t personId);
void SortSignsByName(SignLibrary& library);

// The file's text as the writer composes it (the order of the library as it stands).
std::string ComposeSignLibrary(const SignLibrary& library);
// What the file holds, read into a scratch library; nullopt when it can't be opened.
std::optional<LibraryFileFacts> InspectSignLibraryFile(const std::string& path);

// A person number for a new signature taken at `localTime` ("%Y%m%d%H%M%S" without century and
// year: day, hour, minute, second), raised by one until no record of the library has it.
std::int32_t NewPersonId(const SignLibrary& library, const std::string& localTime);

}  // namespace tv::signing
