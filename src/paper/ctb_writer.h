#pragma once
// The system's three colour-dependent plot style tables: 黑白.ctb plots everything black, 彩色.ctb
// keeps the object colours, 蓝白.ctb plots everything blue. They are created when missing in the
// host's plot style folder and rewritten when the user picks a lineweight for one of them.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "settings/config.h"

namespace tv::paper {

inline constexpr std::string_view kCtbWriteFailed = "文件\n\n%s\n\n写入操作有误!";
inline constexpr std::string_view kCtbWriteTitle = "Tarvex打印样式文件写入";

// Table kinds 1 to 3.
inline constexpr std::int32_t kBlackWhiteTable = 1;
inline constexpr std::int32_t kColourTable = 2;
inline constexpr std::int32_t kBlueWhiteTable = 3;

// Lineweight choices: 0 hands the table to the host's editor, 6 keeps the objects' lineweights.
inline constexpr std::int32_t kEditInHostChoice = 0;
inline constexpr std::int32_t kObjectLineweightChoice = 6;

// "黑白.ctb", "彩色.ctb", "蓝白.ctb"; empty for another kind.
std::string_view PlotStyleTableName(std::int32_t kind);
// The kind of a table's file name (no folder); 0 for any other table.
std::int32_t PlotStyleTableKind(std::string_view fileName);

// The raw color= value of a kind's styles, and its color_policy=.
std::int32_t PlotStyleColor(std::int32_t kind);
std::int32_t PlotStyleColorPolicy(std::int32_t kind);

// "自行编辑", "0.05 mm" … "0.25 mm", "对象线宽", "0.30 mm" … "0.50 mm", in index order.
const std::vector<std::string>& LineweightChoices();
// The lineweight= number a choice index writes.
std::int32_t LineweightValueOf(std::int32_t index);

// The choice stored in the configuration for a kind; null for another kind.
std::int32_t* StoredLineweightChoice(settings::Config& config, std::int32_t kind);

// The text of a table, UTF-8 (it is plain ASCII).
std::string PlotStyleTableText(std::int32_t kind, std::int32_t lineweightIndex);

// Writes a table; a failure is shown and gives false, the old table (if any) staying.
bool WritePlotStyleTable(const std::string& path, std::int32_t kind, std::int32_t lineweightIndex);

// The check at the start of every plotting command over the host's plot style folders: a table
// found in any of them is present; each missing one is written to the last folder looked at, with
// the objects' lineweights, and that choice is stored.
void EnsurePlotStyleTables();
// The same over a ";"-separated folder list.
void EnsurePlotStyleTables(const std::string& styleFolders);

}  // namespace tv::paper
