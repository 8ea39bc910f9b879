#pragma once
// Names as the command line compares them: ASCII case folded, wildcards as selection filters
// and command names use them. Console-internal.
#include <string>
#include <string_view>
#include <vector>

namespace tv::console {

std::string AsciiUpper(std::string_view text);
bool EqualsNoCase(std::string_view a, std::string_view b);

// Matches `text` against a wildcard pattern: "*" any run of characters, "?" one character,
// "`" takes the next character literally, a leading "~" negates; commas separate alternatives,
// any one of which may match. Letters compare without regard to ASCII case; characters are
// UTF-8 code points, so "?" stands for one Chinese character too.
bool WildcardMatch(std::string_view pattern, std::string_view text);

// Blank- (space, tab, newline) separated words of a line; runs of blanks give no empty words.
std::vector<std::string> SplitBlanks(std::string_view line);

// The text without leading and trailing blanks.
std::string_view TrimBlanks(std::string_view text);

}  // namespace tv::console
