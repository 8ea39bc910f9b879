#pragma once
// Entry points that feed one arbitrary input to a reader of the system and run what follows it.
// libFuzzer drives them in the fuzzing build; the regular tests replay stored inputs through
// them. Each must survive any input: a bad one is refused with a message, never a crash.
#include <span>
#include <string_view>

namespace tv::fuzz {

// A drawing read from memory, then its sheets found as `tvplot sheets` finds them.
void RunDrawingSheets(std::string_view bytes);
// A title-block library file read, written back and read again.
void RunTkLibrary(std::string_view bytes);
// A configuration file read and written back.
void RunConfigFile(std::string_view bytes);
// One answer typed at a prompt, read as an integer, a number and a point.
void RunAnswer(std::string_view bytes);

struct FuzzTarget {
  std::string_view name;  // fuzz_<name> is its program, tests/fuzz/*/<name> its inputs
  void (*run)(std::string_view bytes);
};

std::span<const FuzzTarget> FuzzTargets();

}  // namespace tv::fuzz
