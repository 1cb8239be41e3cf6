#!/usr/bin/env bash
# translations.sh SOURCES LUPDATE: fails when a text in the sources lacks its translation, or a
# translation has other places (%1) than its text.
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
    python3 - "$catalogue" <<'EOF' || status=1
import re, sys, xml.etree.ElementTree as tree
places = lambda text: sorted(re.findall(r'%(?:\d|n)', text or ''))
bad = [m.findtext('source') for m in tree.parse(sys.argv[1]).iter('message')
       if places(m.findtext('source')) != places(m.findtext('translation'))]
sys.exit('Other places than in the text: ' + '; '.join(bad) if bad else 0)
EOF
done
exit $status
