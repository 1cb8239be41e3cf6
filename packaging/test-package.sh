#!/usr/bin/env bash
# test-package.sh BUILD: packs the programs of a build and checks the packages; with VORN_CLEAN_ROOT set,
# also in a clean root, which takes minutes and the network. Ends with 77 (skipped) where no such root
# can be made.
set -euo pipefail
build=$(readlink -f "$1") here=$(dirname "$(readlink -f "$0")") work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT
export TMPDIR=$work
fail() { echo "$*" >&2 && exit 1; }

mkdir "$work/packages" "$work/tree"
cmake --build "$build" --target packages >/dev/null
cp "$here/test-in-root.sh" "$build"/packages/*.deb "$work/packages"
cmake --build "$build" --target packages >/dev/null
for package in "$build"/packages/*.deb; do
    cmp "$package" "$work/packages/${package##*/}"
    dpkg-deb -x "$package" "$work/tree"
done
lintian --allow-root --fail-on error "$build"/packages/*.deb
cd "$work/tree/usr/share"
appstreamcli validate --no-net metainfo/*.xml
version=$(dpkg-deb -f "$build"/packages/vornupdater_*.deb Version)
for file in metainfo/*.xml doc/vornupdater/changelog.gz; do
    zgrep -qF "${version%-*}" "$file" || fail "$file does not know version ${version%-*}."
done
desktop-file-validate applications/*.desktop
"$here/check-hardening.sh" "$work/tree" "$build"
! grep -rF "${here%/packaging}/" "$work/tree" || fail "The place of the build is in the packages."

for program in ../bin/*; do
    page=man/man1/${program##*/}.1.gz
    [ -z "$(LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)" ] ||
        fail "$page has warnings."
    for command in '' device package-server info firmware update watch; do
        "$program" $command --help 2>/dev/null | grep -oE -- '--[a-z][a-z-]+' || true
    done | sort -u >"$work/options"
    zcat "$page" | sed 's/\\-/-/g' >"$work/page"
    while read -r option; do
        grep -qF -- "$option" "$work/page" || fail "$page lacks $option."
    done <"$work/options"
done

[ -n "${VORN_CLEAN_ROOT:-}" ] || exit 0
suite=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
if ! timeout 600 mmdebstrap --quiet --variant=apt --customize-hook="copy-in '$work/packages' /tmp" \
    --chrooted-customize-hook="bash /tmp/packages/test-in-root.sh" \
    "$suite" /dev/null >"$work/log" 2>&1; then
    tail -n 40 "$work/log" >&2
    ! grep -q "^In a clean root:" "$work/log" || fail "The packages failed in a clean root."
    echo "Skipped: no clean root can be made here, so the packages were not installed." >&2
    exit 77
fi
echo "The packages were installed, used, upgraded, removed and purged in a clean root."
