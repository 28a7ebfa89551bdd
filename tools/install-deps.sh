#!/usr/bin/env bash
# Installs everything the project needs to build, test and run, from Debian 12's packages.
set -euo pipefail
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
packages=(
  build-essential cmake clang-format git
  qtbase5-dev qttools5-dev qttools5-dev-tools
  xvfb xauth x11-utils iproute2 util-linux
  libaravis-dev aravis-tools aravis-tools-cli libusb-1.0-0-dev pkg-config
  fonts-dejavu-core
  clang libclang-rt-14-dev
  dpkg-dev file lintian
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends "${missing[@]}"
fi
