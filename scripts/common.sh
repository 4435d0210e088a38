# Shared by the scripts in this folder: package installation and the build.
# Sourced, not run.

TARN_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Packages every build needs.
TARN_BUILD_PACKAGES=(g++ cmake ninja-build ccache pkg-config qt6-base-dev libgl-dev
                     libgtest-dev libgmock-dev libmatio-dev libeigen3-dev
                     fonts-dejavu-core libtesseract-dev libleptonica-dev tesseract-ocr-eng
                     libreadline-dev)

# Installs those of the given Debian packages that are not installed yet.
# As root it calls apt-get directly, otherwise through sudo.
tarn_install_missing() {
  local missing=()
  local p
  for p in "$@"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
      missing+=("$p")
    fi
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing missing packages: ${missing[*]}"
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "These packages are missing and sudo is not available: ${missing[*]}" >&2
      return 1
    fi
    sudo=(sudo)
  fi
  export DEBIAN_FRONTEND=noninteractive
  "${sudo[@]}" apt-get update -qq
  "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# tarn_build DIR [cmake options...]: configures (once) and builds.
tarn_build() {
  local dir=$1; shift
  local gen=()
  command -v ninja >/dev/null && gen=(-G Ninja)
  if [ ! -f "$dir/CMakeCache.txt" ]; then
    cmake -S "$TARN_ROOT" -B "$dir" "${gen[@]}" "$@"
  else
    cmake "$dir" "$@" >/dev/null
  fi
  cmake --build "$dir" --parallel "$(nproc)"
}
