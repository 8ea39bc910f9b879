#include "settings/value_text.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tv::settings {

namespace {
constexpr char kBlankMark[] = "*?*";
constexpr char kEmptyMark[] = "<><";

std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
  std::size_t at = 0;
  while ((at = text.find(from, at)) != std::string::npos) {
    text.replace(at, from.size(), to);
    at += to.size();
  }
  return text;
}
}  // namespace

std::string EncodeToken(const std::string& text) {
  std::string token = ReplaceAll(text, " ", kBlankMark);
  return token.empty() ? std::string(kEmptyMark) : token;
}

std::string DecodeToken(const std::string& token) {
  if (token == kEmptyMark) return {};
  return ReplaceAll(token, kBlankMark, " ");
}

std::string FormatReal(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", value);
  return buffer;
}

void ValueWriter::integer(std::int64_t value) { text_ += std::to_string(value) + "\n"; }
void ValueWriter::real(double value) { text_ += FormatReal(value) + "\n"; }
void ValueWriter::token(const std::string& text) { text_ += EncodeToken(text) + "\n"; }
void ValueWriter::raw(const std::string& text) { text_ += text + "\n"; }

const std::string* ValueReader::next() {
  if (failed_ || at_ >= tokens_.size()) {
    failed_ = true;
    return nullptr;
  }
  return &tokens_[at_++];
}

std::optional<std::int32_t> ValueReader::integer() {
  const std::string* t = next();
  if (!t) return std::nullopt;
  errno = 0;
  char* end = nullptr;
  long long v = std::strtoll(t->c_str(), &end, 10);
  if (end == t->c_str() || errno == ERANGE || v < std::numeric_limits<std::int32_t>::min() ||
      v > std::numeric_limits<std::int32_t>::max()) {
    failed_ = true;
    return std::nullopt;
  }
  return static_cast<std::int32_t>(v);
}

std::optional<double> ValueReader::real() {
  const std::string* t = next();
  if (!t) return std::nullopt;
  char* end = nullptr;
  double v = std::strtod(t->c_str(), &end);
  if (end == t->c_str() || !std::isfinite(v)) {
    failed_ = true;
    return std::nullopt;
  }
  return v;
}

std::optional<std::string> ValueReader::token() {
  const std::string* t = next();
  if (!t) return std::nullopt;
  return DecodeToken(*t);
}

std::optional<std::string> ValueReader::raw() {
  const std::string* t = next();
  if (!t) return std::nullopt;
  return *t;
}

bool ValueReader::read(std::int32_t& value) {
  auto v = integer();
  if (v) value = *v;
  return v.has_value();
}

bool ValueReader::read(double& value) {
  auto v = real();
  if (v) value = *v;
  return v.has_value();
}

bool ValueReader::readToken(std::string& value) {
  auto v = token();
  if (v) value = std::move(*v);
  return v.has_value();
}

}  // namespace tv::settings
