#pragma once
// "印章授权": before a run with stamps, which stamp each of the four kinds prints, and the code of
// a stamp that needs one. The rows come from the global stamp library and from which stamp
// positions the run's title blocks have; the choices go to the run's settings.
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "settings/plot_setting.h"
#include "signing/stamp_library.h"
#include "signing/stamp_placement.h"

namespace tv::signing {

inline constexpr const char* kStampChoiceTitle = "印章授权";
inline constexpr std::array<const char*, kStampKindCount> kStampKindWords{"注册章", "出图章", "项目章", "竣工章"};

struct StampChoiceRow {
  std::vector<const TV_Stamp*> stamps;  // the kind's list: its own kind and "不分类", enabled ones
  bool usable = false;                  // a list and a position: the box can be ticked
  std::string reason;                   // why not, in place of the other controls
  bool ticked = false;
  int selected = -1;  // into `stamps`
  std::string code;   // as typed; never stored

  const TV_Stamp* stamp() const;
  // A code is asked for: ticked, a stamp chosen, and that stamp has one.
  bool codeNeeded() const;
  // "√" when the row may plot as it stands, "X" for a wrong code, empty for an unticked row.
  std::string mark() const;
};

struct StampChoiceForm {
  std::array<StampChoiceRow, kStampKindCount> rows;

  // Rows from the library, the positions the sheets have, and the settings' choices.
  static StampChoiceForm Open(const StampLibrary& library, const std::array<bool, kStampKindCount>& positions,
                              const settings::PlotSettingRec& setting);
  // The first ticked row whose code is wrong, as OK checks them.
  std::optional<std::size_t> wrongCode() const;
  // The names of the ticked rows and the four tick states into the settings.
  void store(settings::PlotSettingRec& setting) const;
  // The rows as the console shows them.
  std::vector<std::vector<std::string>> cells() const;
};

// "注册章的授权码有误 !" and the others.
std::string WrongCodeMessage(std::size_t kind);

// Shows the form; OK stores the choices in `setting`. False on Cancel, which abandons the run.
bool ChooseStamps(const std::array<bool, kStampKindCount>& sheetPositions, settings::PlotSettingRec& setting);

// Codes a caller typed beforehand (the command line): while set, ChooseStamps doesn't show the form
// but takes the settings' choices with these codes through the same checks.
std::optional<std::array<std::string, kStampKindCount>>& PresetStampCodes();

}  // namespace tv::signing
