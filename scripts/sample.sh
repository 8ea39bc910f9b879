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
# Signatures and stamps, with libraries in a data folder of the samples' own (the user's libraries
# stay as they are): the traced sample signature captured into the signature library, placed in the
# designer's row of the first title block, and the title-block sheets plotted with signatures and
# the round sample seal on the sheets that have an issue-stamp area.
rm -rf out/samples/data
export XDG_DATA_HOME="$PWD/out/samples/data"
./build/tvplot sign capture out/samples/sample_signature.dxf --id 1001 --name 张工
./build/tvplot sign place out/samples/sample_titleblocks.dxf --id 1001 --at 71100,1100 --to 74900,1900 \
  --out out/samples/sample_signed.dxf
./build/tvplot stamp import out/samples/sample_stamps.tvlib2 --replace
./build/tvplot titleblock out/samples/sample_signed.dxf --tk out/samples/sample_titleblocks.tk --plot \
  --out out/plots/signed --signatures yes --stamp 出图=出图专用章
