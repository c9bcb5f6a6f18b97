#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing Tunecatch need.
# Only what is missing is installed, so a second run costs a few seconds.
set -euo pipefail

packages=(
  # build
  cmake make g++ pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-multimedia-dev libgl-dev
  # tags of recorded songs
  libtag1-dev
  # decoders that find the quiet moment where songs are cut
  libmpg123-dev libfaad-dev libvorbis-dev libogg-dev
  # the skin engine checks style sheets with Qt's own parser
  qt6-base-private-dev
  # playback backend of Qt Multimedia
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
  # https stations: the system's certificate authorities
  ca-certificates
  # tests and benchmarks
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  icecast2 ezstream lame espeak-ng ffmpeg mpg123
  # Ogg Vorbis test audio (oggenc); MP3 comes from lame, AAC and Opus from ffmpeg
  vorbis-tools
  # scheduled recordings: systemd-analyze checks the units, systemd-escape their names
  systemd
  # the desktop's media controls and notifications are tested on a session bus of their own
  dbus-daemon
  # make fuzz: libFuzzer from clang
  clang libclang-rt-14-dev
  # the icon, the desktop entry, `make package` and Debian's checks of the package
  librsvg2-bin desktop-file-utils dpkg-dev file lintian appstream
  # screenshots and readable text under a virtual display; xdotool types into the
  # running program and imagemagick's import captures its windows
  xvfb xauth fonts-dejavu-core xdotool imagemagick
  # the screenshot script's loopback station
  python3
  # the modifier keys asked of the X server; the tests press keys through XTEST
  libxcb1-dev libxcb-xtest0-dev
  # the manual page is checked by rendering it
  groff-base
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if ((${#missing[@]})); then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  echo "Installing: ${missing[*]}"
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
