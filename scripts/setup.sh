#!/usr/bin/env bash
# Installs what the build, the tests and the sample run need on Debian 12.
# Runs apt-get only when a package is missing, so repeated builds stay fast.
set -euo pipefail
packages=(
  build-essential cmake pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev nlohmann-json3-dev
  clang libclang-rt-14-dev ccache
  libfreetype-dev libfontconfig-dev libcairo2-dev libjpeg-dev zlib1g-dev libqpdf-dev libxlsxwriter-dev libzip-dev libharfbuzz-dev libgxps-utils libboost-dev fonts-wqy-microhei fonts-dejavu-core
  libcups2-dev cups-daemon cups-client printer-driver-cups-pdf
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  SUDO=""
  if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${missing[@]}"
fi

# DWG input: LibreDWG from npm, run by node through tools/dwg/dwg2dxf.mjs (a separate program,
# GPL-3.0). node and npm come from Debian unless the machine has them already; the package is
# installed again only when the pinned lock file changed since the last install.
if ! command -v node >/dev/null 2>&1 || ! command -v npm >/dev/null 2>&1; then
  echo "Installing: nodejs npm"
  SUDO=""
  if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends nodejs npm
fi
dwg_dir="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/tools/dwg"
if ! cmp -s "$dwg_dir/package-lock.json" "$dwg_dir/node_modules/.tvplot-installed-lock"; then
  echo "Installing the DWG converter in $dwg_dir"
  (cd "$dwg_dir" && npm ci --omit=dev --no-audit --no-fund --ignore-scripts)
  cp "$dwg_dir/package-lock.json" "$dwg_dir/node_modules/.tvplot-installed-lock"
fi
