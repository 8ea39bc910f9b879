#include "host/command_table.h"

#include <array>
#include <cstdio>

#include "host/command_bodies.h"
#include "settings/config.h"

namespace tv::host {

namespace {

struct NumberedCommand {
  std::string_view menuText;
  CommandBody body;
};

const std::array<NumberedCommand, kNumberedCommandCount>& NumberedCommands() {
  static const std::array<NumberedCommand, kNumberedCommandCount> table{{
      {"单张打印到文件", &TV_BatchPlot_1},
      {"批打到文件(通用型)", &TV_BatchPlot_2},
      {"图框信息库管理", &TV_BatchPlot_3},
      {"批打到文件(图框型)", &TV_BatchPlot_4},
      {"批打到纸张(新版)", &TV_BatchPlot_5},
      {"签名库管理", &TV_BatchPlot_6},
      {"签名插入", &TV_BatchPlot_7},
      {"签名授权", &TV_BatchPlot_8},
      {"快捷命令设置", &TV_BatchPlot_9},
      {"帮助...", &TV_BatchPlot_10},
      {"关于...", &TV_BatchPlot_11},
      {"卸载", &TV_BatchPlot_12},
      {"印章库管理", &TV_BatchPlot_13},
      {"打印设置", &TV_BatchPlot_14},
      {"刷字符内容", &TV_BatchPlot_15},
      {"批打到纸张(旧版)", &TV_BatchPlot_16},
      {"生成外框", &TV_BatchPlot_17},
      {"", &TV_BatchPlot_18},  // reached by typing its name only
      {"真彩色-->索引色", &TV_BatchPlot_19},
      {"刷图块属性", &TV_BatchPlot_20},
  }};
  return table;
}

}  // namespace

std::string_view MenuTextOf(int number) {
  if (number < 1 || number > kNumberedCommandCount) return {};
  return NumberedCommands()[static_cast<std::size_t>(number - 1)].menuText;
}

std::string NumberedCommandName(int number) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "TV_BatchPlot_%d", number);
  return buf;
}

std::optional<CommandBody> LookupCommand(int number) {
  if (number < 1 || number > kNumberedCommandCount) return std::nullopt;
  return NumberedCommands()[static_cast<std::size_t>(number - 1)].body;
}

const std::vector<FixedCommand>& FixedCommands() {
  static const std::vector<FixedCommand> table{
      {"singledwg_plot", &singledwg_plot},
      {"Plot_Temp1", &Plot_Temp1},
      {"Plot_Temp2", &Plot_Temp2},
      {"Plot_Temp3", &Plot_Temp3},
      {"SinglePlot_SelectP", &SinglePlot_SelectP},
      {"SinglePlot_SelectW", &SinglePlot_SelectW},
      {"SinglePlot_Plot_Standby", &SinglePlot_Plot_Standby},
      {"Plot_BaseFun1_Standby", &Plot_BaseFun1_Standby},
      {"Plot_BaseFun2_Standby", &Plot_BaseFun2_Standby},
  };
  return table;
}

void AddCommand(int flags, const std::string& name, CommandBody body) {
  CurrentEditor().addCommand(kCommandGroup, name, name, flags, body);
}

void RegisterCommands() {
  Editor& editor = CurrentEditor();
  editor.removeGroup(kCommandGroup);
  for (const FixedCommand& c : FixedCommands()) AddCommand(ACRX_CMD_USEPICKSET, std::string(c.name), c.body);
  for (int n = 1; n <= kNumberedCommandCount; ++n) {
    const std::string name = NumberedCommandName(n);
    auto body = LookupCommand(n);
    if (!body) continue;
    AddCommand(ACRX_CMD_USEPICKSET, name, *body);
    const std::string shortcut = settings::ShortcutOf(n);
    if (!shortcut.empty()) AddCommand(ACRX_CMD_USEPICKSET, shortcut, *body);
  }
}

}  // namespace tv::host
