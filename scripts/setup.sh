#!/bin/bash
# Installs what building, running and testing need on Debian 12, where it is missing: as root, or with sudo
# for apt and dpkg alone. Does nothing, at once, where everything is there.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

packages=(
  # build and checks
  cmake ninja-build g++ g++-mingw-w64-i686-posix doctest-dev
  clang libclang-rt-14-dev clang-format clang-tidy
  # sandbox: its walls, Wine with what it draws windows and text with, display, update server, picture of the screen
  bubblewrap wine wine32:i386 wine64 fonts-wine libxrender1:i386 libxcursor1:i386 libxrandr2:i386
  xvfb xdotool imagemagick nginx-light
)
log=$build_root/setup.log

missing_packages() {
  local package installed
  installed=$(dpkg-query --show --showformat '${db:Status-Status} ${Package}:${Architecture}\n' |
    sed -n 's/^installed //p')
  for package in "${packages[@]}"; do
    if [[ $package == *:* ]]; then
      grep -qxF "$package" <<<"$installed" || printf '%s\n' "$package"
    else
      grep -qxE "${package//+/\\+}:(all|$(dpkg --print-architecture))" <<<"$installed" ||
        printf '%s\n' "$package"
    fi
  done
}

as_root() {
  if ((EUID == 0)); then "$@"; else sudo -- "$@"; fi
}

run_apt() {
  as_root apt-get -o Acquire::Retries=2 -o Acquire::http::Timeout=60 -o DPkg::Lock::Timeout=300 \
    "${apt_options[@]}" "$@" </dev/null >>"$log" 2>&1
}

# Debian's own mirror as this machine's sources name it.
debian_mirror() {
  local mirror
  # shellcheck disable=SC2016
  mirror=$(apt-get indextargets --format '$(REPO_URI) $(RELEASE)' 'Origin: Debian' 2>/dev/null |
    awk '$2 == "bookworm" || $2 == "stable" { print $1; exit }')
  [[ -n $mirror ]] || die "apt's sources name no mirror of Debian 12; see $log"
  printf '%s\n' "$mirror"
}

# The security archive's index for i386 can lag behind the one for amd64; apt then finds no i386 library that
# fits its installed twin. The release and its updates alone, of both architectures, do fit.
install_from_release_alone() {
  local folder=$build_root/apt mirror
  mirror=$(debian_mirror) || return
  say "The usual sources do not resolve; trying bookworm and bookworm-updates alone from $mirror"
  mkdir -p "$folder/lists/partial"
  printf 'deb [arch=amd64,i386] %s %s main\n' "$mirror" bookworm "$mirror" bookworm-updates \
    >"$folder/release.list"
  apt_options+=(-o "Dir::Etc::SourceList=$folder/release.list" -o Dir::Etc::SourceParts=-
    -o "Dir::State::Lists=$folder/lists" --allow-downgrades)
  run_apt update || return
  run_apt install -y --no-install-recommends "$@"
}

mapfile -t missing < <(missing_packages)
((${#missing[@]})) || exit 0

mkdir -p "$build_root"
: >"$log"
if ((EUID != 0)) && ! command -v sudo >/dev/null; then
  die "missing packages: ${missing[*]}; run this script as root, or install sudo"
fi
say "Installing ${#missing[@]} missing packages with apt (some minutes on a fresh machine; log: $log):"
say "  ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt_options=()
if [[ " ${missing[*]} " == *" nginx-light "* ]]; then
  # Debian starts a web server that it installs; here only sandboxes have one.
  apt_options+=(-o 'DPkg::Post-Invoke::=if [ -d /run/systemd/system ]; then
    systemctl --quiet disable --now nginx.service 2>/dev/null || true; fi')
fi
if ! dpkg --print-foreign-architectures | grep -qx i386; then
  say "Adding the i386 architecture (32-bit Wine)"
  as_root dpkg --add-architecture i386
fi
say "Fetching the package lists"
run_apt update || say "Not all package lists could be fetched; going on with the others"
say "Installing"
if ! run_apt install -y --no-install-recommends "${missing[@]}" &&
  ! install_from_release_alone "${missing[@]}"; then
  tail -n 30 "$log" >&2
  die "installing failed; see $log"
fi
mapfile -t missing < <(missing_packages)
((${#missing[@]} == 0)) || die "still missing: ${missing[*]}"
say "Everything needed is installed"
