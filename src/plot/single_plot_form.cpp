#include "plot/single_plot_form.h"

#include <cstdio>
#include <string>
#include <vector>

#include "host/editor.h"
#include "paper/layout_plot_setting.h"
#include "plot/plot_job.h"
#include "plot/single_plot_record.h"
#include "settings/config.h"

namespace tv::plot {

namespace {

enum Field { kFormat, kStyle, kMargin, kScale, kSignatures, kAutoScale, kChooseFile, kFieldCount };

struct FormValues {
  std::int32_t format = 0, style = 0, margin = 0, signatures = 1, autoScale = 0, chooseFile = 0;
  double scale = 100.0;
};

const std::vector<std::string>& FormatNames() {
  static const std::vector<std::string> names{"PDF", "DWF", "JPG", "PNG", "PLT", "EPS", "DWG"};
  return names;
}

std::string Check(std::int32_t on) { return on ? "[√] " : "[  ] "; }

std::string Number(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", v);
  return text;
}

void Show(const FormValues& v, const std::vector<std::string>& styles) {
  std::string text = "\n" + std::string(kSinglePlotFormTitle);
  text += "\n  1. 输出格式：" + FormatNames().at(static_cast<std::size_t>(v.format));
  text += "\n  2. 打印样式：" +
          (v.style >= 0 && static_cast<std::size_t>(v.style) < styles.size() ? styles[static_cast<std::size_t>(v.style)]
                                                                             : std::string("（无）"));
  text += "\n  3. 周边留白：" + std::to_string(v.margin);
  text += "\n  4. 打印比例 1mm ＝ " + Number(v.scale) + " CAD单位";
  text += "\n  5. " + Check(v.signatures) + (v.format == settings::kFormatDwg ? "DWG拆分时保存为图块" : "打 印 签 名");
  text += "\n  6. " + Check(v.autoScale) + "自动识别";
  text += "\n  7. " + Check(v.chooseFile) + "自主选择文件存储";
  host::Print(text);
}

// Changes one field; false when the user cancelled.
bool Change(FormValues& v, int field, const std::vector<std::string>& styles) {
  host::Editor& editor = host::CurrentEditor();
  switch (field) {
    case kFormat: {
      const auto chosen = editor.chooseItem("输出格式", FormatNames(), v.format);
      if (!chosen) return false;
      v.format = *chosen;
      return true;
    }
    case kStyle: {
      if (styles.empty()) return true;
      const auto chosen = editor.chooseItem("打印样式", styles, v.style);
      if (!chosen) return false;
      v.style = *chosen;
      return true;
    }
    case kMargin:
      for (;;) {
        std::int32_t margin = v.margin;
        const int rc = editor.getInteger("\n周边留白 (-100 到 100) <" + std::to_string(v.margin) + ">: ", margin);
        if (rc == host::RTCAN) return false;
        if (rc != host::RTNORM) return true;
        if (margin >= -100 && margin <= 100) {
          v.margin = margin;
          return true;
        }
        host::Print("\n数值应在 -100 到 100 之间。");
      }
    case kScale: {
      double scale = v.scale;
      const int rc = editor.getReal("\n打印比例 1mm ＝ ? CAD单位 <" + Number(v.scale) + ">: ", scale);
      if (rc == host::RTCAN) return false;
      if (rc == host::RTNORM) v.scale = scale;
      return true;
    }
    case kSignatures: v.signatures = v.signatures ? 0 : 1; return true;
    case kAutoScale: v.autoScale = v.autoScale ? 0 : 1; return true;
    case kChooseFile: v.chooseFile = v.chooseFile ? 0 : 1; return true;
    default: return true;
  }
}

}  // namespace

settings::PlotSettingRec& SinglePlotSetting() {
  static std::optional<settings::PlotSettingRec> setting;
  if (!setting) setting = settings::CurrentPlotSetting();
  return *setting;
}

bool Dlg_SinglePlot_Setting() {
  settings::PlotSettingRec& setting = SinglePlotSetting();
  settings::Config& config = settings::GlobalConfig();
  std::vector<std::string> styles;
  {
    paper::LayoutPlotSetting layout(&setting);
    layout.ReadStyleList();
    styles = layout.styleList;
  }
  FormValues v;
  v.format = setting.format;
  v.style = LastStyleIndex();
  v.margin = setting.margin;
  v.scale = setting.default_scale;
  v.signatures = setting.format == settings::kFormatDwg ? config.save_as_block : setting.plot_signatures;
  v.autoScale = setting.auto_scale;
  v.chooseFile = config.choose_folder;
  // The record is shared with the old paper batch's form: only this form's own choices count.
  if (const auto kept = ReadSinglePlotRecord(); kept && kept->formName == kSinglePlotFormName) {
    v.format = kept->values[0] >= 0 && kept->values[0] < 7 ? kept->values[0] : v.format;
    v.style = kept->values[1];
    v.margin = kept->values[2];
    v.signatures = kept->values[3];
    v.autoScale = kept->values[4];
    v.scale = kept->scale;
  }

  Show(v, styles);
  for (;;) {
    std::string answer;
    if (host::CurrentEditor().getString("\n输入要修改的项目编号，确定(O)/取消(C) <确定>: ", answer) != host::RTNORM)
      return false;
    if (answer.empty() || answer == "O" || answer == "o") {
      if (v.autoScale == 0 && !(v.scale > 0)) {
        host::CurrentEditor().messageBox("打印比例应大于 0 !", kPlotCaption, host::MessageButtons::Ok);
        continue;
      }
      break;
    }
    if (answer == "C" || answer == "c") return false;
    if (answer.size() != 1 || answer[0] < '1' || answer[0] > '0' + kFieldCount) {
      host::Print("\n无效的编号。");
      continue;
    }
    if (!Change(v, answer[0] - '1', styles)) return false;
    Show(v, styles);
  }

  setting.format = v.format;
  setting.margin = v.margin;
  setting.auto_scale = v.autoScale;
  if (v.format == settings::kFormatDwg) config.save_as_block = v.signatures;
  else setting.plot_signatures = v.signatures;
  config.choose_folder = v.chooseFile;
  if (v.autoScale == 0) setting.default_scale = v.scale;
  if (v.style >= 0 && static_cast<std::size_t>(v.style) < styles.size()) {
    config.last_plot_style = styles[static_cast<std::size_t>(v.style)];
    paper::LayoutPlotSetting layout(&setting);
    layout.ReadStyleList();
    layout.SetPlotStyle(v.style);
  }
  WriteSinglePlotRecord({{v.format, v.style, v.margin, v.signatures, v.autoScale},
                         v.scale,
                         std::string(kSinglePlotFormName),
                         {},
                         {}});
  return true;
}

}  // namespace tv::plot
