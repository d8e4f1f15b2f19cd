#!/usr/bin/env bash
# Installs the Debian packages the build needs, only those that are missing.
set -euo pipefail
packages=(cmake g++ make libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev nlohmann-json3-dev)
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
