# Shared steps of scripts/run and scripts/test: install what is missing, then
# configure and build incrementally. Sourced, not run.

GLIMPSO_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
GLIMPSO_BUILD_DIR=${GLIMPSO_BUILD_DIR:-$GLIMPSO_ROOT/build}

say() { printf '[glimpso] %s\n' "$*" >&2; }

# Package names listed in scripts/deps/<kind>-*.txt, one or more a line, '#' starts a comment.
glimpso_packages() {
  local kind
  for kind in "$@"; do
    cat "$GLIMPSO_ROOT"/scripts/deps/"$kind"-*.txt 2>/dev/null
  done | sed 's/#.*//' | tr -s ' \t' '\n\n' | sed '/^$/d' | sort -u
}

glimpso_missing_packages() {
  local pkg
  for pkg in "$@"; do
    dpkg-query -W -f='${db:Status-Status}\n' "$pkg" 2>/dev/null | grep -qx installed || echo "$pkg"
  done
}

# glimpso_install_deps build [test ...]: apt-get installs only what is missing.
glimpso_install_deps() {
  local wanted missing sudo=""
  mapfile -t wanted < <(glimpso_packages "$@")
  mapfile -t missing < <(glimpso_missing_packages "${wanted[@]}")
  if [ "${#missing[@]}" -eq 0 ]; then
    say "all ${#wanted[@]} packages are installed"
  else
    if [ "$(id -u)" -ne 0 ]; then
      command -v sudo >/dev/null || { say "need root to install: ${missing[*]}"; return 1; }
      sudo="sudo"
    fi
    say "installing ${#missing[@]} missing packages: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update -qq >/dev/null
    $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
  fi
  glimpso_install_npm
}

# npm installs the pinned icon set into the build tree during the build. Where a
# Node.js is already installed (with its own npm), that one is used; otherwise
# Debian's npm is installed.
glimpso_install_npm() {
  command -v npm >/dev/null && return 0
  local sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  say "installing npm"
  $sudo apt-get update -qq >/dev/null
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends npm >/dev/null
}

glimpso_build() {
  if [ ! -f "$GLIMPSO_BUILD_DIR/build.ninja" ]; then
    say "configuring in $GLIMPSO_BUILD_DIR"
    cmake -S "$GLIMPSO_ROOT" -B "$GLIMPSO_BUILD_DIR" -G Ninja \
      -DCMAKE_BUILD_TYPE="${GLIMPSO_BUILD_TYPE:-RelWithDebInfo}" "$@" >/dev/null
  fi
  say "building"
  cmake --build "$GLIMPSO_BUILD_DIR" -j "$(nproc)"
}
