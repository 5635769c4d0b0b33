#!/usr/bin/env bash
# Installs the Debian packages needed to build, test and benchmark the project.
# Idempotent: packages already installed are left alone, and apt is not touched at all
# when nothing is missing; the same for the test locale. Uses sudo only when not running as root.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qtbase5-dev qtbase5-dev-tools qttools5-dev-tools libqt5svg5-dev
  libvtk9-dev libvtk9-qt-dev libvtk-dicom-dev libgl1-mesa-dri
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev clang-format
  xvfb xauth fonts-dejavu-core locales
)
# A locale with a decimal comma, for the tests that numbers in files do not follow the user's
# locale.
test_locale=de_DE.UTF-8

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "install-deps: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# Through /etc/locale.gen, so that locale-gen keeps it when the locales package is upgraded.
if ! locale -a 2>/dev/null | grep -qix "${test_locale/UTF-8/utf8}"; then
  echo "install-deps: generating the locale $test_locale"
  if ! grep -q "^$test_locale UTF-8" /etc/locale.gen; then
    echo "$test_locale UTF-8" | $sudo tee -a /etc/locale.gen >/dev/null
  fi
  $sudo locale-gen
fi

echo "install-deps: all ${#packages[@]} packages and the locale $test_locale present"
