#!/bin/bash
# Runs one scene inside a sandbox: places files and registry entries as an installer and a user would, starts the
# update server, runs the utility, and copies the results into a folder.
#   scene.sh SCENE MODE SECONDS OUTPUT BUILD [COMMAND…]
# MODE is regular or patch. On a virtual display the script takes a picture of each window after SECONDS and
# closes it; on a desktop the user closes the windows. BUILD is the build tree of the cross compiler. COMMAND runs instead
# of the utility, and nothing is copied.
# Output: picture-1.png …, *.log (the utility's log files), requests.log (the server's), exit-code,
# settings.ini (korsa.ini as the run left it), started.txt (how the product was started, if it was).
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 5 "$@"
[[ -n ${TAVREL_SANDBOX-} ]] || die "runs in a sandbox only (run.sh makes one)"

scene=$1 mode=$2 seconds=$3 output=$4 build=$5
. "$build/generated/product.sh"

# Everything that a scene can set, with the defaults.
product=15.0.2.5                 # file version of the installed product; empty: it is not installed
list=updates.ini                 # update information file on the server; empty: there is none
rate=0                           # bytes a second, 0: no limit
server=up                        # up or down
server_address=127.0.0.1         # of the update host; empty: its name is unknown
update_host=updates.varnexa.example
check_updates=TRUE
ignore_error=FALSE
seed=yes                         # korsa.ini is beside the program
left_out=                        # value that the product's uninstall entry lacks
wow_key=no                       # an empty SOFTWARE\Wow6432Node in a 32-bit prefix
. "$repo/demo/scenes/$scene"

work=$TAVREL_TMP/scene
drive=$WINEPREFIX/drive_c
program_files='Program Files'
branch=SOFTWARE
if [[ $WINEARCH == win64 ]]; then
  program_files='Program Files (x86)'
  branch='SOFTWARE\Wow6432Node'
fi
folder=$drive/$program_files/$TAVREL_PRODUCT/$TAVREL_FOLDER
windows_folder="C:\\$program_files\\$TAVREL_PRODUCT\\$TAVREL_FOLDER"
log_folder=$drive/ProgramData/$TAVREL_PRODUCT/$TAVREL_FOLDER
# Wine chooses the name of the user's folder; the only other one is for all users.
user_folder=$(find "$drive/users" -mindepth 1 -maxdepth 1 ! -name Public)
documents=$user_folder/Documents

place_files() {
  rm -rf "$work" "$folder" "$log_folder" "${documents:?}/$TAVREL_PRODUCT"
  rm -f "$user_folder"/{,AppData/Local/}Temp/updates.ini
  mkdir -p "$work/www/qrt15" "$folder" "$log_folder"
  cp "$build/QRTTavrelUtility.exe" "$folder/"
  if [[ $seed == yes ]]; then
    printf '%s\r\n' '[KORSA_URL]' "CHECKUPDATES=$check_updates" "UPDATE_LOC=$update_host" \
      "IGNORE_PATCH_ERROR=$ignore_error" TIMEOUT=30 >"$folder/korsa.ini"
  fi
  if [[ -n $product ]]; then cp "$build/demo/standin/$product/$TAVREL_IMAGE" "$folder/"; fi
  if [[ -n $list ]]; then cp "$repo/demo/$list" "$work/www/qrt15/updates.ini"; fi
}

# The product's keys as its installer writes them.
register_product() {
  local maker uninstall value file=$work/product.reg
  {
    printf 'Windows Registry Editor Version 5.00\n\n'
    if [[ $WINEARCH == win32 ]]; then printf '[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node]\n'; fi
    if [[ $wow_key == yes ]]; then printf '[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node]\n'; fi
    maker="HKEY_LOCAL_MACHINE\\$branch\\$TAVREL_MAKER"
    uninstall="HKEY_LOCAL_MACHINE\\$branch\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\$TAVREL_PRODUCT_LABEL"
    printf '[-%s]\n[-%s]\n' "$maker" "$uninstall"
    if [[ -n $product ]]; then
      printf '[%s]\n"Version"="%s"\n"Installpath"="%s"\n' \
        "$maker\\$TAVREL_PRODUCT\\$TAVREL_PRODUCT_VERSION" "$TAVREL_PRODUCT_VERSION" "${windows_folder//\\/\\\\}"
      printf '[%s]\n' "$uninstall"
      for value in DisplayName="$TAVREL_PRODUCT_LABEL" DisplayVersion="$TAVREL_PRODUCT_VERSION" DisplayIcon="$windows_folder\\$TAVREL_IMAGE" \
        URLUpdateInfo=http://updates.varnexa.example/qrt15/updates.ini; do
        [[ ${value%%=*} == "$left_out" ]] && continue
        value=${value//\\/\\\\}
        printf '"%s"="%s"\n' "${value%%=*}" "${value#*=}"
      done
    fi
  } >"$file"
  # In a 64-bit prefix the 64-bit regedit is needed, because Wine redirects the entries that the 32-bit one writes.
  local loader=wine
  if [[ $WINEARCH == win64 ]]; then loader=/usr/lib/wine/wine64; fi
  timeout 60 "$loader" regedit /S "$file"
}

start_server() {
  local hosts
  hosts=$(grep -v ' updates\.varnexa\.example$' "$TAVREL_HOSTS")
  if [[ -n $server_address ]]; then hosts+=$'\n'"$server_address updates.varnexa.example"; fi
  printf '%s\n' "$hosts" >"$TAVREL_HOSTS"
  : >"$work/requests.log"
  [[ $server == up ]] || return 0
  sed -e "s|@WORK@|$work|; s|@RATE@|$rate|" "$repo/demo/nginx.conf" >"$work/nginx.conf"
  local as_root=()
  # Otherwise nginx changes the owner of its files, which root of a container may not do.
  if ((EUID == 0)); then as_root=(-g 'user root root;'); fi
  nginx "${as_root[@]}" -c "$work/nginx.conf" -e "$work/server-errors.log" &
  wait_until 10 server_answers || die "the update server does not start; see $work/server-errors.log"
}

server_answers() { (: </dev/tcp/127.0.0.1/80) 2>/dev/null; }

is_running() { kill -0 "$utility" 2>/dev/null; }

new_windows() {
  local window
  # xdotool fails when it finds no window.
  for window in $(xdotool search --onlyvisible --name "$TAVREL_TITLE" 2>/dev/null); do
    [[ " $seen " == *" $window "* ]] || printf '%s\n' "$window"
  done
}

# Takes a picture of each window and closes it, until the utility has ended, for a bounded time.
close_windows() {
  local window pictures=0 seen=' ' closed=0 end=$((SECONDS + 120 + 4 * seconds))
  while is_running && ((SECONDS < end)); do
    sleep 0.2
    window=$(new_windows)
    if [[ -n $window ]]; then
      seen+="${window//$'\n'/ } "
      sleep "$seconds"
      pictures=$((pictures + 1))
      timeout 20 import -window root "$output/picture-$pictures.png"
    elif ((pictures == 0 || SECONDS - closed < 3)); then
      continue
    fi
    timeout 20 wine taskkill /im QRTTavrelUtility.exe >/dev/null 2>&1 || true
    closed=$SECONDS
  done
  if is_running; then
    say "The utility does not end; killing it"
    timeout 20 wine taskkill /f /im QRTTavrelUtility.exe >/dev/null 2>&1 || kill -KILL "$utility"
  fi
}

run_utility() {
  local arguments=() code=0
  if [[ $mode == patch ]]; then arguments=(2); fi
  cd "$folder"
  wine QRTTavrelUtility.exe "${arguments[@]}" &
  utility=$!
  if [[ $TAVREL_DISPLAY == virtual ]]; then close_windows; fi
  wait "$utility" || code=$?
  printf '%s\n' "$code" >"$output/exit-code"
}

collect_results() {
  local file
  find "$log_folder" -name '*.log' -exec cp -t "$output" {} +
  cp "$work/requests.log" "$output/"
  file=$documents/$TAVREL_PRODUCT/$TAVREL_FOLDER/korsa.ini
  if [[ -e $file ]]; then cp "$file" "$output/settings.ini"; fi
  # The stand-in product writes this file when the utility starts it.
  file=$folder/qrt-arguments.txt
  if [[ -e $file ]]; then cp "$file" "$output/started.txt"; fi
}

# Ends the server.
trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
rm -rf "$output"
mkdir -p "$output"
place_files
register_product
start_server
if (($# > 5)); then
  "${@:6}"
  exit
fi
run_utility
collect_results
