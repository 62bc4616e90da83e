#!/usr/bin/env bash
# Installs the build, compiles every installed header alone, then builds and runs the guide's host against the package.
# Usage: consumer.sh SOURCE-DIRECTORY BUILD-DIRECTORY COMPILER
set -euo pipefail
source=$1 build=$2 compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work

cmake --install "$build" --prefix "$work/root" >/dev/null
grep -q '^\.SH EXIT STATUS' "$work/root/share/man/man1/stmdcm.1"
for file in bash-completion/completions/stmdcm zsh/site-functions/_stmdcm fish/vendor_completions.d/stmdcm.fish; do
    grep -q stmdcm "$work/root/share/$file"
done
(cd "$work/root/include/stmdcm" && find . -name '*.h' -printf '%P\n') | while read -r header; do
    echo "#include \"$header\"" |
        "$compiler" -std=c++20 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I"$work/root/include/stmdcm" -xc++ - ||
        { echo "$header does not compile alone"; exit 1; }
done

cmake -G Ninja -S "$source/docs/small-host" -B "$work/host" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/root" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >/dev/null
cmake --build "$work/host" >/dev/null
printed=$("$work/host/small_host" "$(find "$work/root" -name libStmDCM.so)" "$source/tests/data/full.tdf" "$work/copy.tdf")
echo "$printed"
grep -q "ATB id 12, 16 pins" <<<"$printed"
grep -q "use case mod1" <<<"$printed"
cmp -n "$(stat -c %s "$source/tests/data/full.tdf")" "$source/tests/data/full.tdf" "$work/copy.tdf"
grep -aq "STM_DTC_target_pins = 8" "$work/copy.tdf"
