#!/usr/bin/env bash
# Installs the Debian packages the build needs, only those that are missing.
set -euo pipefail
# clang, its sanitizer and libFuzzer runtimes and llvm (for symbolized reports) build and run the
# fuzz targets; python3 writes their seed corpora.
packages=(cmake g++ make libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev nlohmann-json3-dev locales
          clang libclang-rt-14-dev llvm python3)
# /usr/bin/time measures peak memory in bench/scaling.sh.
packages+=(time)
# gcovr reports line coverage in scripts/coverage.sh.
packages+=(gcovr)
# doxygen builds the API reference (the docs target); pkgconf checks the installed orvsdk.pc.
packages+=(doxygen pkgconf)
# The orvasf Python package (python/) is built with pybind11 against Debian's Python and NumPy;
# pytest runs its tests.
packages+=(python3-dev python3-numpy pybind11-dev python3-pytest)
# xmllint (libxml2-utils) checks that the SVG pictures of render and plot are well-formed XML.
packages+=(libxml2-utils)
# script (bsdutils) runs orvasf batch on a pseudo-terminal to check its progress line.
packages+=(bsdutils)
# tinygltf reads and writes glTF files; node and npm run the glTF checks of the Khronos validator
# and three.js (package.json), and assimp reads and writes glTF files for them. A node that came
# with its own npm (as other distributions of node do) is kept.
packages+=(libtinygltf-dev assimp-utils)
# Headless Chromium opens the pages of orvasf view in their test (through puppeteer-core).
packages+=(chromium-headless-shell)
command -v node >/dev/null 2>&1 || packages+=(nodejs)
command -v npm >/dev/null 2>&1 || packages+=(npm)
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}" >&2
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}" >/dev/null
fi

# A locale with a decimal comma, so the tests prove that numbers are read and written the same
# way whatever the process locale is.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
  echo "setup: generating the de_DE.UTF-8 locale" >&2
  if [ "$(id -u)" -eq 0 ]; then
    sed -i 's/^# *de_DE.UTF-8 UTF-8/de_DE.UTF-8 UTF-8/' /etc/locale.gen && locale-gen >/dev/null
  else
    sudo sed -i 's/^# *de_DE.UTF-8 UTF-8/de_DE.UTF-8 UTF-8/' /etc/locale.gen && sudo locale-gen >/dev/null
  fi
fi

# The node packages of the glTF checks, at the versions package-lock.json pins.
root="$(cd "$(dirname "$0")/.." && pwd)"
if [ ! -d "$root/node_modules" ] || [ "$root/package-lock.json" -nt "$root/node_modules" ]; then
  echo "setup: installing the node packages of package-lock.json" >&2
  (cd "$root" && npm ci --no-audit --no-fund --loglevel=error)
fi
