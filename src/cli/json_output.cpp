#include "cli/json_output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "cad/utf8.h"

namespace tv::cli {

namespace {

bool Contains(const std::vector<std::string_view>& list, std::string_view s) {
  return std::find(list.begin(), list.end(), s) != list.end();
}

void Replace(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

// nlohmann's escaping for the valid stretches; each byte that starts no valid UTF-8 sequence is
// \ufffd, one for one, and a U+FFFD the text really holds stays as it is.
std::string StringText(const std::string& text) {
  std::string out = "\"";
  std::size_t stretch = 0;
  const auto flush = [&](std::size_t end) {
    if (end <= stretch) return;
    const std::string quoted =
        Json(text.substr(stretch, end - stretch)).dump(-1, ' ', false, Json::error_handler_t::replace);
    out.append(quoted, 1, quoted.size() - 2);
  };
  for (std::size_t i = 0; i < text.size();) {
    char32_t cp = 0;
    const std::size_t len = cad::DecodeUtf8(text, i, cp);
    if (len > 0) {
      i += len;
      continue;
    }
    flush(i);
    out += "\\ufffd";
    stretch = ++i;
  }
  flush(text.size());
  Replace(out, "\xe2\x80\xa8", "\\u2028");
  Replace(out, "\xe2\x80\xa9", "\\u2029");
  return out + '"';
}

// The shortest text that reads back to the same double, as std::to_chars writes it ("1e+05",
// "0.1", "250"); nlohmann would write "100000.0". -0 is 0, which readers agree on; NaN and
// infinities are null.
std::string NumberText(double value) {
  if (!std::isfinite(value)) return "null";
  if (value == 0) return "0";
  char buf[32];
  const auto r = std::to_chars(buf, buf + sizeof buf, value);
  return std::string(buf, r.ptr);
}

class Printer {
 public:
  Printer(std::ostream& out, const JsonLayout& layout) : out_(out), layout_(layout) {}

  void print(const Json& v, std::string_view key, bool inlined, int depth) {
    if (v.is_string()) {
      out_ << StringText(v.get_ref<const std::string&>());
      return;
    }
    if (v.is_number_float()) {
      out_ << NumberText(v.get<double>());
      return;
    }
    if (!v.is_structured()) {
      out_ << v.dump();
      return;
    }
    const bool object = v.is_object();
    const bool itemsInline = inlined || Contains(layout_.inlineItemsOf, key);
    out_ << (object ? '{' : '[');
    bool first = true;
    for (auto it = v.begin(); it != v.end(); ++it) {
      if (!first) out_ << (inlined ? ", " : ",");
      first = false;
      if (!inlined) newline(depth + 1);
      std::string_view childKey;
      if (object) {
        childKey = it.key();
        out_ << StringText(it.key()) << ": ";
      }
      const bool childInline = itemsInline || (object && Contains(layout_.inlineKeys, childKey));
      print(*it, object ? childKey : std::string_view(), childInline, depth + 1);
    }
    if (!first && !inlined) newline(depth);
    out_ << (object ? '}' : ']');
  }

 private:
  void newline(int depth) {
    out_ << '\n';
    for (int i = 0; i < depth; ++i) out_ << "  ";
  }

  std::ostream& out_;
  const JsonLayout& layout_;
};

}  // namespace

void PrintJson(std::ostream& out, const Json& document, const JsonLayout& layout) {
  Printer(out, layout).print(document, {}, false, 0);
  out << '\n';
}

}  // namespace tv::cli
