#!/bin/bash
# Installs the built program into an empty folder and checks everything that was put there.
#
#   install.sh BUILD
set -u
build=$1
root=$(mktemp -d "${TMPDIR:-/tmp}/clipwren-install.XXXXXX") || exit 1
trap 'rm -rf "$root"' EXIT
failures=0
fail() {
    echo "install.sh: $1" >&2
    failures=$((failures + 1))
}

cmake --install "$build" --prefix "$root" >/dev/null || fail 'cmake --install failed'
share=$root/share
for file in share/applications/app.clipwren.Clipwren.desktop share/metainfo/app.clipwren.Clipwren.metainfo.xml \
    share/icons/hicolor/{16x16,32x32,48x48,128x128,256x256}/apps/app.clipwren.Clipwren.png \
    share/icons/hicolor/scalable/apps/app.clipwren.Clipwren.svg share/man/man1/clipwren.1.gz \
    share/bash-completion/completions/clipwren share/doc/clipwren/{copyright,changelog.gz}; do
    [ -s "$root/$file" ] || fail "$file is missing"
done
[ -x "$root/bin/clipwren" ] || fail 'bin/clipwren is missing'

desktop-file-validate "$share/applications/app.clipwren.Clipwren.desktop" || fail 'the desktop entry is not valid'
appstreamcli validate --no-net "$share/metainfo/app.clipwren.Clipwren.metainfo.xml" || fail 'the metainfo is not valid'
warnings=$(MANWIDTH=80 man --warnings=all -l "$share/man/man1/clipwren.1.gz" 2>&1 >/dev/null)
[ -z "$warnings" ] || fail "the manual page: $warnings"

# The pictures have the sizes that their folders promise.
/usr/bin/python3 - "$share/icons/hicolor" <<'PYTHON' || fail 'an icon has the wrong size'
import pathlib, sys
from PIL import Image
wrong = [str(file) for file in pathlib.Path(sys.argv[1]).glob("*/apps/*.png")
         if "x".join(map(str, Image.open(file).size)) != file.parts[-3]]
print(*wrong, sep="\n", end="", file=sys.stderr)
sys.exit(bool(wrong))
PYTHON

# The same version everywhere.
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
grep -q "<release version=\"$version\"" "$share/metainfo/app.clipwren.Clipwren.metainfo.xml" ||
    fail "the metainfo does not know version $version"
zcat "$share/man/man1/clipwren.1.gz" | grep -q "^\.TH CLIPWREN 1 .*\"Clipwren $version\"" ||
    fail "the manual page is not of version $version"
zcat "$share/doc/clipwren/changelog.gz" | head -n 1 | grep -qF "clipwren ($version)" ||
    fail "the changelog does not begin with version $version"

# bash offers the options, and only once.
offered() {
    bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMPREPLY=(); _clipwren; echo "${COMPREPLY[*]}"' \
        - "$share/bash-completion/completions/clipwren" "$@"
}
[ "$(offered clipwren '')" = '--help --quit --trigger --version' ] || fail "completion offers: $(offered clipwren '')"
[ "$(offered clipwren --t)" = --trigger ] || fail "completion of --t offers: $(offered clipwren --t)"
[ -z "$(offered clipwren --help '')" ] || fail "completion offers a second option: $(offered clipwren --help '')"

# The program, its completion and its manual page know the same options.
told=$("$root/bin/clipwren" --help | grep -o -e '--[a-z]*' | sort -u)
[ "$(offered clipwren '' | tr ' ' '\n')" = "$told" ] || fail "completion does not offer what --help tells: $told"
for option in $told; do
    zcat "$share/man/man1/clipwren.1.gz" | grep -qF "${option//-/\\-}" || fail "the manual page lacks $option"
done
[[ $("$root/bin/clipwren" --version) == *"$version"* ]] || fail 'the program tells another version'

[ "$failures" = 0 ]
