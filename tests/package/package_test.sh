#!/usr/bin/env bash
# Packs the build folder's program as a Debian package, checks its contents,
# lintian's verdict, the manual page, menu entry and metainfo, unpacks it into a
# scratch root and starts the unpacked program with a fresh data folder, which it
# must fill from the package.
# Usage: package_test.sh BUILD_DIR
set -euo pipefail
build=$(realpath "$1")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/out" >"$scratch/cpack.log" 2>&1 ||
  { cat "$scratch/cpack.log"; fail "cpack"; }
deb=$(ls "$scratch"/out/tavix_*.deb)
echo "package: $(basename "$deb")"

dpkg-deb -c "$deb" | awk '{print $6}' >"$scratch/contents"
for f in ./usr/bin/tavix \
  ./usr/share/tavix/Tavix.Ini ./usr/share/tavix/Message_E.txt ./usr/share/tavix/Message_J.txt \
  ./usr/share/tavix/Guidance_E.txt ./usr/share/tavix/Guidance_J.txt ./usr/share/tavix/Proof.dat \
  ./usr/share/applications/org.tavix.Tavix.desktop ./usr/share/metainfo/org.tavix.Tavix.metainfo.xml \
  ./usr/share/icons/hicolor/scalable/apps/org.tavix.Tavix.svg \
  ./usr/share/icons/hicolor/48x48/apps/org.tavix.Tavix.png \
  ./usr/share/icons/hicolor/128x128/apps/org.tavix.Tavix.png \
  ./usr/share/icons/hicolor/256x256/apps/org.tavix.Tavix.png \
  ./usr/share/doc/tavix/copyright ./usr/share/doc/tavix/changelog.gz ./usr/share/man/man1/tavix.1.gz; do
  grep -qxF "$f" "$scratch/contents" || fail "the package lacks $f"
done

depends=$(dpkg-deb -f "$deb" Depends)
echo "depends: $depends"
for lib in libqt6widgets6 libqt6gui6 libqt6core6 libgstreamer1.0-0 libaravis-0.8-0 libjpeg62-turbo \
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good; do
  [[ "$depends" == *"$lib"* ]] || fail "Depends lacks $lib"
done
[ "$(dpkg-deb -f "$deb" Section)" = science ] || fail "section"
[ -n "$(dpkg-deb -f "$deb" Maintainer)" ] || fail "maintainer"

# Debian's own checker: no error and no warning (information tags are shown only).
lintian --display-info "$deb" >"$scratch/lintian.log" 2>&1 || true
cat "$scratch/lintian.log"
! grep -q '^[EW]: ' "$scratch/lintian.log" || fail "lintian"

root="$scratch/root"
dpkg -x "$deb" "$root"

# The manual page renders without a warning, and names every option --help lists.
page="$root/usr/share/man/man1/tavix.1.gz"
MANWIDTH=80 MANPAGER=cat man --warnings -l "$page" >"$scratch/man.txt" 2>"$scratch/man.err" ||
  { cat "$scratch/man.err"; fail "man -l"; }
[ ! -s "$scratch/man.err" ] || { cat "$scratch/man.err"; fail "the manual page has warnings"; }
grep -qx "NAME" "$scratch/man.txt" && grep -q "^ *tavix - " "$scratch/man.txt" || fail "the manual page's NAME"
"$root/usr/bin/tavix" --help >"$scratch/help.txt" || fail "--help"
for option in $(grep -o -- '--[a-z]*' "$scratch/help.txt" | sort -u); do
  grep -q -- "$option" "$scratch/man.txt" || fail "the manual page lacks $option"
done
desktop-file-validate "$root/usr/share/applications/org.tavix.Tavix.desktop" || fail "desktop-file-validate"
appstreamcli validate --no-net "$root/usr/share/metainfo/org.tavix.Tavix.metainfo.xml" || fail "appstreamcli validate"
for size in 48 128 256; do
  file "$root/usr/share/icons/hicolor/${size}x${size}/apps/org.tavix.Tavix.png" | grep -q "${size} x ${size}" ||
    fail "the ${size}x${size} icon"
done

program="$root/usr/bin/tavix"
"$program" --version | grep -qx "Tavix [0-9.]*" || fail "--version"

# First start of the unpacked program: a fresh data folder, no camera.
export XDG_DATA_HOME="$scratch/xdg" HOME="$scratch/home" QT_QPA_PLATFORM=offscreen
unset TAVIX_HOME
mkdir -p "$HOME"
"$program" --camera sim >"$scratch/run.log" 2>&1 &
pid=$!
folder="$XDG_DATA_HOME/tavix"
for _ in $(seq 1 600); do
  grep -qs " Start\." "$folder/Error.Log" && break
  kill -0 "$pid" 2>/dev/null || break
  sleep 0.1
done
kill "$pid" 2>/dev/null || true
wait "$pid" 2>/dev/null || true
grep -qs " Start\." "$folder/Error.Log" || { cat "$scratch/run.log"; fail "the program did not start"; }
for f in "$root"/usr/share/tavix/*; do
  cmp -s "$f" "$folder/$(basename "$f")" || fail "the data folder lacks $(basename "$f") as shipped"
done
echo "seeded: $(ls "$folder" | tr '\n' ' ')"
echo "package test passed"
