#!/bin/bash
# Installs what building, running and testing need on Debian 12 and 13, where it is missing: as root, or with sudo
# for apt and dpkg alone. Does nothing, at once, where everything is there. Last it looks whether this machine
# lets the user make a sandbox. TAVREL_HAVE_PACKAGES=1: takes it that everything is there, under whatever name.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

packages=(
  # build and checks
  cmake ninja-build g++ g++-mingw-w64-i686-posix doctest-dev nlohmann-json3-dev libcli11-dev
  clang libclang-rt-dev clang-format clang-tidy
  # sandbox: its walls, Wine with what it draws windows and text with, display, update server, picture of the screen
  bubblewrap wine wine32:i386 wine64 fonts-wine libxrender1:i386 libxcursor1:i386 libxrandr2:i386
  xvfb xdotool imagemagick nginx-light
  # installer and release
  nsis osslsigncode zip jq
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

fetch_lists() { run_apt update || say "Not all package lists could be fetched; going on with the others"; }

# What an installation that was broken off left behind is finished with the same step.
install_missing() { run_apt install -y --no-install-recommends --fix-broken "${missing[@]}"; }

# Debian's own mirror as this machine's sources name it, and the name they give the release.
debian_mirror() {
  # shellcheck disable=SC2016
  apt-get indextargets --format '$(REPO_URI) $(RELEASE)' 'Origin: Debian' 2>/dev/null |
    awk -v name="$1" '$2 == name || $2 ~ /^(old)?stable$/ { print; exit }'
}

# The security archive's index for i386 can lag behind the one for amd64; apt then finds no i386 library that
# fits its installed twin. The release and its updates alone, of both architectures, do fit, once what came from
# the security archive may step back. The machine's own sources stay as they are, so its next upgrade brings that
# forward again.
install_from_release_alone() {
  local folder=$build_root/apt mirror older release
  read -r mirror release < <(debian_mirror "$1") ||
    die "apt's sources name no mirror of Debian's $1; see $log"
  say "The usual sources do not resolve; trying $release and $release-updates alone, from $mirror"
  mkdir -p "$folder/lists/partial"
  printf "deb [arch=amd64,i386] $mirror %s main\n" "$release" "$release-updates" >"$folder/release.list"
  # Only a priority above 1000 makes apt choose an older package than the installed one.
  printf 'Package: *\nPin: release o=Debian\nPin-Priority: 1001\n' >"$folder/preferences"
  apt_options+=(-o "Dir::Etc::SourceList=$folder/release.list" -o Dir::Etc::SourceParts=-
    -o "Dir::Etc::Preferences=$folder/preferences" -o Dir::Etc::PreferencesParts=-
    -o "Dir::State::Lists=$folder/lists" --allow-downgrades)
  fetch_lists
  install_missing || return
  older=$(grep -A 99 'will be DOWNGRADED' "$log" | sed -n 's/^  //p' | tr '\n' ' ')
  if [[ -n $older ]]; then say "Packages that had to step back for this, until the next upgrade: $older"; fi
}

install_packages() {
  local hook ID='' PRETTY_NAME='this system' VERSION_CODENAME=''
  # shellcheck source=/dev/null
  . /etc/os-release
  [[ $ID == debian && ($VERSION_CODENAME == bookworm || $VERSION_CODENAME == trixie) ]] ||
    die "$PRETTY_NAME is neither Debian 12 nor 13: go on in one of them (docker run --privileged -it -v" \
      "\"\$PWD:/app\" -w /app debian:12), or install what corresponds to these packages and set" \
      "TAVREL_HAVE_PACKAGES=1: ${missing[*]}"
  if ((EUID != 0)) && ! { command -v sudo && sudo -- apt-get --version; } >/dev/null; then
    die "installing packages takes root's rights, and there is no sudo that gives them: have root run" \
      "scripts/setup.sh, or install ${missing[*]}"
  fi
  mkdir -p "$build_root"
  : >"$log"
  say "Installing ${#missing[@]} missing packages with apt (some minutes on a fresh machine; log: $log):"
  say "  ${missing[*]}"
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    say "Adding the i386 architecture (32-bit Wine)"
    as_root dpkg --add-architecture i386
  fi
  if [[ -n $(dpkg --audit) ]]; then
    say "Finishing an installation that was broken off"
    as_root dpkg --configure -a </dev/null >>"$log" 2>&1 || true
  fi
  if [[ " ${missing[*]} " == *" nginx-light "* ]]; then
    # Debian starts a web server that it installs; here only sandboxes have one. In one line: apt hands its
    # options on in a file, in which a value ends with its line.
    hook='[ ! -d /run/systemd/system ] || systemctl --quiet disable --now nginx.service 2>/dev/null || true'
    apt_options+=(-o "DPkg::Post-Invoke::=$hook")
  fi
  say "Fetching the package lists"
  fetch_lists
  say "Installing"
  if ! install_missing && ! install_from_release_alone "$VERSION_CODENAME"; then
    tail -n 30 "$log" >&2
    die "installing failed; see $log"
  fi
  mapfile -t missing < <(missing_packages)
  ((${#missing[@]} == 0)) || die "still missing: ${missing[*]}; see $log"
  [[ -z $(dpkg --audit) ]] || die "some packages are not configured; 'dpkg --audit' names them, $log says why"
  say "Everything needed is installed"
}

export DEBIAN_FRONTEND=noninteractive
apt_options=()
# Packages that are being unpacked are set up to the end, whatever is pressed; nothing more is begun then.
trap 'die "interrupted; the next start goes on from here"' INT TERM
if [[ ${TAVREL_HAVE_PACKAGES-} != 1 ]]; then
  missing=("${packages[@]}")
  if command -v dpkg-query >/dev/null; then mapfile -t missing < <(missing_packages); fi
  if ((${#missing[@]})); then install_packages; fi
fi
refusal=$(bwrap --ro-bind / / --proc /proc --unshare-net --unshare-pid true 2>&1) ||
  die "this machine lets $(id -un) make no namespaces, which the sandbox is made of ($refusal); go on as root, in a" \
    "container with --privileged, or let root allow them: sysctl user.max_user_namespaces=10000" \
    "kernel.unprivileged_userns_clone=1 kernel.apparmor_restrict_unprivileged_userns=0 (as far as they exist)"
