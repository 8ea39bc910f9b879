#include "cli/stamp_options.h"

#include <algorithm>

#include "signing/stamp_choice.h"
#include "signing/stamp_library.h"

namespace tv::cli {

namespace {

// "注册" or "登记" (also with "章"), "出图", "项目", "竣工".
std::optional<std::size_t> KindOf(std::string word) {
  if (word.size() > 3 && word.ends_with("章")) word.resize(word.size() - 3);
  if (word == "注册" || word == "登记") return 0;
  if (word == "出图") return 1;
  if (word == "项目") return 2;
  if (word == "竣工") return 3;
  return std::nullopt;
}

std::optional<std::string> ReadPairs(const ParsedArgs& args, const std::string& option,
                                     std::array<std::optional<std::string>, signing::kStampKindCount>& into) {
  for (const std::string& pair : args.values(option)) {
    const std::size_t eq = pair.find('=');
    const std::optional<std::size_t> kind = eq == std::string::npos ? std::nullopt : KindOf(pair.substr(0, eq));
    if (!kind || eq + 1 >= pair.size())
      return option + " 应为 类型=值，类型为 登记（注册）、出图、项目、竣工之一：" + pair;
    into[*kind] = pair.substr(eq + 1);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> ReadStampOptions(const ParsedArgs& args, StampOptions& options) {
  if (auto error = ReadPairs(args, "--stamp", options.names)) return error;
  std::array<std::optional<std::string>, signing::kStampKindCount> codes;
  if (auto error = ReadPairs(args, "--stamp-code", codes)) return error;
  for (std::size_t k = 0; k < codes.size(); ++k) options.codes[k] = codes[k].value_or("");
  options.stamps = args.has("--stamps") || !args.values("--stamp").empty();
  if (!options.stamps && !args.values("--stamp-code").empty()) return "--stamp-code 只用于 --stamp 或 --stamps";
  return std::nullopt;
}

std::optional<std::string> CheckStampNames(const StampOptions& options) {
  for (std::size_t kind = 0; kind < options.names.size(); ++kind) {
    if (!options.names[kind]) continue;
    const signing::TV_Stamp* s = signing::FindStampByName(signing::GlobalStampLibrary(), *options.names[kind]);
    const bool fits = s && s->enabled != 0 && (s->stamp_kind == static_cast<std::int32_t>(kind) || s->stamp_kind == 4);
    if (!fits)
      return "印章库中没有可用作" + std::string(signing::kStampKindWords[kind]) + "的印章“" + *options.names[kind] +
             "”（见 tvplot stamp list）";
  }
  return std::nullopt;
}

void ApplyStampOptions(const StampOptions& options, settings::PlotSettingRec& setting) {
  // Unattended: stamps only when asked for here, never from a choice the drawing stored.
  setting.plot_stamps = options.stamps ? 1 : 0;
  if (!options.stamps) return;
  const bool named = std::any_of(options.names.begin(), options.names.end(), [](const auto& n) { return n.has_value(); });
  const auto stored = signing::StampChoices(setting);
  if (named)
    for (std::size_t kind = 0; kind < options.names.size(); ++kind)
      signing::SetStampChoice(setting, kind, {options.names[kind].has_value(), options.names[kind].value_or(stored[kind].name)});
  signing::PresetStampCodes() = options.codes;
}

}  // namespace tv::cli
