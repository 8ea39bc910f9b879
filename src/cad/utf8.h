#pragma once
// UTF-8 encoding and decoding shared by the text code in cad and console; not part of the API.
#include <cstddef>
#include <string>
#include <string_view>

namespace tv::cad {

// Length of the valid UTF-8 sequence at s[i], its code point in `cp`; 0 (`cp` then meaningless)
// when the bytes there are not one: truncated, overlong, a surrogate or past U+10FFFF.
std::size_t DecodeUtf8(std::string_view s, std::size_t i, char32_t& cp);

// Decodes the code point at `i` and moves `i` past it; a broken sequence gives U+FFFD, one byte each.
char32_t NextCodePoint(std::string_view s, std::size_t& i);

// `n` moved back over continuation bytes to the start of the character holding s[n], 0 at the
// start; cutting there leaves every character whole.
std::size_t Utf8CharStart(std::string_view s, std::size_t n);

// Surrogates and values past U+10FFFF are written as U+FFFD.
void AppendUtf8(std::string& out, char32_t cp);

}  // namespace tv::cad
