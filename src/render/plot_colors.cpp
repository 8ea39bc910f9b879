#include "render/plot_colors.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "render/plotter_files.h"

namespace tv::render {

namespace {

Rgb Hsv(double hueDegrees, double saturation, double value) {
  const double c = value * saturation;
  const double h = std::fmod(hueDegrees, 360.0) / 60.0;
  const double x = c * (1 - std::abs(std::fmod(h, 2.0) - 1));
  double r = 0, g = 0, b = 0;
  if (h < 1) r = c, g = x;
  else if (h < 2) r = x, g = c;
  else if (h < 3) g = c, b = x;
  else if (h < 4) g = x, b = c;
  else if (h < 5) r = x, b = c;
  else r = c, b = x;
  const double m = value - c;
  const auto byte = [](double v) { return static_cast<std::uint8_t>(std::clamp(static_cast<long>(std::floor(v * 255 + 1e-9)), 0L, 255L)); };
  return {byte(r + m), byte(g + m), byte(b + m)};
}

std::array<Rgb, 256> MakePalette() {
  std::array<Rgb, 256> p{};
  p[1] = {255, 0, 0};
  p[2] = {255, 255, 0};
  p[3] = {0, 255, 0};
  p[4] = {0, 255, 255};
  p[5] = {0, 0, 255};
  p[6] = {255, 0, 255};
  p[7] = {255, 255, 255};
  p[8] = {128, 128, 128};
  p[9] = {192, 192, 192};
  // 24 hues of 15 degrees, each in five brightnesses, full and half saturated.
  static constexpr double kValues[5] = {1.0, 0.65, 0.5, 0.3, 0.15};
  for (int i = 10; i < 250; ++i) {
    const int k = (i - 10) % 10;
    p[i] = Hsv((i - 10) / 10 * 15.0, k % 2 ? 0.5 : 1.0, kValues[k / 2]);
  }
  static constexpr std::uint8_t kGreys[6] = {51, 80, 105, 130, 190, 255};
  for (int i = 0; i < 6; ++i) p[250 + i] = {kGreys[i], kGreys[i], kGreys[i]};
  p[0] = p[7];
  return p;
}

Rgb FromTrueColor(std::int32_t c) {
  return {static_cast<std::uint8_t>((c >> 16) & 0xFF), static_cast<std::uint8_t>((c >> 8) & 0xFF), static_cast<std::uint8_t>(c & 0xFF)};
}

}  // namespace

Rgb AciColor(int aci) {
  static const std::array<Rgb, 256> palette = MakePalette();
  return aci >= 1 && aci <= 255 ? palette[static_cast<std::size_t>(aci)] : palette[7];
}

Pen PenOf(const PlotStyle& style, int aci, std::int32_t trueColor, double lineweightMm) {
  Pen pen{{0, 0, 0}, lineweightMm};
  // Object colours on white paper: index 7 (white on the screen) is black on paper.
  const auto objectColor = [&]() -> Rgb {
    if (trueColor >= 0) return FromTrueColor(trueColor);
    return aci == 7 || aci < 1 || aci > 255 ? Rgb{0, 0, 0} : AciColor(aci);
  };
  switch (style.kind) {
    case PlotStyle::Kind::AllBlack: break;
    case PlotStyle::Kind::AllBlue: pen.color = {0, 0, 255}; break;
    case PlotStyle::Kind::ObjectColors: pen.color = objectColor(); break;
    case PlotStyle::Kind::Table: {
      pen.color = objectColor();
      if (aci >= 1 && aci <= 255 && static_cast<std::size_t>(aci) <= style.pens.size()) {
        const PlotStyle::Pen& p = style.pens[static_cast<std::size_t>(aci - 1)];
        if (p.color) pen.color = *p.color;
        if (p.lineweightMm) pen.widthMm = *p.lineweightMm;
      }
      break;
    }
  }
  return pen;
}

PlotStyle PlotStyleFromTable(const PlotStyleTable& table) {
  PlotStyle style;
  style.kind = PlotStyle::Kind::Table;
  style.pens.resize(255);
  for (std::size_t i = 0; i < table.styles.size() && i < 255; ++i) {
    const PlotStyleEntry& e = table.styles[i];
    PlotStyle::Pen& pen = style.pens[i];
    const std::uint32_t raw = static_cast<std::uint32_t>(e.color);
    // -1 is the object's colour; otherwise the low three bytes are red, green, blue.
    if (e.color != -1 && (raw & 0xFFFFFFu) != 0xFFFFFFu)
      pen.color = Rgb{static_cast<std::uint8_t>((raw >> 16) & 0xFF), static_cast<std::uint8_t>((raw >> 8) & 0xFF),
                      static_cast<std::uint8_t>(raw & 0xFF)};
    if (!e.objectLineweight && e.lineweightIndex >= 0 && static_cast<std::size_t>(e.lineweightIndex) < table.lineweightsMm.size())
      pen.lineweightMm = table.lineweightsMm[static_cast<std::size_t>(e.lineweightIndex)];
  }
  return style;
}

}  // namespace tv::render
