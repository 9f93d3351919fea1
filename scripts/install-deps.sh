#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks to build, run and test Tolvane.
set -euo pipefail
pkgs=(build-essential cmake ninja-build pkg-config
      qt6-base-dev qt6-base-dev-tools qt6-serialport-dev libqt6serialport6-dev qt6-qpa-plugins
      libgtest-dev libgmock-dev libbenchmark-dev
      socat dbus dbus-x11 xvfb xauth clang-format
      desktop-file-utils appstream man-db lintian file
      libhamlib-utils)
missing=()
for p in "${pkgs[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then exit 0; fi
echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
