#!/bin/bash
# Usage: scripts/setup.sh [--downgrade]
#
# Installs what building, running and testing need, where it is missing: on Debian 12 and 13, as root or with sudo for
# apt and dpkg alone; on other systems with apt it tries. Where everything is there it does nothing. At the end it says
# how sandboxes are isolated on this machine, or why none is possible. Outside a container it replaces a package by an
# older one only with --downgrade.
#
# TAVREL_HAVE_PACKAGES  1: install nothing; all packages are installed, possibly under other names
# TAVREL_BUILD_ROOT     folder for everything that is built, and for the log (default: build)
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/lib.sh"

downgrade=no
for argument; do
  case $argument in
    --downgrade) downgrade=yes ;;
    --help | -h) usage; exit ;;
    *) die "unknown argument: $argument; scripts/setup.sh --help tells more" ;;
  esac
done
packages=(
  # build and checks
  cmake ninja-build g++ g++-mingw-w64-i686-posix doctest-dev nlohmann-json3-dev libcli11-dev libutfcpp-dev
  clang libclang-rt-dev clang-format clang-tidy shellcheck yamllint
  # sandbox: isolation with and without namespaces, Wine and its fonts and X libraries, display, update server,
  # picture of the screen
  bubblewrap libnss-wrapper libnss-wrapper:i386 psmisc
  wine wine32:i386 wine64 fonts-wine libxrender1:i386 libxcursor1:i386 libxrandr2:i386
  xvfb xdotool imagemagick nginx
  # installer and release, benchmark
  nsis osslsigncode zip jq pandoc datamash
)
log=$build_root/setup.log

# An installed package has its architecture in its name, and where that is this machine's also a name without it.
missing_packages() {
  local native
  native=$(dpkg --print-architecture)
  printf '%s\n' "${packages[@]}" | grep -vxF -f <(
    dpkg-query --show --showformat '${db:Status-Status} ${Package}:${Architecture}\n' |
      sed -nE "/^installed /{ s///p; s/:(all|$native)\$//p }"
  )
}

as_root() {
  if ((EUID == 0)); then "$@"; else sudo -- "$@"; fi
}

run_apt() {
  as_root apt-get -o Acquire::Retries=2 -o Acquire::http::Timeout=60 -o DPkg::Lock::Timeout=300 \
    "${apt_options[@]}" "$@" </dev/null >>"$log" 2>&1
}

fetch_lists() { run_apt update || say "Not all package lists could be fetched; going on with the others"; }

# Also completes an interrupted installation.
install_missing() { run_apt install -y --no-install-recommends --fix-broken "${missing[@]}"; }

is_debian_12_or_13() { [[ $ID == debian && ($VERSION_CODENAME == bookworm || $VERSION_CODENAME == trixie) ]]; }

# Prints the missing packages that this system's package sources do not offer.
unknown_packages() {
  local package policy
  for package in "${missing[@]}"; do
    policy=$(apt-cache policy "$package")
    [[ $policy == *'  Candidate: '[^\(]* ]] || printf '%s\n' "$package"
  done
}

# A machine's first process is its init, a container's is mostly a command.
is_container() {
  systemd-detect-virt --quiet --container 2>/dev/null || [[ -e /.dockerenv || -e /run/.containerenv ]] ||
    ! [[ $(</proc/1/comm) =~ ^(systemd|init|runit|openrc-init|dinit)$ ]]
}

# Reads apt's output for an installation; prints the packages that it downgrades.
older_packages() { sed -n '/will be DOWNGRADED/,/^[^ ]/s/^  //p' | tr '\n' ' '; }

# Outside a container a person decides whether packages are replaced by older ones.
refuse_older_packages() {
  local older
  if [[ $downgrade == yes ]] || is_container; then return; fi
  older=$(apt-get "${apt_options[@]}" --simulate install --no-install-recommends --fix-broken "${missing[@]}" \
    2>>"$log" | older_packages)
  [[ -z $older ]] ||
    die "nothing was installed, because these packages would be replaced by older ones until the next upgrade:" \
      "${older% }. Allow it with scripts/setup.sh --downgrade, or start again when the sources resolve"
}

# Debian's own mirror as this machine's sources name it, and the name they give the release.
debian_mirror() {
  apt-get indextargets --format '$(REPO_URI) $(RELEASE)' 'Origin: Debian' 2>/dev/null |
    awk -v name="$1" '$2 == name || $2 ~ /^(old)?stable$/ { print; exit }'
}

# The security archive's index for i386 can lag behind the one for amd64; apt then finds no i386 library that
# fits its installed twin. Release and updates without the security archive resolve, if packages from that archive
# are downgraded. The machine's own sources stay as they are, so its next upgrade reverses that.
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
  refuse_older_packages
  install_missing || return
  older=$(older_packages <"$log")
  if [[ -n $older ]]; then say "Replaced by older packages until the next upgrade: $older"; fi
}

install_packages() {
  local hook unknown ID='' PRETTY_NAME='this system' VERSION_CODENAME=''
  . /etc/os-release
  command -v apt-get >/dev/null ||
    die "$PRETTY_NAME has no apt: go on in Debian 12 or 13 (docker run -it -v \"\$PWD:/app\" -w /app debian:12), or" \
      "install what corresponds to these packages and set TAVREL_HAVE_PACKAGES=1: ${missing[*]}"
  if ((EUID != 0)) && ! { command -v sudo && sudo -- apt-get --version; } >/dev/null; then
    die "installing packages takes root's rights, and there is no sudo that gives them: have root run" \
      "scripts/setup.sh, or install ${missing[*]}"
  fi
  : >"$log"
  say "Installing ${#missing[@]} missing packages with apt (some minutes on a fresh machine; log: $log):"
  say "  ${missing[*]}"
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    say "Adding the i386 architecture (32-bit Wine)"
    as_root dpkg --add-architecture i386
  fi
  if [[ -n $(dpkg --audit) ]]; then
    say "Completing an interrupted installation"
    as_root dpkg --configure -a </dev/null >>"$log" 2>&1 || true
  fi
  if [[ " ${missing[*]} " == *" nginx "* && -d /run/systemd/system ]] && ! systemctl cat nginx.service >/dev/null 2>&1; then
    # Debian starts a web server that it installs; here only sandboxes need one. One that was there is somebody's own.
    say "The service nginx.service, which comes with nginx, is stopped and disabled"
    hook='systemctl --quiet disable --now nginx.service 2>/dev/null || true'
    apt_options+=(-o "DPkg::Post-Invoke::=$hook")
  fi
  say "Fetching the package lists"
  fetch_lists
  if ! is_debian_12_or_13; then
    say "$PRETTY_NAME is neither Debian 12 nor 13 and has not been tried; going on with its own packages"
    mapfile -t unknown < <(unknown_packages)
    ((${#unknown[@]} == 0)) ||
      die "$PRETTY_NAME does not have these packages: ${unknown[*]}; install what corresponds to all that are" \
        "missing and set TAVREL_HAVE_PACKAGES=1"
  fi
  say "Installing"
  if ! install_missing && ! { is_debian_12_or_13 && install_from_release_alone "$VERSION_CODENAME"; }; then
    tail -n 30 "$log" >&2
    die "installing failed; see $log"
  fi
  mapfile -t missing < <(missing_packages)
  ((${#missing[@]} == 0)) || die "still missing: ${missing[*]}; see $log"
  [[ -z $(dpkg --audit) ]] || die "some packages are not configured; 'dpkg --audit' names them, $log says why"
  say "Everything needed is installed"
}

# The script reads apt's reports, so they have to be in English.
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
apt_options=()
# dpkg finishes the packages that it is unpacking, whatever key is pressed; then the script ends.
trap 'die "interrupted; the next start goes on from here"' INT TERM
make_build_root
if [[ ${TAVREL_HAVE_PACKAGES-} != 1 ]]; then
  missing=("${packages[@]}")
  if command -v dpkg-query >/dev/null; then mapfile -t missing < <(missing_packages); fi
  if ((${#missing[@]})); then install_packages; fi
fi
kind=$(sandbox_kind) ||
  die "no sandbox is possible: $(id -un) may neither create namespaces ($kind) nor use port 80; run this as" \
    "root, or allow namespaces: sysctl user.max_user_namespaces=10000 kernel.unprivileged_userns_clone=1" \
    "kernel.apparmor_restrict_unprivileged_userns=0 (those that exist)"
if [[ $kind == bubblewrap ]]; then
  say "Sandboxes: isolated by bubblewrap, each with its own network"
else
  say "Sandboxes: without namespaces, which this system does not permit: one at a time, on this container's network"
fi
