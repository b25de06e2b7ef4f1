# Sourced by the scripts beside it.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }

# configure PRESET: writes the build files where there are none yet. Its log shows on failure only.
configure() {
  local directory="$root/build/$1"
  [ -f "$directory/build.ninja" ] && return
  say "configuring build/$1"
  mkdir -p "$directory"
  (cd "$root" && cmake --preset "$1") >"$directory/configure.log" 2>&1 && return
  cat "$directory/configure.log" >&2
  rm -f "$directory/build.ninja"
  return 1
}

# build PRESET [TARGET…]: what the compiler says goes to standard error; nothing, when all is up to
# date already.
build() {
  local preset=$1
  shift
  configure "$preset" || return
  (cd "$root" && cmake --build --preset "$preset" ${1:+--target "$@"} 2>&1) |
    sed -u '/^ninja: no work to do/d' >&2
}
