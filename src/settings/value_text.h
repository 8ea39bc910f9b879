#pragma once
// The text form shared by the system's files (BPlot_Cfg.cfg, BPlot_TK.tk, Tarvex.Ini): one value a
// line, read back as whitespace-separated tokens, doubles with six significant digits, strings as
// tokens. The files themselves are read and written through host/text_files.h.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tv::settings {

inline constexpr std::int32_t kFileVersion = 20240329;

// Versions are dates, yyyymmdd: a file that begins otherwise is none of the system's.
constexpr bool IsFileVersion(std::int64_t version) { return version >= 19000101 && version <= 99991231; }

// Every blank becomes "*?*"; an empty result becomes "<><".
std::string EncodeToken(const std::string& text);
// The reverse: "*?*" becomes a blank, "<><" the empty string.
std::string DecodeToken(const std::string& token);

// Builds the text of a file, one value a line.
class ValueWriter {
 public:
  void integer(std::int64_t value);
  // Six significant digits, as a standard text stream writes them: 12345.7, 1e+06.
  void real(double value);
  void token(const std::string& text);  // through EncodeToken
  void raw(const std::string& text);    // as it stands (shortcut names)
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// Reads values in order. Like a text stream, the first read that fails (end of file, not a
// number) puts the reader in a failed state, and every later read fails too.
class ValueReader {
 public:
  explicit ValueReader(std::vector<std::string> tokens) : tokens_(std::move(tokens)) {}
  std::optional<std::int32_t> integer();
  std::optional<double> real();
  std::optional<std::string> token();  // through DecodeToken
  std::optional<std::string> raw();
  bool failed() const { return failed_; }

  // Convenience for readers that keep the field's value on failure.
  bool read(std::int32_t& value);
  bool read(double& value);
  bool readToken(std::string& value);

 private:
  const std::string* next();
  std::vector<std::string> tokens_;
  std::size_t at_ = 0;
  bool failed_ = false;
};

// Formats a double the way ValueWriter writes it.
std::string FormatReal(double value);

}  // namespace tv::settings
