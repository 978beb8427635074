#!/usr/bin/env bash
# Installs every Debian package needed to build, test, benchmark and fuzz datamodel.
# Idempotent and non-interactive: it installs only what is missing and runs
# `apt-get update` once, only when something has to be installed.
set -euo pipefail

packages=(
    build-essential cmake pkg-config ninja-build
    qt6-base-dev
    liblog4cxx-dev
    libboost-dev
    libeigen3-dev
    libproj-dev proj-data
    libgdal-dev
    libxml2-dev
    libgtest-dev libgmock-dev
    libbenchmark-dev
    clang libclang-rt-dev
    python3-numpy python3-pyproj
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "install-deps: all ${#packages[@]} packages present"
    exit 0
fi

echo "install-deps: installing ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
    sudo_cmd=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
