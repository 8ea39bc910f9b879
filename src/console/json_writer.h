#pragma once
// A small streaming JSON writer: objects, arrays, strings, numbers, booleans and null,
// indented two spaces. Output is always valid JSON in UTF-8, whatever bytes the strings hold.
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace tv::console {

// The JSON string literal for `text`, quotes included: '"' and '\' escaped, control characters
// as \n, \t … or \u00XX, U+2028/U+2029 escaped; bytes that are not valid UTF-8 become U+FFFD.
std::string JsonQuote(std::string_view text);
// Shortest text that reads back to the same double; "null" for NaN and infinities.
std::string JsonNumber(double value);

class JsonWriter {
 public:
  explicit JsonWriter(std::ostream& out) : out_(out) {}

  // `inlined` keeps the whole container on one line ([1, 2, 3]).
  void beginObject(bool inlined = false);
  void endObject();
  void beginArray(bool inlined = false);
  void endArray();
  // Inside an object, each value is preceded by its key.
  void key(std::string_view k);

  void value(std::string_view s);
  void value(const char* s) { value(std::string_view(s)); }
  void value(const std::string& s) { value(std::string_view(s)); }
  void value(double d);
  void value(std::int64_t i);
  void value(int i) { value(static_cast<std::int64_t>(i)); }
  void value(std::size_t n) { value(static_cast<std::int64_t>(n)); }
  void value(bool b);
  void null();

  // key + value in one call.
  template <class T>
  void field(std::string_view k, const T& v) {
    key(k);
    value(v);
  }

  // Ends the document with a line feed.
  void finish();

 private:
  struct Level {
    bool isObject;
    bool inlined;
    bool empty = true;
  };
  void beforeValue();
  void newline();
  void close(char bracket);

  std::ostream& out_;
  std::vector<Level> stack_;
  bool afterKey_ = false;
};

}  // namespace tv::console
