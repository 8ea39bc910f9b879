#pragma once
// JSON documents of the subcommands, built as nlohmann::ordered_json (members in the order they
// are set) and printed in the layout the subcommands have always had: indented two spaces,
// "key": value, and small containers (a point, a layer row) on one line.
#include <ostream>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace tv::cli {

using Json = nlohmann::ordered_json;

// Which containers go on one line: those under one of `inlineKeys`, and every member of a
// container under one of `inlineItemsOf`; everything inside such a container stays on its line.
struct JsonLayout {
  std::vector<std::string_view> inlineKeys;
  std::vector<std::string_view> inlineItemsOf;
};

// Prints `document` and a line feed. Doubles are written shortest ("250", "0.1", "1e+05"), -0 as
// 0, NaN and infinities as null. Strings come out as raw UTF-8; bytes that are not valid
// UTF-8 become \ufffd, and U+2028/U+2029 are escaped so that the text is also valid JavaScript.
void PrintJson(std::ostream& out, const Json& document, const JsonLayout& layout = {});

}  // namespace tv::cli
