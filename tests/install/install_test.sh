#!/usr/bin/env bash
# Installs the build tree into a fresh prefix, builds a host project against it twice (its CMake
# package, then pkg-config) and runs both builds and the installed tool; given a Python, reads
# the written table through the installed Python package.
#   install_test.sh BUILD_DIR WORK_DIR CXX [PYTHON [LD_PRELOAD]]
set -euo pipefail
build=$1 work=$2 cxx=$3 python=${4:-} preload=${5:-}
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$work"
mkdir -p "$work/out"
cmake --install "$build" --prefix "$work/prefix" >/dev/null

# Nothing of the source or build tree may be needed: the headers come from the prefix alone.
[[ -f "$work/prefix/include/tnw/shapefile/tnwShapeEncoder.h" ]]
[[ -f "$work/prefix/include/tnw/standins/RegisterStandIns.h" ]]

cmake -S "$here/consumer" -B "$work/consumer" -DCMAKE_CXX_COMPILER="$cxx" \
      -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build "$work/consumer" >/dev/null
"$work/consumer/consumer" "$work/out/cmake"

pcdir=$(dirname "$(find "$work/prefix" -name tnw.pc)")
# shellcheck disable=SC2046
"$cxx" -std=c++20 "$here/consumer/main.cpp" -o "$work/consumer-pc" \
    $(PKG_CONFIG_PATH="$pcdir" pkg-config --cflags --libs tnw-standins)
# pkg-config gives no run path: shared libraries are found as the host's own would be.
LD_LIBRARY_PATH="$(dirname "$pcdir")" "$work/consumer-pc" "$work/out/pc"

# The tool, when it was built, is installed and runs from the prefix.
if [[ -x "$work/prefix/bin/tnw" ]]; then
    "$work/prefix/bin/tnw" info "$work/out/cmake.shp" | grep -q "Yield"
fi
if [[ -n "$python" ]]; then
    package=$(dirname "$(find "$work/prefix" -name __init__.py -path "*/tnw/*")")
    LD_PRELOAD="$preload" ASAN_OPTIONS=detect_leaks=0 PYTHONPATH="$(dirname "$package")" \
        "$python" -c "import sys, tnw; sys.exit(tnw.read_table(sys.argv[1], numpy=False)['Yield'] != [181.25, 0.5, 203.75])" \
        "$work/out/cmake.dbf"
fi
echo "install test passed"
