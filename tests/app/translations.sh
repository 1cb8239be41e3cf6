#!/usr/bin/env bash
# translations.sh SOURCES LUPDATE: fails when a text in the sources lacks its translation.
set -euo pipefail
sources=$1 lupdate=$2
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
status=0
for catalogue in "$sources"/app/translations/vornupdater_{de,zh_CN}.ts; do
    cp "$catalogue" "$copy/catalogue.ts"
    (cd "$sources" && "$lupdate" -silent -I . -locations none -no-obsolete -extensions cpp,h,ui \
        app cli window platform -ts "$copy/catalogue.ts")
    if [ "$(grep -c '<source>' "$copy/catalogue.ts")" -lt 100 ] ||
        grep -B1 'type="unfinished"' "$copy/catalogue.ts"; then
        echo "$catalogue: texts without translation; see ./run translations"
        status=1
    fi
done
exit $status
