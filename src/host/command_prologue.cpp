#include "host/command_prologue.h"

#include <chrono>
#include <cstdio>
#include <string>

#include "host/editor.h"

namespace tv::host {

bool ShowTimings = false;

namespace {
// The licence gate stands here; this build has no hardware key, so every command passes.
bool PassGate() { return true; }
}  // namespace

std::int32_t EnterCommand() {
  const std::int32_t saved = GetIntVar("CMDECHO", 1);
  SetVar("CMDECHO", std::int32_t{0});
  PassGate();
  return saved;
}

void LeaveCommand(std::int32_t savedEcho) { SetVar("CMDECHO", savedEcho); }

std::int64_t TickCount() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::int64_t StageClock() { return ShowTimings ? TickCount() : 0; }

std::int64_t StageTimer(std::int64_t startTick, std::string_view stageName) {
  if (!ShowTimings) return startTick;
  const std::int64_t now = TickCount();
  const std::string name(stageName);
  char buf[512];
  std::snprintf(buf, sizeof buf, "\n\n%s--耗时 %.3f 秒 !", name.c_str(), static_cast<double>(now - startTick) / 1000.0);
  Print(buf);
  return now;
}

}  // namespace tv::host
