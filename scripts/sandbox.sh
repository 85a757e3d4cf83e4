#!/bin/bash
# Usage: scripts/sandbox.sh [OPTION]… -- COMMAND [ARGUMENT]…
#        scripts/sandbox.sh [--arch ARCH] --prepare
#
# Runs COMMAND in a sandbox with its own display and Wine prefix. Where the system permits namespaces,
# bubblewrap isolates it: it has its own loopback network (nothing reaches another machine, and port 80 is free
# for every user), its own /etc/hosts and /tmp, and it can write only to this clone and the build folder.
# Elsewhere, as in a container with default confinement, it has its own host names and its own folder for
# temporary files; only one sandbox runs at a time, on the container's network.
#
# When COMMAND ends, all processes that it started are ended. The sandbox ends with the process that called this
# script. Commands in one sandbox wait for each other. The prefix is kept for the next command; after a run that
# did not end cleanly it is created again. The exit code is COMMAND's, or 124 after a time-out.
#
#   --name NAME      the sandbox (default: TAVREL_PREFIX_NAME or main); sandboxes have no files in common
#   --arch ARCH      kind of Wine prefix: win32 (default: TAVREL_ARCH or this) or win64
#   --display KIND   virtual (default), desktop (the one that DISPLAY names) or none
#   --screen SIZE    size of the virtual display in pixels (default: 1024x768)
#   --limit SECONDS  longest run of COMMAND (default: 600)
#   --prepare        only makes the prefix that sandboxes of this kind are copied from, if it is missing
#
# COMMAND finds in its environment: TAVREL_SANDBOX, the sandbox's folder (prefix/, log/); TAVREL_DISPLAY, the kind
# of display; TAVREL_HOSTS, the file of names, to which it may write; TAVREL_TMP, a folder for temporary files.
# Everything is kept in build/sandbox, or below TAVREL_BUILD_ROOT where that names another folder than build.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/lib.sh"

name=${TAVREL_PREFIX_NAME:-main}
arch=${TAVREL_ARCH:-win32}
display=virtual
screen=1024x768
limit=600
action=run
while (($#)); do
  case $1 in
    --name | --arch | --display | --screen | --limit)
      (($# > 1)) || die "$1 needs a value"
      declare "${1#--}=$2"
      shift 2 ;;
    --prepare) action=prepare; shift ;;
    --help | -h) usage; exit ;;
    --) shift; break ;;
    *) die "unknown option: $1; scripts/sandbox.sh --help tells more" ;;
  esac
done
[[ $arch == win32 || $arch == win64 ]] || die "unknown kind of prefix: $arch"
[[ $display == virtual || $display == desktop || $display == none ]] || die "unknown display: $display"
[[ $screen =~ ^[1-9][0-9]{2,3}x[1-9][0-9]{2,3}$ ]] || die "not a size of a display: $screen"
[[ $name =~ ^[A-Za-z0-9_.-]+$ ]] || die "a sandbox's name is letters, digits, '_', '.' and '-': $name"
[[ $limit =~ ^[1-9][0-9]{0,5}$ ]] || die "not a number of seconds: $limit"
[[ $action == prepare ]] || (($#)) || die "names no command; scripts/sandbox.sh --help tells more"

kind=$(sandbox_kind) || die "no sandbox is possible here ($kind); scripts/setup.sh says how to go on"
wine_version=$(wine --version)
root=$build_root/sandbox
sandbox=$root/$name-$arch
template=$root/template-$arch

# Takes the lock on the open file FD: lock FD WHAT
lock() {
  flock --wait 2 "$1" && return
  say "Waiting for the command that runs in $2"
  flock --wait 300 "$1" || die "$2 has been in use for too long"
}

lock_sandbox() {
  mkdir -p "$1/home" "$1/log"
  if [[ $kind == plain ]]; then
    # One sandbox at a time, of all clones in this container: every user can read this file.
    exec 9</etc/hosts
    lock 9 "this container"
  else
    # Every process of the sandbox inherits the lock, which is free when the last of them has ended.
    exec 9>"$1.lock"
    lock 9 "$1"
  fi
}

# A prefix is whole when its last run ended cleanly and used the Wine version that is installed now.
is_whole() { [[ -e $1/whole && $(<"$1/whole") == "$wine_version" ]]; }

# Replaces this shell with the first process of a sandbox: enter_sandbox FOLDER DISPLAY SCREEN SECONDS COMMAND…
enter_sandbox() {
  export TAVREL_SANDBOX=$1
  shift
  # libnss-wrapper rejects comments.
  sed '/^#/d' "$repo/demo/hosts" >"$TAVREL_SANDBOX/hosts"
  export WINEPREFIX=$TAVREL_SANDBOX/prefix WINEARCH=$arch
  export WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
  # The locale fixes the ANSI code page of the prefix (1252). Wine 10 crashes when TMPDIR is set. Wine uses http_proxy.
  export LANG=C.UTF-8 LC_ALL=C.UTF-8
  unset TMPDIR WINESERVER WINELOADER XDG_RUNTIME_DIR WAYLAND_DISPLAY http_proxy
  export XAUTHORITY=${XAUTHORITY:-$HOME/.Xauthority} HOME=$TAVREL_SANDBOX/home
  if [[ $1 != desktop ]]; then unset DISPLAY XAUTHORITY; fi
  "enter_$kind" "$repo/scripts/in-sandbox.sh" "$wine_version" "$@"
}

enter_bubblewrap() {
  local folder mounts=()
  # Names come from the hosts file and from nowhere else.
  sed 's/^hosts:.*/hosts: files/' /etc/nsswitch.conf >"$TAVREL_SANDBOX/nsswitch.conf"
  if [[ -d /run/nscd ]]; then mounts+=(--tmpfs /run/nscd); fi
  if [[ -n ${DISPLAY-} ]]; then
    mounts+=(--ro-bind /tmp/.X11-unix /tmp/.X11-unix --ro-bind-try "$XAUTHORITY" /tmp/xauthority)
    export XAUTHORITY=/tmp/xauthority
  fi
  for folder in "$repo" "$build_root"; do mounts+=(--bind "$folder" "$folder"); done
  [[ $PWD/ != /tmp/* || $PWD/ == "$repo"/* || $PWD/ == "$build_root"/* ]] ||
    die "the sandbox has its own /tmp, so $PWD is not there: start from another folder"
  export TAVREL_TMP=/tmp TAVREL_HOSTS=/etc/hosts
  # Without CAP_DAC_OVERRIDE root cannot write to read-only files, as an ordinary user cannot.
  # A devices folder of the sandbox's own (--dev) would come with a second user namespace, in which an ordinary
  # user has no right to port 80.
  exec bwrap --die-with-parent --unshare-net --unshare-pid --cap-add CAP_NET_BIND_SERVICE \
    --cap-drop CAP_DAC_OVERRIDE \
    --ro-bind / / --dev-bind /dev /dev --proc /proc --perms 1777 --tmpfs /tmp "${mounts[@]}" \
    --bind "$TAVREL_SANDBOX/hosts" /etc/hosts --ro-bind "$TAVREL_SANDBOX/nsswitch.conf" /etc/nsswitch.conf \
    --chdir "$PWD" -- "$@"
}

enter_plain() {
  local bounding=()
  if (: </dev/tcp/127.0.0.1/80) 2>/dev/null; then
    die "port 80 of this container is in use, and sandboxes cannot have a network of their own here"
  fi
  TAVREL_TMP=$(mktemp -d /tmp/tavrel-sandbox.XXXXXX)
  export TAVREL_TMP TAVREL_HOSTS=$TAVREL_SANDBOX/hosts
  # Ends the sandbox, and keeps the container's lock until then.
  setsid --fork "$repo/scripts/end-sandbox.sh" "$BASHPID" "$TAVREL_SANDBOX.open" "$TAVREL_TMP" \
    </dev/null >"$TAVREL_SANDBOX/log/end.log" 2>&1
  # Every process inherits this open file; end-sandbox.sh finds them by it.
  exec 9>"$TAVREL_SANDBOX.open"
  # Without CAP_DAC_OVERRIDE root cannot write to read-only files, as an ordinary user cannot.
  if ((EUID == 0)); then bounding=(--bounding-set=-dac_override --inh-caps=-dac_override); fi
  export LD_PRELOAD=libnss_wrapper.so NSS_WRAPPER_HOSTS=$TAVREL_HOSTS
  exec setpriv --pdeathsig KILL "${bounding[@]}" -- "$@"
}

# A prefix of each kind is made once, in its own sandbox, and copied from then on.
make_template() (
  new=$root/new-$arch
  is_whole "$template" && return
  lock_sandbox "$new"
  is_whole "$template" && return
  say "Making a $arch Wine prefix (once, about a quarter of a minute)"
  rm -rf "$template" "$new/prefix"
  (enter_sandbox "$new" none "$screen" 60 "$repo/scripts/in-sandbox.sh" --initialise-prefix) \
    >"$new/log/initialise.log" || die "making a Wine prefix failed; see $new/log"
  # After a power cut an incomplete copy must not look whole.
  sync --file-system "$new"
  mv "$new" "$template"
)

copy_template() {
  rm -rf "$sandbox/prefix"
  # Most of a prefix are Wine's own files, which are only read: they are linked. The others are copied.
  cp -al "$template/prefix" "$sandbox/prefix"
  find "$sandbox/prefix" -type f \( ! -path '*/drive_c/windows/*' -o ! -size +16k \) -print0 |
    xargs -0 bash -c 'for file; do cp -p "$file" "$file.own" && mv "$file.own" "$file"; done' own
}

make_build_root
mkdir -p "$root"
make_template
[[ $action == run ]] || exit 0
lock_sandbox "$sandbox"
if ! is_whole "$sandbox"; then copy_template; fi
enter_sandbox "$sandbox" "$display" "$screen" "$limit" "$@"
