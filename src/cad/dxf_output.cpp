#include "cad/dxf_output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <variant>

namespace tv::cad {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr std::size_t kMaxBinaryChunk = 127;

}  // namespace

void DxfOutput::code(int c) {
  // Right-aligned in three columns, as CAD programs write group codes ("  0", " 10", "100", "1001").
  if (c >= 0 && c < 1000) {
    char line[4] = {' ', ' ', static_cast<char>('0' + c % 10), '\n'};
    if (c >= 10) line[1] = static_cast<char>('0' + c / 10 % 10);
    if (c >= 100) line[0] = static_cast<char>('0' + c / 100);
    buf_.append(line, 4);
    return;
  }
  char tmp[16];
  auto [p, ec] = std::to_chars(tmp, tmp + sizeof tmp, c);
  (void)ec;
  const std::size_t n = static_cast<std::size_t>(p - tmp);
  if (n < 3) buf_.append(3 - n, ' ');
  buf_.append(tmp, n);
  buf_.push_back('\n');
}

void DxfOutput::str(int c, std::string_view value) {
  code(c);
  // A line break inside the value would end the group early: it becomes a space.
  std::size_t start = buf_.size();
  buf_.append(value);
  if (value.find_first_of("\r\n") != std::string_view::npos) {
    for (std::size_t i = start; i < buf_.size(); ++i)
      if (buf_[i] == '\n' || buf_[i] == '\r') buf_[i] = ' ';
  }
  buf_.push_back('\n');
}

void DxfOutput::real(int c, double value) {
  code(c);
  // Non-finite values would make the file unreadable elsewhere; negative zero reads oddly.
  if (!std::isfinite(value) || value == 0) value = 0;
  char tmp[40];
  auto [p, ec] = std::to_chars(tmp, tmp + sizeof tmp, value);
  (void)ec;
  const std::size_t n = static_cast<std::size_t>(p - tmp);
  buf_.append(tmp, n);
  // Integral values get ".0" so that every reader sees a real.
  if (std::memchr(tmp, '.', n) == nullptr && std::memchr(tmp, 'e', n) == nullptr) buf_.append(".0");
  buf_.push_back('\n');
}

void DxfOutput::integer(int c, std::int64_t value) {
  code(c);
  char tmp[24];
  auto [p, ec] = std::to_chars(tmp, tmp + sizeof tmp, value);
  (void)ec;
  buf_.append(tmp, static_cast<std::size_t>(p - tmp));
  buf_.push_back('\n');
}

void DxfOutput::handle(int c, ObjectId id) {
  code(c);
  char tmp[17];
  char* end = tmp + sizeof tmp;
  char* p = end;
  std::uint64_t v = id.value;
  do {
    *--p = kHexDigits[v & 0xF];
    v >>= 4;
  } while (v != 0);
  buf_.append(p, static_cast<std::size_t>(end - p));
  buf_.push_back('\n');
}

void DxfOutput::point(int c, Point3d p) {
  real(c, p.x);
  real(c + 10, p.y);
  real(c + 20, p.z);
}

void DxfOutput::point2d(int c, Point2d p) {
  real(c, p.x);
  real(c + 10, p.y);
}

void DxfOutput::binary(int c, const Bytes& bytes) {
  if (bytes.empty()) {
    code(c);
    buf_.push_back('\n');
    return;
  }
  for (std::size_t at = 0; at < bytes.size(); at += kMaxBinaryChunk) {
    const std::size_t n = std::min(kMaxBinaryChunk, bytes.size() - at);
    code(c);
    for (std::size_t i = 0; i < n; ++i) {
      const std::uint8_t b = bytes[at + i];
      buf_.push_back(kHexDigits[b >> 4]);
      buf_.push_back(kHexDigits[b & 0xF]);
    }
    buf_.push_back('\n');
  }
}

void DxfOutput::group(const Group& g) {
  std::visit(
      [&](const auto& v) {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::string>) {
          str(g.code, v);
        } else if constexpr (std::is_same_v<T, double>) {
          real(g.code, v);
        } else if constexpr (std::is_same_v<T, std::int64_t>) {
          integer(g.code, v);
        } else if constexpr (std::is_same_v<T, ObjectId>) {
          handle(g.code, v);
        } else {
          binary(g.code, v);
        }
      },
      g.value);
}

void DxfOutput::groups(const Groups& gs) {
  for (const Group& g : gs) group(g);
}

void DxfOutput::normal(int c, Vector3d n) {
  if (n == Vector3d::zAxis()) return;
  vector(c, n);
}

}  // namespace tv::cad
