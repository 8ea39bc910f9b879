#pragma once
// The command line of the review lists: one short command per edit, the same in every list.
//   N rows name    file name          Z rows paper   paper ("A2", "A3加长", "594x420")
//   S rows scale   scale ("50": 1:50) K rows copies copies
//   D rows         delete             V row          preview
//   F format       output format      P or Enter     plot;  C  close;  ?  show the list again
//   ERASE          the host's ERASE while the list stays open: an erased marker takes its row
// Rows are "3", "2-5", "1,4", "1,3-5" or "*". A control is named by its number or its label
// (blanks inside the label may be left out), optionally followed by its new value.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tv::plot {

enum class ListVerb { Plot, Close, Show, Erase, Name, Paper, Scale, Copies, Delete, Format, Preview, Control, Refused };

struct ListCommand {
  ListVerb verb = ListVerb::Refused;
  std::vector<std::size_t> rows;  // from 0, ascending, each once
  bool allRows = false;           // given as "*"
  std::size_t control = 0;        // the control's place in the list given to the parser
  std::string argument;           // what follows the rows or the control, trimmed
  std::string error;              // why the answer was refused
};

// The rows of "3", "2-5", "1,4" or "*" among `rowCount`; empty with `error` set when refused.
std::vector<std::size_t> ParseRows(std::string_view text, std::size_t rowCount, std::string& error);

// One answer at the list. `controls` are the labels of the controls in play, numbered from 1.
ListCommand ParseListCommand(std::string_view answer, std::size_t rowCount, const std::vector<std::string>& controls);

// Blanks (ASCII and the ideographic one) taken from both ends.
std::string_view TrimAnswer(std::string_view text);
// A whole answer as a number from `low` to `high`; nullopt for anything else.
std::optional<std::int32_t> WholeIn(const std::string& text, std::int32_t low, std::int32_t high);
// Without any blanks, for comparing labels such as "生 成 目 录" with what users type.
std::string WithoutBlanks(std::string_view text);

}  // namespace tv::plot
