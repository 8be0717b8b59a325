#!/bin/bash
# Builds the Debian package and lets lintian judge it.
#
#   deb.sh BUILD
set -u
build=$1
folder=$(mktemp -d "${TMPDIR:-/tmp}/clipwren-deb.XXXXXX") || exit 1
trap 'rm -rf "$folder"' EXIT
fail() {
    echo "deb.sh: $1" >&2
    exit 1
}

(cd "$build" && umask 022 && cpack -G DEB -D CPACK_OUTPUT_FILE_PREFIX="$folder") >"$folder/log" 2>&1 ||
    fail "cpack failed: $(cat "$folder/log")"
package=$(echo "$folder"/clipwren_*.deb)
[ -s "$package" ] || fail 'there is no package'
depends=$(dpkg-deb -f "$package" Depends)
for library in libqt6widgets6 libqt6dbus6 libxcb1 libxcb-damage0; do
    [[ $depends == *"$library"* ]] || fail "the package does not depend on $library but on: $depends"
done
# Warnings count too: there are none.
LC_ALL=C lintian --allow-root --fail-on error,warning "$package" || fail 'lintian found something'
