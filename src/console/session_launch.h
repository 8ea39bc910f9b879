#pragma once
// What `tvplot console` and `tvplot run` share: their options, the drawing and the answers.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cad/database.h"
#include "console/subcommand.h"

namespace tv::console {

struct LaunchRequest {
  std::vector<std::string> positional;
  std::vector<std::string> answers;  // --answer values first, then the lines of --answers
  bool timings = false;
};

// Parses "[--answers FILE] [--answer TEXT]… [--timings]" and the positional arguments, and reads
// the answers file. On failure the message (and for a usage error the usage) is printed on
// io.err and `exitCode` is set.
std::optional<LaunchRequest> ParseLaunch(std::string_view subcommand, std::string_view usage,
                                         const std::vector<std::string>& args, std::size_t positionalCount,
                                         CliStreams& io, int& exitCode);

// Reads the drawing; nullopt after printing why on io.err.
std::optional<cad::Database> LoadDrawing(const std::string& path, CliStreams& io);

}  // namespace tv::console
