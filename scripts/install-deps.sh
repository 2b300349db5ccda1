#!/usr/bin/env bash
# Installs the Debian packages the build, the tool and the tests need, where they are missing.
#   scripts/install-deps.sh          build and tool: compiler, CMake, CLI11
#   scripts/install-deps.sh --tests  also GoogleTest, GDAL, shapelib, pyshp, numpy, clang (fuzzing),
#                                    gcovr (scripts/coverage.sh)
set -euo pipefail

packages=(g++ cmake make libcli11-dev)
if [[ "${1:-}" == "--tests" ]]; then
    packages+=(googletest libgtest-dev python3 python3-numpy python3-gdal python3-pyshp gdal-bin
               shapelib libshp-dev libgdal-dev libbenchmark-dev clang-14 libclang-rt-14-dev gcovr)
fi

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

sudo=""
[[ $(id -u) -ne 0 ]] && sudo="sudo"
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
