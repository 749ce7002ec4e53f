# Sourced by the scripts beside it: where things are, and how a preset is built.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cache=${QUILLON_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/quillon}
cd "$root"
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1  # another checkout finds what this one compiled

say() { printf '== %s\n' "$*"; }

# configure_preset PRESET [CMAKE ARGUMENTS...]
configure_preset() {
  local preset=$1
  shift
  say "configure $preset"
  command -v ccache > /dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  cmake --preset "$preset" "$@" > "/tmp/quillon-configure-$$" 2>&1 ||
    { cat "/tmp/quillon-configure-$$"; rm -f "/tmp/quillon-configure-$$"; return 1; }
  rm -f "/tmp/quillon-configure-$$"
}

# build_preset PRESET [TARGETS...]
build_preset() {
  local preset=$1
  shift
  say "build $preset"
  cmake --build --preset "$preset" ${1:+--target "$@"} -- --quiet
}
