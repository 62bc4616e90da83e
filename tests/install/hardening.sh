#!/usr/bin/env bash
# Asks each file for what the linker and the compiler put in against misuse. Usage: hardening.sh FILE...
set -euo pipefail
status=0
want() { # FILE WHAT PATTERN, in what stands on standard input
    grep -q -- "$3" || { echo "$1: no $2"; status=1; }
}
for file; do
    want "$file" "BIND_NOW" 'BIND_NOW\|NOW' < <(readelf -dW "$file")
    want "$file" "RELRO" GNU_RELRO < <(readelf -lW "$file")
    want "$file" "control-flow protection" 'IBT, SHSTK' < <(readelf -nW "$file")
    want "$file" "stack protector" __stack_chk_fail < <(readelf --dyn-syms -W "$file")
    ! readelf -lW "$file" | grep GNU_STACK | grep -q E || { echo "$file: a stack that can be run"; status=1; }
done
want "$1" "checked library calls" '_chk@' < <(readelf --dyn-syms -W "$1")
exit $status
