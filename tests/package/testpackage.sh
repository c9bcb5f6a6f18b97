#!/usr/bin/env bash
# Builds the Debian package from a build tree and checks its files, its control
# fields, its desktop entry and AppStream entry, its manual page and changelog,
# and that Debian's own checker finds nothing wrong with it.
# Usage: testpackage.sh BUILD_DIR PROGRAM_DIR VERSION
set -euo pipefail
build=$1 program_dir=$2 version=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

if ! cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1; then
    cat "$work/cpack.log"
    exit 1
fi
debs=("$work"/tunecatch_*.deb)
deb=${debs[0]}
[ "${#debs[@]}" -eq 1 ] && [ -f "$deb" ] || { echo "FAIL: expected one package, found: ${debs[*]}"; exit 1; }
dpkg-deb -x "$deb" "$work/root"

# Files: exactly the installation folder as the build lays it out (the program,
# whatever sits next to it, and the installed station list), the link that
# starts it by name, the desktop and AppStream entries, the icons, the manual
# page, the copyright file and the changelog.
metainfo=usr/share/metainfo/org.example.tunecatch.metainfo.xml
expected=(usr/lib/tunecatch/Stations.txt usr/share/applications/tunecatch.desktop
    usr/share/icons/hicolor/scalable/apps/tunecatch.svg "$metainfo" usr/share/man/man1/tunecatch.1.gz
    usr/share/doc/tunecatch/copyright usr/share/doc/tunecatch/changelog.gz)
for size in 48 128 256; do
    expected+=("usr/share/icons/hicolor/${size}x${size}/apps/tunecatch.png")
done
while IFS= read -r name; do
    expected+=("usr/lib/tunecatch/$name")
done < <(find "$program_dir" -type f -printf '%P\n')
diff <(printf '%s\n' "${expected[@]}" | sort -u) \
    <(cd "$work/root" && find . -type f -printf '%P\n' | sort) >"$work/files.diff" ||
    fail "package files differ from the installation folder and desktop files (< missing, > extra):
$(cat "$work/files.diff")"

listing=$(dpkg-deb -c "$deb")
grep -q '^lrwxrwxrwx root/root .* \./usr/bin/tunecatch -> \.\./lib/tunecatch/tunecatch$' <<<"$listing" ||
    fail "usr/bin/tunecatch is not a link to the program"
grep -q '^-rwxr-xr-x root/root .* \./usr/lib/tunecatch/tunecatch$' <<<"$listing" ||
    fail "the program is not an executable owned by root"
if grep -v ' root/root ' <<<"$listing" | grep -q .; then
    fail "files not owned by root"
fi
for size in 48 128 256; do
    file "$work/root/usr/share/icons/hicolor/${size}x${size}/apps/tunecatch.png" |
        grep -q "PNG image data, $size x $size," || fail "the ${size}x${size} icon is not a PNG of that size"
done

# The desktop entry is valid and names the command and the icon the package holds.
desktop=$work/root/usr/share/applications/tunecatch.desktop
desktop-file-validate "$desktop" || fail "desktop-file-validate rejects the desktop entry"
exec_name=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$desktop")
icon_name=$(sed -n 's/^Icon=//p' "$desktop")
[ -L "$work/root/usr/bin/$exec_name" ] || fail "Exec=$exec_name is not in usr/bin"
[ -f "$work/root/usr/share/icons/hicolor/scalable/apps/$icon_name.svg" ] || fail "Icon=$icon_name has no icon"

# The AppStream entry is valid, launches that desktop entry, provides the
# command and names this version.
appstreamcli validate --no-net "$work/root/$metainfo" >"$work/appstream.log" 2>&1 ||
    fail "appstreamcli rejects the AppStream entry: $(cat "$work/appstream.log")"
grep -q '<launchable type="desktop-id">tunecatch.desktop</launchable>' "$work/root/$metainfo" ||
    fail "the AppStream entry does not launch tunecatch.desktop"
grep -q "<binary>$exec_name</binary>" "$work/root/$metainfo" || fail "the AppStream entry does not provide $exec_name"
grep -q "<release version=\"$version\"" "$work/root/$metainfo" || fail "the AppStream entry has no release $version"

# The manual page names every switch the command line knows and every exit
# status; the changelog's newest entry is this version, so a new version
# cannot ship without one.
manual=$(zcat "$work/root/usr/share/man/man1/tunecatch.1.gz")
switches=$(sed -n 's/.*token == u"-\([a-z]*\)".*/\1/p' "$(dirname "$0")/../../src/recorder/launchswitches.cpp")
[ -n "$switches" ] || fail "no switches found in launchswitches.cpp"
for switch in $switches; do
    roff="\\-$switch" # roff writes "-xh" as \-xh
    name=$roff awk '($1 == ".B" || $1 == ".BI") && $2 == ENVIRON["name"] { found = 1 } END { exit !found }' \
        <<<"$manual" || fail "the manual page does not describe -$switch"
done
for status in 0 1 2 3 4 5; do
    sed -n '/^\.SH EXIT STATUS/,/^\.SH /p' <<<"$manual" | grep -qx "\.B $status" ||
        fail "the manual page does not explain exit status $status"
done
for option in help version; do
    grep -q "^\.B \\\\-\\\\-$option" <<<"$manual" || fail "the manual page does not describe --$option"
done
gzip -dc "$work/root/usr/share/man/man1/tunecatch.1.gz" | groff -man -Tutf8 -ww >/dev/null 2>"$work/man.log"
[ ! -s "$work/man.log" ] || fail "the manual page has warnings: $(cat "$work/man.log")"
zcat "$work/root/usr/share/doc/tunecatch/changelog.gz" >"$work/changelog"
changelog=$(dpkg-parsechangelog -l "$work/changelog" -S Version)
[ "$changelog" = "$version" ] || fail "the changelog's newest entry is $changelog, expected $version"

# Debian's checker: no error and no warning.
lintian --fail-on error,warning "$deb" >"$work/lintian.log" 2>&1 ||
    fail "lintian: $(cat "$work/lintian.log")"

# Control fields.
field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package)" = tunecatch ] || fail "Package: $(field Package)"
[ "$(field Version)" = "$version" ] || fail "Version: $(field Version), expected $version"
[ "$(field Architecture)" = "$(dpkg --print-architecture)" ] || fail "Architecture: $(field Architecture)"
depends=$(field Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//' | sort -u)

# Every library the packaged programs link and every plugin they load at run
# time belongs to a package named in Depends.
owner() { dpkg -S "$1" 2>/dev/null | head -n1 | cut -d: -f1 || true; }
needed=()
while IFS= read -r elf; do
    resolved=$(ldd "$elf")
    for soname in $(readelf -d "$elf" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
        path=$(awk -v name="$soname" '$1 == name && $2 == "=>" { print $3 }' <<<"$resolved")
        [ -n "$path" ] && needed+=("$path") || fail "$(basename "$elf") needs $soname, which is not found"
    done
done < <(find "$work/root/usr/lib/tunecatch" -type f -exec sh -c 'file -b "$1" | grep -q "^ELF"' _ {} \; -print)
arch=$(gcc -print-multiarch)
qt=/usr/lib/$arch/qt6/plugins gst=/usr/lib/$arch/gstreamer-1.0
needed+=("$qt/platforms/libqxcb.so" "$qt/platforms/libqoffscreen.so"
    "$qt/multimedia/libgstreamermediaplugin.so" "$qt/tls/libqopensslbackend.so"
    "$gst/libgstplayback.so" "$gst/libgsttypefindfunctions.so" "$gst/libgstsoup.so"
    "$gst/libgstmpg123.so" "$gst/libgstaudioparsers.so" "$gst/libgstfaad.so")
for path in "${needed[@]}"; do
    package=$(owner "$path")
    [ -n "$package" ] || package=$(owner "$(readlink -f "$path")")
    if [ -z "$package" ]; then
        fail "$path belongs to no installed package"
    elif ! grep -qx "$package" <<<"$depends"; then
        fail "$path is in $package, which Depends does not name"
    fi
done

[ "$failures" -eq 0 ] || { echo "$failures check(s) failed"; exit 1; }
echo "package $(basename "$deb") checked"
