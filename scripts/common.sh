# shellcheck shell=bash
# Sourced by the scripts beside it: help, where things are, and how a preset is built.
script=$(realpath "$0")
root=$(realpath "$(dirname "${BASH_SOURCE[0]}")/..")
# shellcheck disable=SC2034  # for those that source this
cache=${QUILLON_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/quillon}
cd "$root" || exit
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1  # another checkout finds what this one compiled

# print_help: prints the comment at the top of the script.
print_help() { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$script"; }

# usage: ends a script that was called wrongly.
usage() {
  print_help >&2
  exit 2
}

case ${1:-} in
  -h | --help) print_help; exit ;;
esac

say() { printf '== %s\n' "$*"; }

# configure_preset PRESET [CMAKE ARGUMENTS...]
configure_preset() {
  local preset=$1 output
  shift
  say "configure $preset"
  command -v ccache > /dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  output=$(cmake --preset "$preset" "$@" 2>&1) || { printf '%s\n' "$output"; return 1; }
}

# build_preset PRESET [TARGETS...]
build_preset() {
  local preset=$1
  shift
  say "build $preset"
  cmake --build --preset "$preset" ${1:+--target "$@"} -- --quiet
}
