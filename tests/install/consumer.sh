#!/usr/bin/env bash
# Installs the build, follows the links of its pages, then builds and runs the guide's host as it was installed and the one
# that `new-host` writes, links the plug-in's code statically, and configures a host that has the whole project as a folder.
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
readelf -dW "$(find "$work/root" -name libStmDCM.so)" | grep -q 'SONAME.*\[libStmDCM\.so\.1\]'
docs=$(dirname "$(find "$work/root" -name host-guide.md)")
grep -oE '\]\([^):#]+' "$docs"/*.md | while IFS=: read -r page link; do
    [[ -e $docs/${link#*\(} ]] || { echo "$page: a dead link, ${link#*\(}"; exit 1; }
done

# The guide's walk, as it stands there.
walk=$(sed -n '/^```sh$/,/^```$/{//!p}' "$docs/host-guide.md" | sed "s|\bPREFIX\b|$work/root|g; s|build/release|$build|")
mkdir "$work/walked"
(cd "$work/walked" && bash -euo pipefail -c "$walk") >"$work/walk" 2>&1 || { cat "$work/walk"; exit 1; }
grep -q '^100% tests passed' "$work/walk"
grep -q 'STM_DTC_target_pins *8 ' "$work/walk"

cmake -G Ninja -S "$docs/small-host" -B "$work/host" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/root" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >/dev/null
cmake --build "$work/host" >/dev/null
printed=$("$work/host/small_host" "$(find "$work/root" -name libStmDCM.so)" "$source/tests/data/full.tdf" "$work/copy.tdf")
echo "$printed"
grep -q "ATB id 12, 16 pins" <<<"$printed"
grep -q "use case mod1" <<<"$printed"
cmp -n "$(stat -c %s "$source/tests/data/full.tdf")" "$source/tests/data/full.tdf" "$work/copy.tdf"
grep -aq "STM_DTC_target_pins = 8" "$work/copy.tdf"
rm "$work/copy.tdf"
checker=$(find "$work/root" -name libStmDCM-check.so)
[[ $("$work/host/small_host" "$checker" "$source/tests/data/full.tdf" "$work/copy.tdf" 2>&1) == "$printed" ]]

export CXX=$compiler CMAKE_PREFIX_PATH=$work/root PKG_CONFIG_PATH=$(dirname "$(find "$work/root" -name stmdcm.pc)")
"$(dirname "$0")/new-host.sh" "$work/root/bin/stmdcm" "$work"
cat >"$work/embedding.cpp" <<END
#include "trace/dcm/DeviceConfigManager.h"
int main() { DestroyDeviceConfigManager(nullptr); }
END
# The words of pkg-config are several: no quotes.
"$compiler" -std=c++20 "$work/embedding.cpp" $(pkg-config --cflags --libs stmdcm-static) -o "$work/embedding"
"$work/embedding"

mkdir "$work/whole"
cat >"$work/whole/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)  # with a target of its own for what is its own
enable_testing()
add_library(vorn STATIC $docs/small-host/main.cpp)
add_subdirectory($source stm-dcm)
add_executable(small_host $docs/small-host/main.cpp)
target_link_libraries(small_host PRIVATE StmDCM::headers)
add_executable(embedding $docs/small-host/main.cpp)
target_link_libraries(embedding PRIVATE StmDCM::static StmDCM::vorn)
END
cmake -G Ninja -S "$work/whole" -B "$work/whole/build" -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$work/whole/build" --target small_host >/dev/null
[[ $(<"$work/whole/build/build.ninja") != *-Werror* ]]
[[ $(ctest --test-dir "$work/whole/build" -N) == *"Total Tests: 0"* ]]
cmake --install "$work/whole/build" --prefix "$work/nothing" >/dev/null
[[ ! -e $work/nothing ]]
