#include "cli/window_option.h"

#include <cmath>
#include <cstdio>

#include "cli/option_values.h"
#include "console/text_table.h"
#include "plot/sheet_export.h"

namespace tv::cli {

namespace {

std::optional<std::pair<double, double>> ParseCorner(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  auto x = ParseNumber(text.substr(0, comma));
  auto y = ParseNumber(text.substr(comma + 1));
  if (!x || !y) return std::nullopt;
  return std::pair{*x, *y};
}

bool LooksLikeCorner(const std::string& word) { return ParseCorner(word).has_value(); }

std::string Number(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%.17g", v);
  return text;
}

}  // namespace

std::optional<std::string> ReadWindowOption(const ParsedArgs& args, std::vector<std::string>& positional,
                                            std::optional<PlotWindow>& window) {
  auto given = args.value("--window");
  if (!given) return std::nullopt;
  std::string text = *given;
  // "--window X1,Y1 X2,Y2": the second corner is the word after the drawing.
  if (text.find(' ') == std::string::npos && positional.size() == 2 && LooksLikeCorner(positional[1])) {
    text += " " + positional[1];
    positional.pop_back();
  }
  const std::string bad = "打印窗口 " + console::Printable(text) + " 无效，应为 --window X1,Y1 X2,Y2";
  const std::size_t blank = text.find_first_of(" \t");
  if (blank == std::string::npos) return bad;
  const std::size_t second = text.find_first_not_of(" \t", blank);
  if (second == std::string::npos) return bad;
  auto a = ParseCorner(std::string_view(text).substr(0, blank));
  auto b = ParseCorner(std::string_view(text).substr(second));
  if (!a || !b) return bad;
  if (a->first == b->first || a->second == b->second)
    return "打印窗口 " + console::Printable(text) + " 的宽度或高度为 0";
  window = PlotWindow{a->first, a->second, b->first, b->second};
  return std::nullopt;
}

std::vector<std::string> WindowAnswers(const PlotWindow& window, const std::string& path) {
  return {Number(window.x1) + "," + Number(window.y1), Number(window.x2) + "," + Number(window.y2), path, "^C"};
}

bool WindowIsEmpty(const PlotWindow& window) {
  const Point2d min{std::fmin(window.x1, window.x2), std::fmin(window.y1, window.y2)};
  const Point2d max{std::fmax(window.x1, window.x2), std::fmax(window.y1, window.y2)};
  return plot::EntitiesOfSheet(min, max).empty();
}

}  // namespace tv::cli
