#!/usr/bin/env bash
# Tries the installer window on the sample kit: installs what building needs
# (.ci/setup), builds ord8-setup and the sample kit, and starts the installer on it.
# With a display ($DISPLAY) the window opens there and you click through it. Without
# one it runs under Xvfb and walks every page by itself as a user would
# (tools/window_driver.py), saving a screenshot of each page.
#
# A scratch HOME and TMPDIR are used, so the real templates folder and launcher file
# (~/.Tavri/ostart/ostart.cfg) stay as they are; --for-real uses the real ones.
set -euo pipefail
usage="usage: tools/try-installer.sh [--for-real] [--lang CODE] [--shots DIR]"
for_real=(); lang=en; shots=build/try-installer
while [ $# -gt 0 ]; do
  case $1 in
    --for-real) for_real=(--for-real) ;;
    --lang) lang=${2:?$usage}; shift ;;
    --shots) shots=${2:?$usage}; shift ;;
    *) echo "$usage" >&2; exit 2 ;;
  esac
  shift
done
cd "$(dirname "$0")/.."
bash .ci/setup
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target ord8-setup ord8kit ord8_sample_kit

if [ -z "${DISPLAY:-}" ]; then
  echo "== no display: ord8-setup walks its pages under Xvfb; screenshots in $shots/"
  exec python3 tools/window_driver.py "$shots" --lang "$lang" "${for_real[@]}"
fi

setup=$PWD/build/ord8-setup
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp build/examples/ord8.dkz "$work/"
if [ ${#for_real[@]} -eq 0 ]; then
  mkdir "$work/home" "$work/tmp"
  export HOME=$work/home TMPDIR=$work/tmp
  # GNUstep finds the user's folder without HOME; its defaults go here instead.
  echo "GNUSTEP_USER_DEFAULTS_DIR=$work/defaults" > "$work/gnustep.conf"
  chmod 600 "$work/gnustep.conf"
  export GNUSTEP_CONFIG_FILE=$work/gnustep.conf
  echo "== scratch HOME and TMPDIR in $work (removed afterwards)"
fi
echo "== ord8-setup in display $DISPLAY"
(cd "$work" && "$setup" usecwd "/L$lang")
launcher=$HOME/.Tavri/ostart/ostart.cfg
if [ -f "$launcher" ]; then
  echo "== $launcher:"
  cat "$launcher"
fi
