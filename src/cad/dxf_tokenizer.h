#pragma once
// Streaming reader of DXF group pairs, ASCII or binary, with typed values.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tv::cad {

// How the value of a group code is stored, by the ranges of the DXF reference.
enum class GroupKind : std::uint8_t { String, Double, Int16, Int32, Int64, Bool, Handle, Binary };
GroupKind KindOfGroupCode(int code);

// One group as read. `text` is the value as it stands in the file (ASCII: the trimmed line;
// binary: the string, or the bytes of a 310-319 chunk); for numeric kinds `real` or `integer`
// holds the parsed value (handles parsed from hex into `integer`, bools 0/1 into `integer`,
// integers also copied into `real` and doubles rounded into `integer` for lenient readers).
// `text` stays valid until the tokenizer's next call to `release()` (see below).
struct DxfGroup {
  int code = 0;
  GroupKind kind = GroupKind::String;
  std::string_view text;
  double real = 0;
  std::int64_t integer = 0;
  std::uint64_t line = 0;  // ASCII: 1-based line of the code; binary: byte offset of the group
};

class DxfTokenizer {
 public:
  // Opens a file; on failure `error()` says why and `next()` returns false.
  explicit DxfTokenizer(const std::string& path);
  // Same, reading through blocks of `bufferSize` bytes (tests use tiny ones to stress refills).
  DxfTokenizer(const std::string& path, std::size_t bufferSize);
  // Reads from memory (tests, converted files). The bytes are copied.
  static DxfTokenizer fromBytes(std::string bytes);
  // Same, but fed through blocks of `bufferSize` bytes as a file would be.
  static DxfTokenizer fromBytes(std::string bytes, std::size_t bufferSize);
  ~DxfTokenizer();
  DxfTokenizer(DxfTokenizer&&) noexcept;
  DxfTokenizer& operator=(DxfTokenizer&&) noexcept;

  bool isBinary() const;
  // Reads the next group into `g`. False at end of input or on an error (then `error()` is set).
  // A clean end of input without "0 EOF" is not an error; the reader decides. Input after
  // "0 EOF" is ignored.
  bool next(DxfGroup& g);
  // Puts the last group back so that the next `next()` returns it again (one level).
  void pushBack();
  // Views handed out by next() stay valid until release(); the reader calls it between entities
  // so that the buffer can be reused. Memory stays bounded by the largest unreleased stretch.
  void release();
  const std::string& error() const;  // empty when no error
  std::uint64_t bytesRead() const;
  std::uint64_t fileSize() const;

 private:
  DxfTokenizer();
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace tv::cad
