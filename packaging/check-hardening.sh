#!/usr/bin/env bash
# check-hardening.sh TREE BUILD: fails when a program or library installed in TREE lacks a protection that
# cmake/Hardening.cmake asks for. BUILD is where it was compiled.
set -euo pipefail
tree=$1 build=$2 status=0 programs=0

# have TEXT PATTERN WHAT, lack TEXT PATTERN WHAT: complain about $file.
have() { grep -qE -- "$2" <<<"$1" || complain "no $3"; }
lack() { ! grep -qE -- "$2" <<<"$1" || complain "$3"; }
complain() {
    echo "${file#"$tree"/}: $1" >&2
    status=1
}

while IFS= read -r -d '' file; do
    [ "$(head -c4 "$file" | tr -d '\0')" = $'\x7fELF' ] || continue
    programs=$((programs + 1))
    headers=$(readelf -hlW "$file") dynamic=$(readelf -dW "$file")
    symbols=$(readelf --dyn-syms -W "$file")
    have "$headers" '^ *Type: +DYN' 'position-independent code'
    have "$headers" '^ +INTERP ' 'interpreter'
    have "$dynamic" 'FLAGS_1.* PIE' 'position-independent executable'
    have "$headers" '^ +GNU_RELRO ' 'RELRO'
    have "$dynamic" 'BIND_NOW|FLAGS_1.* NOW' 'BIND_NOW'
    have "$headers" '^ +GNU_STACK .* RW +0x' 'stack without execution'
    lack "$headers" '^ +LOAD .* RWE ' 'a segment that can be written and executed'
    lack "$dynamic" '\((RPATH|RUNPATH)\)' 'RPATH'
    lack "$dynamic" 'TEXTREL' 'TEXTREL'
    have "$symbols" ' __stack_chk_fail' 'stack protector'
    have "$symbols" '__glibcxx_assert_fail' 'libstdc++ assertions'
    # The C library's start files decide whether the linker may set the property itself.
    if [[ $headers == *X86-64* ]] && [ "$(objdump -d "$file" | grep -c endbr64)" -lt 20 ]; then
        complain "no control-flow protection"
    fi
done < <(find "$tree" -type f -path '*/bin/*' -print0)
[ $programs -gt 0 ] || { echo "$tree holds no program" >&2 && exit 1; }

while IFS= read -r -d '' file; do
    members=$(ar t "$file" | wc -l)
    case $(readelf -h "$file") in
    *X86-64*)
        [ "$(readelf -nW "$file" 2>/dev/null | grep -c 'IBT, SHSTK')" -eq "$members" ] ||
            complain "a member without control-flow protection"
        ;;
    esac
done < <(find "$tree" -name '*.a' -print0)

# These show in a program only where a function of ours needs them, which may be nowhere.
file=$build/compile_commands.json
for flag in -D_FORTIFY_SOURCE=2 -fstack-clash-protection; do
    [ "$(grep '"command":' "$file" | grep -cv -- " $flag ")" -eq 0 ] || complain "a source without $flag"
done
exit $status
