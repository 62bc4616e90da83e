#!/usr/bin/env bash
# Compiles every installed header alone, and a host that calls all they offer, as hosts may be compiled: with each compiler
# that is there, as C++17 to 23, optimised or not, without exceptions and type information, with the sanitizer that asks
# for the latter. The host links with nothing but the dynamic loader, and runs.
# Usage: headers.sh SOURCE-DIRECTORY BUILD-DIRECTORY
set -euo pipefail
source=$1 build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work
unset ZU_TRACE_LOGGING ZU_TRACE_SETTINGS_DIR

cmake --install "$build" --prefix "$work/root" >/dev/null
include=$work/root/include/stmdcm
flags=(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Werror -I"$include")
plugin=$(find "$work/root" -name libStmDCM.so)
mapfile -t headers < <(cd "$include" && find . -name '*.h' -printf '%P\n' | sort)
[[ ${#headers[@]} -le 40 ]] || { echo "${#headers[@]} headers are installed"; exit 1; }

fails() { echo "$*"; exit 1; }
one() { # COMPILER HEADER
    echo "#include \"$2\"" | "$1" -std=c++17 "${flags[@]}" -fsyntax-only -xc++ - || fails "$2 does not compile alone"
}
host() { # COMPILER FLAG...: builds and runs it
    local program
    program=$(mktemp -p "$work")
    "$@" "${flags[@]}" "$source/tests/install/every_call.cpp" -ldl -o "$program" || fails "$*: does not build"
    "$program" "$plugin" "$source/tests/data/full.tdf" || fails "$*: does not run"
}
refused() { # SENTENCE COMPILER FLAG...
    local text
    text=$(echo '#include "trace/dcm/DeviceConfigManager.h"' | "${@:2}" "${flags[@]}" -fsyntax-only -xc++ - 2>&1) &&
        fails "${*:2}: is not refused"
    grep -q "libStmDCM: $1" <<<"$text" || fails "${*:2}: is refused without its reason: $text"
}

declare -A compilers # by the file that they lead to
for compiler in $(compgen -c | grep -xE '(g|clang)\+\+(-[0-9]+)?'); do
    compilers[$(realpath "$(command -v "$compiler")")]=$compiler
done
for compiler in "${compilers[@]}"; do
    for header in "${headers[@]}"; do one "$compiler" "$header"; done
    for standard in 17 20 2b; do
        host "$compiler" -std=c++$standard -O2 -fno-rtti -fno-exceptions
    done
    host "$compiler" -std=c++17 -O0
    host "$compiler" -std=c++2b -O2
    host "$compiler" -std=c++20 -O1 -fsanitize=undefined -fno-sanitize-recover=all
    refused "its headers need C++17" "$compiler" -std=c++14
    refused "hosts share std::string with it, so they need the new one" "$compiler" -std=c++17 -D_GLIBCXX_USE_CXX11_ABI=0
done
refused "hosts share std::string and std::vector with it" g++ -std=c++17 -D_LIBCPP_VERSION=1
host g++ -std=c++17 -O2 -flto
host g++ -std=c++20 -O3
