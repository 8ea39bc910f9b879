#include "console/json_writer.h"

#include <charconv>
#include <cmath>

#include "cad/utf8.h"

namespace tv::console {

std::string JsonQuote(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 2);
  out += '"';
  for (std::size_t i = 0; i < text.size();) {
    char32_t cp = 0;
    std::size_t len = cad::DecodeUtf8(text, i, cp);
    if (len == 0) {
      out += "\\ufffd";
      ++i;
      continue;
    }
    switch (cp) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\b': out += "\\b"; break;
      case '\f': out += "\\f"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      case 0x2028: out += "\\u2028"; break;
      case 0x2029: out += "\\u2029"; break;
      default:
        if (cp < 0x20) {
          static constexpr char kHex[] = "0123456789abcdef";
          out += "\\u00";
          out += kHex[cp >> 4];
          out += kHex[cp & 0xF];
        } else {
          out.append(text.substr(i, len));
        }
    }
    i += len;
  }
  out += '"';
  return out;
}

std::string JsonNumber(double value) {
  if (!std::isfinite(value)) return "null";
  if (value == 0) return "0";  // also for -0, which JSON readers treat inconsistently
  char buf[32];
  auto r = std::to_chars(buf, buf + sizeof buf, value);
  return std::string(buf, r.ptr);
}

void JsonWriter::newline() {
  out_ << '\n';
  for (std::size_t i = 0; i < stack_.size(); ++i) out_ << "  ";
}

void JsonWriter::beforeValue() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (stack_.empty()) return;
  Level& level = stack_.back();
  if (!level.empty) out_ << (level.inlined ? ", " : ",");
  if (!level.inlined) newline();
  level.empty = false;
}

void JsonWriter::key(std::string_view k) {
  beforeValue();
  out_ << JsonQuote(k) << ": ";
  afterKey_ = true;
}

void JsonWriter::beginObject(bool inlined) {
  beforeValue();
  out_ << '{';
  // Inside an inlined container everything stays on the line.
  stack_.push_back({true, inlined || (!stack_.empty() && stack_.back().inlined)});
}

void JsonWriter::beginArray(bool inlined) {
  beforeValue();
  out_ << '[';
  stack_.push_back({false, inlined || (!stack_.empty() && stack_.back().inlined)});
}

void JsonWriter::close(char bracket) {
  if (stack_.empty()) return;
  Level level = stack_.back();
  stack_.pop_back();
  if (!level.empty && !level.inlined) newline();
  out_ << bracket;
}

void JsonWriter::endObject() { close('}'); }
void JsonWriter::endArray() { close(']'); }

void JsonWriter::value(std::string_view s) {
  beforeValue();
  out_ << JsonQuote(s);
}

void JsonWriter::value(double d) {
  beforeValue();
  out_ << JsonNumber(d);
}

void JsonWriter::value(std::int64_t i) {
  beforeValue();
  out_ << i;
}

void JsonWriter::value(bool b) {
  beforeValue();
  out_ << (b ? "true" : "false");
}

void JsonWriter::null() {
  beforeValue();
  out_ << "null";
}

void JsonWriter::finish() {
  while (!stack_.empty()) close(stack_.back().isObject ? '}' : ']');
  out_ << '\n';
}

}  // namespace tv::console
