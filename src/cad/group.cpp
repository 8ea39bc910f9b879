#include "cad/group.h"

#include <charconv>
#include <cmath>

namespace tv::cad {

std::string Group::asString() const {
  if (auto s = std::get_if<std::string>(&value)) return *s;
  if (auto d = std::get_if<double>(&value)) {
    char buf[32];
    auto r = std::to_chars(buf, buf + sizeof buf, *d);
    return std::string(buf, r.ptr);
  }
  if (auto i = std::get_if<std::int64_t>(&value)) return std::to_string(*i);
  if (auto id = std::get_if<ObjectId>(&value)) return id->handleText();
  return {};
}

double Group::asDouble(double fallback) const {
  if (auto d = std::get_if<double>(&value)) return *d;
  if (auto i = std::get_if<std::int64_t>(&value)) return static_cast<double>(*i);
  if (auto s = std::get_if<std::string>(&value)) {
    double v = 0;
    auto r = std::from_chars(s->data(), s->data() + s->size(), v);
    if (r.ec == std::errc{}) return v;
  }
  return fallback;
}

std::int64_t Group::asInt(std::int64_t fallback) const {
  if (auto i = std::get_if<std::int64_t>(&value)) return *i;
  if (auto d = std::get_if<double>(&value)) return std::isfinite(*d) ? static_cast<std::int64_t>(std::llround(*d)) : fallback;
  if (auto s = std::get_if<std::string>(&value)) {
    std::int64_t v = 0;
    auto r = std::from_chars(s->data(), s->data() + s->size(), v);
    if (r.ec == std::errc{}) return v;
  }
  return fallback;
}

ObjectId Group::asId() const {
  if (auto id = std::get_if<ObjectId>(&value)) return *id;
  if (auto s = std::get_if<std::string>(&value)) return ObjectId::fromHandleText(*s);
  return {};
}

const Group* FindGroup(const Groups& groups, int code) {
  for (const auto& g : groups)
    if (g.code == code) return &g;
  return nullptr;
}

}  // namespace tv::cad
