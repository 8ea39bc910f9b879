#pragma once

namespace tv::cli {

// The `tvplot` command line; returns the process exit code.
int RunCli(int argc, char** argv);

}  // namespace tv::cli
