#pragma once
// --stamp KIND=NAME, --stamp-code KIND=CODE and --stamps of the title-block batch: the stamps of
// one run chosen on the command line instead of in the form "印章授权".
#include <array>
#include <optional>
#include <string>

#include "cli/command_line.h"
#include "settings/plot_setting.h"
#include "signing/stamp_placement.h"

namespace tv::cli {

struct StampOptions {
  bool stamps = false;  // any of the options: the run plots stamps
  std::array<std::optional<std::string>, signing::kStampKindCount> names;  // by --stamp; none: the stored choices
  std::array<std::string, signing::kStampKindCount> codes;
};

// Reads the options; the usage error when a kind or a pair is malformed.
std::optional<std::string> ReadStampOptions(const ParsedArgs& args, StampOptions& options);
// Once the libraries are loaded: a name that no usable stamp of its kind has, said plainly.
std::optional<std::string> CheckStampNames(const StampOptions& options);
// The run's settings: stamps on with the chosen names (the other kinds off), or off without the
// options; the codes go to the form's checks.
void ApplyStampOptions(const StampOptions& options, settings::PlotSettingRec& setting);

}  // namespace tv::cli
