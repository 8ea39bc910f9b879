#pragma once
// What every numbered command does before and after its own work.
#include <cstdint>
#include <string_view>

namespace tv::host {

// Saves CMDECHO and sets it to 0, then passes the gate in front of the commands. Returns the
// saved value for LeaveCommand.
std::int32_t EnterCommand();
void LeaveCommand(std::int32_t savedEcho);

// Keeps EnterCommand/LeaveCommand paired over a command body, however it returns.
class CommandScope {
 public:
  CommandScope() : savedEcho_(EnterCommand()) {}
  ~CommandScope() { LeaveCommand(savedEcho_); }
  CommandScope(const CommandScope&) = delete;
  CommandScope& operator=(const CommandScope&) = delete;

 private:
  std::int32_t savedEcho_;
};

// Stage timing: off in normal use.
extern bool ShowTimings;
// Milliseconds of a steady clock.
std::int64_t TickCount();
// Where the stages of a run are timed from: the clock when ShowTimings is on, else 0.
std::int64_t StageClock();
// When ShowTimings is on, prints "\n\n%s--耗时 %.3f 秒 !" for the stage and returns the new tick;
// otherwise prints nothing, reads no clock and returns `startTick`.
std::int64_t StageTimer(std::int64_t startTick, std::string_view stageName);

}  // namespace tv::host
