#pragma once
// The stored fields of the settings records as tables: name, member, the file version from which
// a field is stored and what it means. The readers, the writers and `tvplot config show` walk the
// same tables, so the stored order lives in one place.
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "settings/value_text.h"

namespace tv::settings {

struct PlotSettingRec;
struct Config;

// Which file versions hold a field: every one, those from a version on, or those after it.
struct VersionGate {
  enum class Kind { Always, From, Above };
  Kind kind = Kind::Always;
  std::int32_t version = 0;

  constexpr bool holds(std::int32_t fileVersion) const {
    switch (kind) {
      case Kind::From: return fileVersion >= version;
      case Kind::Above: return fileVersion > version;
      default: return true;
    }
  }
};
inline constexpr VersionGate kAlways{};
constexpr VersionGate From(std::int32_t version) { return {VersionGate::Kind::From, version}; }
constexpr VersionGate Above(std::int32_t version) { return {VersionGate::Kind::Above, version}; }

template <class Rec>
using FieldMember = std::variant<std::int32_t Rec::*, double Rec::*, std::string Rec::*>;

template <class Rec>
struct FieldSpec {
  std::string_view name;
  FieldMember<Rec> member;
  VersionGate gate;
  std::string_view meaning;
};

// The 32 fields of the per-drawing record, in stored order.
std::span<const FieldSpec<PlotSettingRec>> PlotSettingFields();
// The configuration's single values from `single_plot_pick_mode` to `frame_tool_flag`, in file
// order; the record before them and the arrays are stored apart.
std::span<const FieldSpec<Config>> ConfigFields();

// A field's value as `tvplot config show` prints it: integers in decimal, doubles with six
// significant digits, strings as they stand.
template <class Rec>
std::string FieldValueText(const Rec& rec, const FieldSpec<Rec>& field) {
  return std::visit(
      [&](auto member) -> std::string {
        const auto& v = rec.*member;
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::int32_t>)
          return std::to_string(v);
        else if constexpr (std::is_same_v<T, double>)
          return FormatReal(v);
        else
          return v;
      },
      field.member);
}

// Writes a field in the text form, one value a line.
template <class Rec>
void WriteField(const Rec& rec, const FieldSpec<Rec>& field, ValueWriter& writer) {
  std::visit(
      [&](auto member) {
        const auto& v = rec.*member;
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::int32_t>)
          writer.integer(v);
        else if constexpr (std::is_same_v<T, double>)
          writer.real(v);
        else
          writer.token(v);
      },
      field.member);
}

// Reads a field in the text form; the field keeps its value when the read fails.
template <class Rec>
bool ReadField(Rec& rec, const FieldSpec<Rec>& field, ValueReader& reader) {
  return std::visit(
      [&](auto member) -> bool {
        auto& v = rec.*member;
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::string>)
          return reader.readToken(v);
        else
          return reader.read(v);
      },
      field.member);
}

}  // namespace tv::settings
