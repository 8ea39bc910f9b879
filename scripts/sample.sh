#!/usr/bin/env bash
# Builds tvplot, writes the sample drawing set and runs the main job on it.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)"
./build/make_samples out/samples
./build/tvplot info out/samples/sample.dxf
# The sheets the generic batch finds, in model space and both layouts, as its review list shows them.
./build/tvplot sheets out/samples/sample.dxf
./build/tvplot sheets out/samples/sample_ucs.dxf --range model
# The main job: every sheet of the sample drawing plotted, to PDF and to PNG.
./build/tvplot plot out/samples/sample.dxf --out out/plots/pdf
./build/tvplot plot out/samples/sample.dxf --out out/plots/png --format png --style 彩色
./build/tvplot plot out/samples/sample_ucs.dxf --range model --out out/plots/ucs
# The title-block batch: the frames the sample library defines, named from their fields.
./build/tvplot titleblock out/samples/sample_titleblocks.dxf --tk out/samples/sample_titleblocks.tk
./build/tvplot titleblock out/samples/sample_titleblocks.dxf --tk out/samples/sample_titleblocks.tk --plot --out out/plots/titleblock
# Stamps: the sample stamp library in a data folder of the samples' own (the user's library stays
# as it is), and the sheets with an issue-stamp area plotted with the round sample seal on them.
export XDG_DATA_HOME="$PWD/out/samples/data"
./build/tvplot stamp import out/samples/sample_stamps.tvlib2 --replace
./build/tvplot titleblock out/samples/sample_titleblocks.dxf --tk out/samples/sample_titleblocks.tk --plot \
  --format png --out out/plots/stamped --stamp 出图=出图专用章
