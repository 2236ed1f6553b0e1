#!/usr/bin/env bash
# One entry point for a fresh Debian 12 machine: installs what the build needs, builds, and
#   ./run.sh sample   draws a module of the bundled sample library (the main job)
#   ./run.sh test     runs every test
#   ./run.sh build    only builds
#   ./run.sh bench    runs the benchmarks and prints their ratios
set -euo pipefail
cd "$(dirname "$0")"
mode=${1:-sample}
build=${QV_BUILD_DIR:-build}

packages=(build-essential cmake ninja-build pkg-config ccache
          libgtest-dev libgmock-dev libbenchmark-dev
          libsqlite3-dev sqlite3 mdbtools mdbtools-dev
          libcairo2-dev fonts-wqy-microhei
          python3 python3-ezdxf python3-fonttools gettext help2man
          librecad poppler-utils
          libcurl4-openssl-dev curl python3-pyftpdlib
          qt6-base-dev xvfb xauth
          libzip-dev libpugixml-dev libxlsxwriter-dev python3-openpyxl)

install_packages() {
    local missing=()
    for p in "${packages[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing Debian packages: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

configure_and_build() {
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    cmake --build "$build" -j"$(nproc)"
}

install_packages
configure_and_build

case "$mode" in
    build) ;;
    test)
        ctest --test-dir "$build" --output-on-failure -j"$(nproc)" --timeout 900
        ;;
    sample)
        QV_BUILD_DIR="$build" bash scripts/sample.sh
        ;;
    bench)
        QV_BUILD_DIR="$build" bash scripts/bench.sh
        ;;
    *)
        echo "usage: ./run.sh [sample|test|build|bench]" >&2
        exit 2
        ;;
esac
