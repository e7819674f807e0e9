#!/usr/bin/env bash
# Installs, from Debian's archive, only the packages that are not there yet.
set -euo pipefail
pkgs=(
  build-essential cmake ninja-build ccache pkg-config clang clang-format libclang-rt-14-dev
  qt6-base-dev qt6-base-dev-tools libgl-dev
  libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-base-apps gstreamer1.0-tools ffmpeg
  libaravis-dev libusb-1.0-0-dev  # aravis-0.8.pc requires libusb-1.0.pc
  aravis-tools  # the fake GigE camera the tests stream from over loopback
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  libjpeg62-turbo-dev
  xvfb xauth imagemagick x11-apps fonts-dejavu-core
  # The Debian package and its checks; a CJK font and Qt's own Japanese texts (message boxes).
  dpkg-dev desktop-file-utils appstream librsvg2-bin lintian man-db groff-base fonts-noto-cjk qt6-translations-l10n
)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "deps: all packages present"
  exit 0
fi
echo "deps: installing ${missing[*]}"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO=sudo
$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
