#!/usr/bin/env bash
# Installs what the build needs when it is missing (Debian). Sourced by the
# other scripts; does nothing on a machine that has everything.
nimbet_need() {
  local missing=()
  for pkg in "$@"; do
    dpkg -s "$pkg" >/dev/null 2>&1 || missing+=("$pkg")
  done
  if [ ${#missing[@]} -gt 0 ]; then
    echo "installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
  fi
}
nimbet_need cmake g++ make python3 binutils libgtest-dev
