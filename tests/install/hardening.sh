#!/usr/bin/env bash
# Asks each file for what the linker and the compiler put in against misuse. Usage: hardening.sh FILE...
set -euo pipefail
status=0
want() { # FILE WHAT PATTERN, in what stands on standard input
    grep -- "$3" >/dev/null || { echo "$1: no $2"; status=1; }
}
for file; do
    want "$file" "BIND_NOW" 'BIND_NOW\|NOW' < <(readelf -dW "$file")
    want "$file" "RELRO" GNU_RELRO < <(readelf -lW "$file")
    want "$file" "marks where jumps may land" endbr < <(objdump -d --no-show-raw-insn --section=.text "$file")
    ! readelf -lW "$file" | grep GNU_STACK | grep -q E || { echo "$file: a stack that can be run"; status=1; }
done
want "$1" "stack protector" __stack_chk_fail < <(readelf --dyn-syms -W "$1")
want "$1" "checked library calls" '_chk@' < <(readelf --dyn-syms -W "$1")
exit $status
