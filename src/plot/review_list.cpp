#include "plot/review_list.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "host/command_prologue.h"
#include "host/editor.h"
#include "host/wrappers.h"
#include "paper/ctb_lineweight_form.h"
#include "paper/layout_plot_setting.h"
#include "plot/generic_review.h"
#include "plot/list_command.h"
#include "plot/list_controls.h"
#include "plot/list_row_edits.h"
#include "plot/output_paths.h"
#include "plot/paper_review.h"
#include "plot/plot_job.h"
#include "plot/title_numbering.h"
#include "plot/title_review.h"
#include "reports/list_reports.h"
#include "settings/config.h"

namespace tv::plot {

namespace {

constexpr std::string_view kHelp =
    "\n命令：N 行 名称（文件名）  Z 行 纸张（A2、A3加长、594x420）  S 行 比例（50 即 1:50）  K 行 份数"
    "\n      D 行（删除）  V 行（预览）  F 格式（PDF、PNG …）  选项：编号或名称 [值]"
    "\n      ERASE（在图中删除，删去图框标记即删去该行）"
    "\n      行：3、2-5、1,4 或 *    回车或 P 打印，C 关闭，? 再次显示列表";

// What the list holds apart from the form's settings until a run takes it over.
struct ListChoices {
  bool merge = false;
  bool asBlock = true;
};

// "是", "Y", "1", "开" turn a check on; "否", "N", "0", "关" off.
std::optional<bool> FlagOfText(std::string_view text) {
  const std::string t = WithoutBlanks(text);
  for (const char* on : {"是", "Y", "y", "1", "开", "ON", "on"})
    if (t == on) return true;
  for (const char* off : {"否", "N", "n", "0", "关", "OFF", "off"})
    if (t == off) return false;
  return std::nullopt;
}

void Say(std::string_view text) { host::Print("\n" + std::string(text)); }
void Box(std::string_view text) { host::CurrentEditor().messageBox(text, kPlotCaption, host::MessageButtons::Ok); }

class ReviewSession {
 public:
  ReviewSession(ListRows& rows) : rows_(rows) {
    const settings::Config& config = settings::GlobalConfig();
    choices_.merge = config.merge_pdf != 0;
    choices_.asBlock = config.save_as_block != 0;
  }

  bool Work(std::int64_t stageTick) {
    host::RegenDrawing();
    Show();
    host::StageTimer(stageTick, "显示对话框");
    while (true) {
      std::string answer;
      const int rc = host::CurrentEditor().getString(
          "\n" + std::string(rows_.title()) + " [打印(P)/关闭(C)]，或输入修改命令（? 显示说明） <打印>: ", answer);
      if (rc == host::RTCAN) return false;
      const std::vector<ListControl> controls = rows_.controls();
      std::vector<std::string> labels;
      for (ListControl c : controls) labels.emplace_back(ControlLabel(c));
      const ListCommand command = ParseListCommand(answer, rows_.size(), labels);
      switch (command.verb) {
        case ListVerb::Refused: Say(OutOfPlay(answer).value_or(command.error)); continue;
        case ListVerb::Close: return false;
        case ListVerb::Erase:
          host::CurrentEditor().command({"ERASE"});
          Show();
          continue;
        case ListVerb::Show:
          Say(kHelp);
          Show();
          continue;
        case ListVerb::Plot:
          if (Run()) return true;
          Show();
          continue;
        default: break;
      }
      if (Edit(command, controls)) Show();
    }
  }

 private:
  // A control of the form that the format leaves out: said as such, not as an unknown command.
  std::optional<std::string> OutOfPlay(std::string_view answer) const {
    if (rows_.paperForm()) return std::nullopt;
    std::vector<std::string> labels;
    for (ListControl c : ControlsInPlay(rows_.titleBlock(), settings::kFormatJpg))
      labels.emplace_back(ControlLabel(c));
    for (ListControl c : ControlsInPlay(rows_.titleBlock(), settings::kFormatDwg))
      labels.emplace_back(ControlLabel(c));
    labels.emplace_back(ControlLabel(ListControl::Merge));
    const std::string_view a = TrimAnswer(answer);
    if (a.empty() || (a.front() >= '0' && a.front() <= '9')) return std::nullopt;
    const ListCommand c = ParseListCommand(a, rows_.size(), labels);
    if (c.verb != ListVerb::Control) return std::nullopt;
    const std::int32_t format = rows_.setting().format;
    return "“" + labels[c.control] + "”在输出格式 " + FormatNames()[static_cast<std::size_t>(format)] + " 下不可用。";
  }

  std::string StyleName() {
    paper::LayoutPlotSetting layout(&rows_.setting());
    return layout.StyleNameAt(rows_.styleIndex());
  }

  void Show() {
    host::CurrentEditor().showList(rows_.title(), rows_.columns(), rows_.cells());
    ControlValues v;
    const settings::PlotSettingRec& s = rows_.setting();
    v.margin = s.margin;
    v.format = s.format;
    v.pathMode = s.path_mode;
    v.customPath = s.custom_path;
    v.merge = choices_.merge;
    v.signatures = s.plot_signatures != 0;
    v.stamps = s.plot_stamps != 0;
    v.asBlock = choices_.asBlock;
    v.sortStyle = s.sort_style;
    v.red = s.back_red;
    v.green = s.back_green;
    v.blue = s.back_blue;
    if (rows_.titleBlock()) v.serialNaming = SerialNamingText();
    if (const Dlg_BPlot3* paper = rows_.paperForm()) {
      v.device = paper->device;
      v.collate = paper->collate;
      v.toPlt = paper->toPlt;
      v.openFolder = paper->openFolder;
    }
    const std::vector<ListControl> controls = rows_.controls();
    if (std::find(controls.begin(), controls.end(), ListControl::Style) != controls.end()) v.style = StyleName();
    std::string text = "\n选项：";
    for (std::size_t i = 0; i < controls.size(); ++i) {
      text += "\n  " + std::to_string(i + 1) + ". " + std::string(ControlLabel(controls[i]));
      const std::string value = ControlValueText(controls[i], v);
      if (!value.empty()) text += "：" + value;
    }
    host::Print(text);
  }

  bool Edit(const ListCommand& c, const std::vector<ListControl>& controls) {
    if (Dlg_BPlot3* paper = rows_.paperForm()) {
      // Paper goes out as it is drawn: no file names, scales or formats in this list.
      if (c.verb == ListVerb::Name || c.verb == ListVerb::Scale || c.verb == ListVerb::Format) {
        Say("批打印至纸张的列表中没有文件名、打印比例和输出格式。");
        return false;
      }
      if (c.verb == ListVerb::Paper) return UnifyMedia(*paper, c.rows, c.argument);
    }
    // A drawing file has no paper, scale or preview: those columns are out of play.
    const bool paperColumn = c.verb == ListVerb::Paper || c.verb == ListVerb::Scale || c.verb == ListVerb::Preview;
    if (paperColumn && rows_.setting().format == settings::kFormatDwg) {
      Say("输出格式为 DWG 时不使用纸张、打印比例和预览。");
      return false;
    }
    switch (c.verb) {
      case ListVerb::Name: return edits_.Rename(c.rows, c.argument);
      case ListVerb::Paper: return edits_.UnifyPaper(c.rows, c.argument);
      case ListVerb::Scale: return edits_.UnifyScale(c.rows, c.argument);
      case ListVerb::Copies: return edits_.UnifyCopies(c.rows, c.argument);
      case ListVerb::Delete: return edits_.Delete(c.rows);
      case ListVerb::Format: return ChangeFormat(c.argument);
      case ListVerb::Preview:
        rows_.preview(c.rows.front());
        return false;
      case ListVerb::Control: return Control(controls[c.control], c.argument);
      default: return false;
    }
  }

  // ---- controls -----------------------------------------------------------------------------------

  bool ChangeFormat(const std::string& typed) {
    std::int32_t format = rows_.setting().format;
    if (typed.empty()) {
      const std::optional<int> chosen = host::CurrentEditor().chooseItem("输出格式", FormatNames(), format);
      if (!chosen) return false;
      format = *chosen;
    } else {
      const std::optional<std::int32_t> named = FormatOfName(typed);
      if (!named) {
        Say("无法识别的输出格式：" + typed + "（PDF、DWF、JPG、PNG、PLT、EPS、DWG）。");
        return false;
      }
      format = *named;
    }
    if (format == rows_.setting().format) return true;
    rows_.setting().format = format;
    rows_.OnFormatChanged(true);
    return true;
  }

  bool Choose(std::string_view title, const std::vector<std::string>& items, int current, const std::string& typed,
              int& out) {
    if (typed.empty()) {
      const std::optional<int> chosen = host::CurrentEditor().chooseItem(title, items, current);
      if (!chosen) return false;
      out = *chosen;
      return true;
    }
    for (std::size_t i = 0; i < items.size(); ++i)
      if (WithoutBlanks(items[i]) == WithoutBlanks(typed)) return out = static_cast<int>(i), true;
    if (const std::optional<std::int32_t> n = WholeOfText(typed); n && *n >= 1 && static_cast<std::size_t>(*n) <= items.size())
      return out = *n - 1, true;
    Say("无效的选择：" + typed + "。");
    return false;
  }

  bool Toggle(std::int32_t& flag, const std::string& typed) {
    if (typed.empty()) {
      flag = flag ? 0 : 1;
      return true;
    }
    const std::optional<bool> value = FlagOfText(typed);
    if (!value) {
      Say("无效的选择：" + typed + "（是/否）。");
      return false;
    }
    flag = *value ? 1 : 0;
    return true;
  }
  bool Toggle(bool& flag, const std::string& typed) {
    std::int32_t value = flag ? 1 : 0;
    if (!Toggle(value, typed)) return false;
    flag = value != 0;
    return true;
  }

  bool Control(ListControl control, const std::string& typed) {
    settings::PlotSettingRec& s = rows_.setting();
    switch (control) {
      case ListControl::Style: {
        paper::LayoutPlotSetting layout(&s);
        int chosen = rows_.styleIndex();
        if (!Choose("打印样式", layout.styleList, chosen, typed, chosen)) return false;
        rows_.styleIndex() = chosen;
        return true;
      }
      case ListControl::EditStyle: {
        paper::LayoutPlotSetting layout(&s);
        std::vector<std::string> list = layout.styleList;
        std::int32_t index = rows_.styleIndex();
        if (!paper::EditPlotStyle(layout.StyleNameAt(index), list, index)) return false;
        rows_.styleIndex() = index;
        return true;
      }
      case ListControl::Margin: {
        const MarginList margins = MarginItems(s.margin);
        if (typed.empty()) {
          const std::optional<int> chosen = host::CurrentEditor().chooseItem("周边留白", margins.items, margins.selected);
          if (!chosen) return false;
          s.margin = margins.values[static_cast<std::size_t>(*chosen)];
          return true;
        }
        const std::optional<std::int32_t> mm = WholeOfText(WithoutBlanks(typed) == "不留白" ? "0" : typed);
        if (!mm || std::find(margins.values.begin(), margins.values.end(), *mm) == margins.values.end()) {
          Say("无效的周边留白：" + typed + "（应为 -10 到 10 之间的毫米数）。");
          return false;
        }
        s.margin = *mm;
        return true;
      }
      case ListControl::Format: return ChangeFormat(typed);
      case ListControl::PathMode: return PathMode(typed);
      case ListControl::Merge: return Toggle(choices_.merge, typed);
      case ListControl::Signatures: return Toggle(s.plot_signatures, typed);
      case ListControl::Stamps: return Toggle(s.plot_stamps, typed);
      case ListControl::AsBlock: return Toggle(choices_.asBlock, typed);
      case ListControl::ScaleFilter: rows_.scaleAndFilter(); return true;
      case ListControl::NameRule: rows_.nameRule(); return true;
      case ListControl::SortType: {
        int chosen = s.sort_style - 1;
        if (!Choose(kSortTypeTitle, SortTypeItems(), chosen, typed, chosen)) return false;
        rows_.sortType(chosen + 1);
        return true;
      }
      case ListControl::Index: rows_.makeIndex(); return false;
      case ListControl::FileList: rows_.makeFileList(); return false;
      case ListControl::DrawIndex: rows_.drawIndex(); return false;
      case ListControl::SerialNaming: return rows_.serialNaming(typed);
      case ListControl::Renumber: return rows_.renumber(typed);
      case ListControl::Device: {
        Dlg_BPlot3& paper = *rows_.paperForm();
        if (paper.devices.empty()) {
          Say("没有可打印到纸张的打印机。");
          return false;
        }
        const auto at = std::find(paper.devices.begin(), paper.devices.end(), paper.device);
        int chosen = at == paper.devices.end() ? 0 : static_cast<int>(at - paper.devices.begin());
        if (!Choose("打印机", paper.devices, chosen, typed, chosen)) return false;
        return ChoosePaperDevice(paper, paper.devices[static_cast<std::size_t>(chosen)]);
      }
      case ListControl::Collate: return Toggle(rows_.paperForm()->collate, typed);
      case ListControl::ToPlt: return Toggle(rows_.paperForm()->toPlt, typed);
      case ListControl::OpenFolder: return Toggle(rows_.paperForm()->openFolder, typed);
      case ListControl::PaperStatistics: {
        int chosen = 0;
        if (typed.empty()) {
          const std::optional<int> picked =
              host::CurrentEditor().chooseItem(reports::kPaperStatisticsCaption, reports::PaperStatisticsEntries(), 0);
          if (!picked) return false;
          chosen = *picked;
        } else if (const std::optional<reports::BaseSize> base = reports::BaseSizeOfText(typed)) {
          chosen = static_cast<int>(*base) - 1;
        } else {
          Say("无效的选择：" + typed + "（A4、A3、A2、A1 或 A0）。");
          return false;
        }
        rows_.paperStatistics(chosen + 1);
        return false;
      }
      case ListControl::Background: {
        std::string text = typed;
        if (text.empty()) {
          const std::string prompt = "\n背景色 (R,G,B) <" + std::to_string(s.back_red) + "," + std::to_string(s.back_green) +
                                     "," + std::to_string(s.back_blue) + ">: ";
          if (host::CurrentEditor().getString(prompt, text) != host::RTNORM || TrimAnswer(text).empty()) return false;
        }
        const auto rgb = ParseColour(text);
        if (!rgb) {
          Say("无效的颜色：" + text + "（应如 255,255,255）。");
          return false;
        }
        s.back_red = (*rgb)[0];
        s.back_green = (*rgb)[1];
        s.back_blue = (*rgb)[2];
        return true;
      }
    }
    return false;
  }

  bool PathMode(const std::string& typed) {
    settings::PlotSettingRec& s = rows_.setting();
    const std::vector<std::string> items = {" 源文件路径", FormatFolderRowText(s.format), "自定义路径"};
    int mode = s.path_mode;
    std::string folder;
    // An entry by its place in the list as shown (1 to 3) or its text; anything else is a folder.
    const std::optional<std::int32_t> n = WholeOfText(typed);
    const bool byPlace = n && *n >= 1 && *n <= static_cast<std::int32_t>(items.size());
    const bool byText = std::any_of(items.begin(), items.end(),
                                    [&](const std::string& item) { return WithoutBlanks(item) == WithoutBlanks(typed); });
    if (typed.empty() || byPlace || byText) {
      if (!Choose("存储路径", items, mode, typed, mode)) return false;
    } else {
      folder = std::string(TrimAnswer(typed));  // a folder typed at once
      mode = 2;
    }
    if (mode == 2 && folder.empty()) {
      const std::optional<std::string> picked = host::CurrentEditor().askFolder(kCustomFolderTitle, s.custom_path);
      if (!picked) return false;
      folder = *picked;
    }
    if (mode == 2) {
      std::error_code ec;
      if (!std::filesystem::is_directory(folder, ec)) {
        Box("所选文件夹有误 !");
        return false;
      }
      s.custom_path = folder;
    }
    s.path_mode = mode;
    return true;
  }

  bool Run() {
    settings::Config& config = settings::GlobalConfig();
    const std::int32_t merge = config.merge_pdf, asBlock = config.save_as_block;
    config.merge_pdf = choices_.merge ? 1 : 0;
    config.save_as_block = choices_.asBlock ? 1 : 0;
    if (rows_.run()) return true;
    // Refused: nothing of the list is kept.
    config.merge_pdf = merge;
    config.save_as_block = asBlock;
    return false;
  }

  ListRows& rows_;
  RowEdits edits_{rows_};
  ListChoices choices_;
};

}  // namespace

bool WorkReviewList(ListRows& rows, std::int64_t stageTick) { return ReviewSession(rows).Work(stageTick); }

std::string_view ListRows::title() const { return kBPlot1Title; }
std::vector<ListControl> ListRows::controls() { return ControlsInPlay(titleBlock(), setting().format); }

}  // namespace tv::plot
