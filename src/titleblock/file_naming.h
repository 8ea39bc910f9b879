#pragma once
// The names of output files: the serial number, the name of a sheet of the generic batch
// (prefix, serial, suffix, either of which may hold the paper), and the cleaning every file name
// ends with.
#include <cstdint>
#include <string>
#include <string_view>

#include "paper/paper.h"
#include "recognition/sheet_records.h"
#include "settings/plot_setting.h"

namespace tv::titleblock {

// A name prefix that stands for the current drawing's name, so that a saved setting follows the
// document.
inline constexpr std::string_view kDrawingNamePrefix = "???";
// Words of a prefix or suffix that stand for the paper: with its size, and alone.
inline constexpr std::string_view kPaperSizeWord = "纸张尺寸";
inline constexpr std::string_view kPaperWord = "纸张";

// `number` in decimal, "0" put in front up to `digits` characters; a longer number stays whole.
std::string SerialText(std::int32_t number, std::int32_t digits);

// Takes out what a file name must not hold: "<", ">", "\", "|", "*", """, "?", ":" go, "/" becomes
// the division slash "∕", control characters go (line breaks only when `strict`; the forms'
// multi-line samples keep them), and text that couldn't be read (see HasUnreadableText) becomes
// one "_" for each stretch of it. What is left can't leave its folder: a name of dots alone, or
// one the file systems reserve for a device ("CON", "lpt1.txt"), gets a "_" in front.
std::string CleanFileName(std::string text, bool strict);

// Whether a text holds bytes that are no UTF-8, or U+FFFD, which the reader puts where a
// drawing's bytes made no character of its code page.
bool HasUnreadableText(std::string_view text);

// The file name of the generic batch's sheet `index` (from 0): `prefix` or, when empty, the
// setting's name_prefix ("???" being the drawing's name), the serial name_start + index in
// name_digits digits, and name_suffix. The words "纸张尺寸" and "纸张" in prefix and suffix become
// the sheet's paper with and without its size; a sheet whose paper `papers` lacks keeps them. A
// name too long for the file system loses the end of its prefix (then of its suffix).
std::string GenericFileName(const settings::PlotSettingRec& setting, const recognition::Plot_Drawing1& sheet,
                            const paper::PaperList& papers, std::int32_t index, std::string_view prefix = {});
// Sets the sheet's fileName to the above.
void ExpandGenericName(const settings::PlotSettingRec& setting, recognition::Plot_Drawing1& sheet,
                       const paper::PaperList& papers, std::int32_t index, std::string_view prefix = {});

}  // namespace tv::titleblock
