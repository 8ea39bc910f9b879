#include "paper/saved_plotter.h"

#include <algorithm>

namespace tv::paper {

void SavedPlotter::remember(const host::LayoutPlotSettings& layout) {
  if (!recording || !layout.valid()) return;
  if (std::any_of(layouts.begin(), layouts.end(),
                  [&](const LayoutCopy& c) { return c.layout.layoutId() == layout.layoutId(); }))
    return;
  if (auto settings = layout.copy()) layouts.push_back({layout, std::move(settings)});
}

SavedPlotter& GlobalSavedPlotter() {
  static SavedPlotter saved;
  return saved;
}

}  // namespace tv::paper
