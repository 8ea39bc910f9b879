#include "console/cli.h"

int main(int argc, char** argv) { return tv::console::RunCli(argc, argv); }
