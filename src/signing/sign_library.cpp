// The tvlib1 file: text in the ANSI code page, one value a line, read back as whitespace-separated
// tokens. Versions are written and never checked; doubles keep six significant digits.
#include "signing/sign_library.h"

#include <cstdlib>

#include "host/editor.h"
#include "host/text_files.h"
#include "settings/checked_write.h"
#include "settings/value_text.h"

namespace tv::signing {

namespace {

constexpr std::string_view kKeepQuestion = "原签名库信息是否保留 ？";

// A failed read gives 0 or the empty string and every later read fails too, as with a stream.
class SignReader {
 public:
  explicit SignReader(std::vector<std::string> tokens) : values_(std::move(tokens)) {}
  std::int32_t integer() { return values_.integer().value_or(0); }
  double real() { return values_.real().value_or(0.0); }
  std::string text() { return values_.token().value_or(std::string()); }
  bool failed() const { return values_.failed(); }
  bool atEnd() { return !values_.raw(); }

 private:
  settings::ValueReader values_;
};

void ReadShape(SignReader& r, MyShape& shape) {
  r.integer();  // record version
  shape.is_outer = r.integer();
  const std::int32_t n = r.integer();
  // A count the file doesn't back ends with the file.
  for (std::int32_t i = 0; i < n && !r.failed(); ++i) {
    const double x = r.real();
    const double y = r.real();
    shape.xs.push_back(x);
    shape.ys.push_back(y);
  }
}

void ReadSign(SignReader& r, TV_Sign& sign) {
  r.integer();  // record version
  const std::int32_t shapes = r.integer();
  for (std::int32_t i = 0; i < shapes && !r.failed(); ++i) {
    auto shape = std::make_unique<MyShape>();
    ReadShape(r, *shape);
    sign.shapes.push_back(std::move(shape));
  }
  sign.width = r.real();
  sign.height = r.real();
  sign.person_id = r.integer();
  sign.person_name = r.text();
  sign.auth_code = RestoreCode(r.integer());
  sign.reserved_a = r.integer();
  sign.reserved_b = r.integer();
  sign.reserved_c = r.integer();
  sign.enabled = r.integer();
}

// Reads the file's records into the library; true when the file held a whole library.
bool ReadInto(SignLibrary& library, std::vector<std::string> tokens, std::int32_t* version, std::int32_t* count) {
  SignReader r(std::move(tokens));
  const std::int32_t fileVersion = r.integer();
  library.library_number = RestoreCode(r.integer());
  const std::int32_t records = r.integer();
  if (version) *version = fileVersion;
  if (count) *count = records;
  for (std::int32_t i = 0; i < records; ++i) {
    // Once the file has run out every further record reads as the same empty one, which the
    // first of them decides for all.
    const bool exhausted = r.failed();
    auto sign = std::make_unique<TV_Sign>();
    ReadSign(r, *sign);
    if (!FindSignById(library, sign->person_id)) library.signs.push_back(std::move(sign));
    if (exhausted) break;
  }
  const bool whole = !r.failed();
  return whole && r.atEnd() && records >= 0 && settings::IsFileVersion(fileVersion);
}

}  // namespace

SignLibrary& GlobalSignLibrary() {
  static SignLibrary library;
  return library;
}

void ClearSignLibrary(SignLibrary& library) { library.signs.clear(); }

TV_Sign* FindSignById(const SignLibrary& library, std::int32_t personId) {
  for (const auto& s : library.signs)
    if (s->person_id == personId) return s.get();
  return nullptr;
}

void SortSignsByName(SignLibrary& library) {
  SortRecordsByKey(library.signs, [](const TV_Sign& s) -> const std::string& { return s.person_name; });
}

std::optional<bool> AskKeepSigns(const SignLibrary& library) { return AskKeepRecords(kKeepQuestion, library.signs.empty()); }

bool ReadSignFileInto(SignLibrary& library, const std::string& path, bool replace) {
  const std::optional<std::string> bytes = host::ReadFileBytes(path);
  if (!bytes) return false;
  if (replace) ClearSignLibrary(library);
  ReadInto(library, host::TextFileTokens(*bytes), nullptr, nullptr);
  return true;
}

bool LoadSignLibrary(SignLibrary& library, const std::string& path, bool askMerge) {
  bool replace = true;
  if (askMerge) {
    const std::optional<bool> keep = AskKeepSigns(library);
    if (!keep) return false;
    replace = !*keep;
  }
  // A file that can't be opened still leaves the library emptied when it was to be replaced.
  if (replace) ClearSignLibrary(library);
  return ReadSignFileInto(library, path, false);
}

std::string ComposeSignLibrary(const SignLibrary& library) {
  settings::ValueWriter w;
  w.integer(settings::kFileVersion);
  w.integer(StoreCode(library.library_number));
  w.integer(static_cast<std::int64_t>(library.signs.size()));
  for (const auto& sign : library.signs) {
    w.integer(settings::kFileVersion);
    w.integer(static_cast<std::int64_t>(sign->shapes.size()));
    for (const auto& shape : sign->shapes) {
      w.integer(settings::kFileVersion);
      w.integer(shape->is_outer);
      const std::size_t n = std::min(shape->xs.size(), shape->ys.size());
      w.integer(static_cast<std::int64_t>(n));
      for (std::size_t i = 0; i < n; ++i)
        w.raw(settings::FormatReal(shape->xs[i]) + "   " + settings::FormatReal(shape->ys[i]));
    }
    w.real(sign->width);
    w.real(sign->height);
    w.integer(sign->person_id);
    w.token(sign->person_name);
    w.integer(StoreCode(sign->auth_code));
    w.integer(sign->reserved_a);
    w.integer(sign->reserved_b);
    w.integer(sign->reserved_c);
    w.integer(sign->enabled);
  }
  return w.text();
}

bool SaveSignLibrary(SignLibrary& library, const std::string& path, bool reportFailure) {
  SortSignsByName(library);
  // The file is read back after the write: that tells a failed write from a good one more surely
  // than its time stamp.
  const bool written = !path.empty() && host::WriteTextFileReplacing(path, ComposeSignLibrary(library));
  if (!written && reportFailure)
    host::CurrentEditor().messageBox(settings::WriteFailureText(path), "Tarvex", host::MessageButtons::Ok);
  return written;
}

std::optional<LibraryFileFacts> InspectSignLibraryFile(const std::string& path) {
  std::optional<std::vector<std::string>> tokens = host::ReadTextFileTokens(path);
  if (!tokens) return std::nullopt;
  SignLibrary scratch;
  LibraryFileFacts facts;
  facts.complete = ReadInto(scratch, std::move(*tokens), &facts.version, &facts.recordCount);
  return facts;
}

std::int32_t NewPersonId(const SignLibrary& library, const std::string& localTime) {
  const std::string digits = localTime.size() > 6 ? localTime.substr(6) : std::string();
  std::int32_t id = static_cast<std::int32_t>(std::strtol(digits.c_str(), nullptr, 10));
  while (FindSignById(library, id)) ++id;
  return id;
}

}  // namespace tv::signing
