#pragma once
// The small button beside the plot style list of the batch forms: for one of the system's own
// tables a choice of lineweights that rewrites the table; other tables belong to the host's editor.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tv::paper {

// The lineweight choice of one of the system's tables. Opens on the stored choice.
class Dlg_LineWeight {
 public:
  explicit Dlg_LineWeight(std::int32_t kind);
  // "修改<黑白.ctb>的打印线宽" and the like.
  std::string title() const;
  static const std::vector<std::string>& items();
  std::int32_t kind() const { return kind_; }

  std::int32_t selected = 0;  // index into items()

  // OK: stores the choice and, for a lineweight (not "自行编辑"), rewrites the table at `path`.
  // False when the table could not be written.
  bool accept(const std::string& path) const;

 private:
  std::int32_t kind_;
};

// Shows the choice form; nullopt on cancel. By default the host editor's choice list.
using LineweightChooser = std::function<std::optional<std::int32_t>(const Dlg_LineWeight& form)>;
// The host's style list after its editor ran, as the layout's plot settings read it. Without one
// the form keeps its list.
using StyleListReader = std::function<std::vector<std::string>()>;

// The button: finds `styleName` (blanks before it ignored) in the host's plot style folders; for
// one of the system's three tables asks for a lineweight and rewrites the table. "自行编辑" and
// other tables go to the host's editor, where the host has one, after which the form's `list`
// is refilled from `readStyles` when that has more entries, keeping the selected name. False when
// nothing was done: the table was not found or the choice cancelled.
bool EditPlotStyle(const std::string& styleName, std::vector<std::string>& list, std::int32_t& selectedIndex,
                   const LineweightChooser& choose = {}, const StyleListReader& readStyles = {});

}  // namespace tv::paper
