#include "plot/single_plot_record.h"

#include <variant>

#include "host/wrappers.h"
#include "host/xrecords.h"

namespace tv::plot {

namespace {

using host::XrecordItem;

void AppendNames(std::vector<XrecordItem>& items, const std::vector<std::string>& names) {
  items.push_back({90, static_cast<std::int32_t>(names.size())});
  for (const std::string& name : names) items.push_back({1, name});
}

// Reads a count and that many names from `at`; false when the chain is cut short.
bool TakeNames(const std::vector<XrecordItem>& items, std::size_t& at, std::vector<std::string>& names) {
  if (at >= items.size() || items[at].code != 90) return false;
  const auto* count = std::get_if<std::int32_t>(&items[at++].value);
  if (!count || *count < 0) return false;
  for (std::int32_t i = 0; i < *count; ++i, ++at) {
    if (at >= items.size() || items[at].code != 1) return false;
    names.push_back(std::get<std::string>(items[at].value));
  }
  return true;
}

}  // namespace

bool WriteSinglePlotRecord(const SinglePlotChoices& choices) {
  std::vector<XrecordItem> items;
  for (std::int32_t v : choices.values) items.push_back({90, v});
  items.push_back({40, choices.scale});
  items.push_back({1, choices.formName});
  AppendNames(items, choices.blocks);
  AppendNames(items, choices.layers);
  return host::WriteNamedXrecord(std::string(kSinglePlotRecord), items);
}

std::optional<SinglePlotChoices> ReadSinglePlotRecord() {
  const auto items = host::ReadNamedXrecord(std::string(kSinglePlotRecord));
  if (!items) return std::nullopt;
  SinglePlotChoices choices;
  std::size_t at = 0;
  for (std::int32_t& v : choices.values) {
    if (at >= items->size() || (*items)[at].code != 90) return std::nullopt;
    v = std::get<std::int32_t>((*items)[at++].value);
  }
  if (at >= items->size() || (*items)[at].code != 40) return std::nullopt;
  choices.scale = std::get<double>((*items)[at++].value);
  if (at >= items->size() || (*items)[at].code != 1) return std::nullopt;
  choices.formName = std::get<std::string>((*items)[at++].value);
  std::vector<std::string> blocks, layers;
  if (!TakeNames(*items, at, blocks) || !TakeNames(*items, at, layers)) return std::nullopt;
  for (std::string& name : blocks)
    if (!host::FindBlock(name).isNull()) choices.blocks.push_back(std::move(name));
  const std::vector<host::LayerFacts> known = host::ListLayers();
  for (std::string& name : layers)
    for (const host::LayerFacts& layer : known)
      if (layer.name == name) {
        choices.layers.push_back(std::move(name));
        break;
      }
  return choices;
}

}  // namespace tv::plot
