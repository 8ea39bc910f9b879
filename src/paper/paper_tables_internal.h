#pragma once
// The fixed tables behind paper snapping and naming. Row order is search order everywhere.
#include <cstdint>
#include <span>
#include <string_view>

namespace tv::paper::internal {

struct PaperSize {
  std::int32_t length;
  std::int32_t width;
};

// Snap catalogue, three bands searched in turn.
std::span<const PaperSize> SnapRowsA();           // 6 rows
std::span<const PaperSize> SnapRowsB();           // 6 rows
std::span<const PaperSize> SnapRowsLengthened();  // 31 rows

// The papers BuildStandardPaperList appends, in order.
std::span<const PaperSize> StandardPaperRows();  // 21 rows

struct NamedSize {
  std::int32_t length;
  std::int32_t width;
  std::string_view name;
};
// Exact sizes with a name of their own, eighth-steps included.
std::span<const NamedSize> PaperNameRows();

// Widths that, failing an exact name, name a paper "<base>_Plus_<length>".
struct WidthBase {
  std::int32_t width;
  std::string_view base;
};
std::span<const WidthBase> WidthBaseRows();  // 12 rows

// One replacement key of the naming styles. An empty style-4 text means that style has no row.
struct StyleRow {
  std::string_view key;
  std::string_view style1;
  std::string_view style2;      // factor put before the name
  std::string_view style3A3;    // styles 3 and 6 for A3 names
  std::string_view style3;      // style 3, other names
  std::string_view style4;
  std::string_view style6;      // style 6, other names
};
std::span<const StyleRow> NameStyleRows();  // 22 rows, order binding

}  // namespace tv::paper::internal
