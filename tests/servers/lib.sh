# What the scripts that start a server for the tests share. Sourced, never run.
#
# A server lives in a temporary folder of its own and runs as an unprivileged user: the one that its Debian package
# made when the tests run as root, the present user otherwise. It listens on a socket in that folder, or on a loopback
# port. STATE is a file of "key=value" lines that test programs read; it exists as long as the server is meant to be
# there.
#
#   SCRIPT start STATE [durable]   makes and starts a server; one left behind by a crashed run is removed first
#   SCRIPT halt STATE              stops the server and keeps its data
#   SCRIPT kill STATE              the same, as a crash does it
#   SCRIPT resume STATE            starts it again
#   SCRIPT stop STATE              stops the server and removes its data
#
# A script sets `server_name` and `server_account` (and `server_stop_signal` unless it is TERM, `server_removal_signal` unless
# it is the same), defines the functions below, and ends with: server_main "$@"
#   server_create    makes what the server needs in $folder; runs as the unprivileged user through as_account
#   server_command   sets the array `command` that runs the server in the foreground, as the unprivileged user
#   server_ready     succeeds once the server answers
#   server_settings  prints the lines of STATE that are the server's own
#
# A server whose first data take long to make has a function that makes them in $folder/data, and lets
# "server_data KIND FUNCTION" call it: where ORVANE_SERVER_TEMPLATES names a folder, the data are kept there and copied the
# next time, as long as this file and KIND.sh stay as they are.
#
# Set for them: folder (the server's own), port (a loopback port that nobody has), durable (empty: no fsync, for tests;
# "durable": the settings of production, for benchmarks).
set -euo pipefail

# Should a test run die without cleaning up, its servers end by themselves.
server_life=${ORVANE_SERVER_LIFE:-2h}

# Servers live in sbin, which is not on everybody's path.
export PATH=$PATH:/usr/sbin:/sbin
servers=$(dirname "$0")
account_prefix=()
server_stop_signal=TERM

as_account() { "${account_prefix[@]}" "$@"; }

state_value() { sed -n "s/^$1=//p" "$state"; }

# The next port that nobody has, below those that the system gives to clients and to whoever asks for any: none of these may
# take it until the server listens, or while it is down. All servers of an account take theirs from one counter.
free_port() {
  python3 - "/tmp/orvane-server-ports.$(id -u)" <<'PORT'
import fcntl, os, socket, sys

first, count = 10000, 20000
try:
    with open("/proc/sys/net/ipv4/ip_local_port_range") as system:
        count = max(1000, min(count, int(system.read().split()[0]) - first))
except OSError:
    pass
with open(sys.argv[1], "a+") as counter:
    fcntl.flock(counter, fcntl.LOCK_EX)
    counter.seek(0)
    last = int(counter.read() or os.getpid())
    for next in range(last + 1, last + count + 1):
        port = first + next % count
        try:
            with socket.socket() as probe:
                probe.bind(("127.0.0.1", port))
        except OSError:
            continue
        counter.truncate(0)
        counter.write(str(next % count))
        print(port)
        break
    else:
        sys.exit("no free port")
PORT
}

running() { [ -n "$1" ] && kill -0 "$1" 2>/dev/null; }

wait_until_gone() {
  local pid=$1 tries
  for ((tries = 0; tries < 6000; tries++)); do
    running "$pid" || return 0
    sleep 0.02
  done
  return 1
}

server_data() {
  local kind=$1 make=$2 templates=${ORVANE_SERVER_TEMPLATES:-} template
  if [ -z "$templates" ] || [ -n "$durable" ]; then
    "$make"
    return
  fi
  mkdir -p "$templates"
  template=$templates/$kind.$(id -u).$(cat "${BASH_SOURCE[0]}" "$servers/$kind.sh" | cksum | cut -d " " -f 1)
  (
    flock 9
    [ -d "$template" ] || {
      rm -rf "$templates/$kind.$(id -u)".*
      "$make" && cp -a --sparse=always "$folder/data" "$template.new" && mv "$template.new" "$template"
    }
  ) 9>"$templates/lock" && { [ -d "$folder/data" ] || cp -a --sparse=always "$template" "$folder/data"; }
}

server_launch() {
  local command=() tries
  server_command
  (
    cd "$folder"
    exec setsid timeout --foreground --kill-after=10 "$server_life" \
      bash -c 'echo $$ > "$0"; exec "$@"' "$folder/pid" \
      "${account_prefix[@]}" "${command[@]}" >>"$folder/log" 2>&1 </dev/null
  ) &
  disown
  for ((tries = 0; tries < 10000; tries++)); do
    if server_ready >/dev/null 2>&1; then return 0; fi
    # Without a number there it is still being started: on a busy machine that takes seconds.
    if [ -s "$folder/pid" ] && ! running "$(cat "$folder/pid")"; then break; fi
    sleep 0.03
  done
  echo "$server_name did not start:" >&2
  tail -n 30 "$folder/log" >&2
  return 1
}

server_end() {
  local signal=$1 pid
  pid=$(cat "$folder/pid" 2>/dev/null || true)
  if running "$pid"; then
    kill -"$signal" "$pid" 2>/dev/null || true
    wait_until_gone "$pid" || { kill -KILL "$pid" 2>/dev/null || true; wait_until_gone "$pid"; }
  fi
  rm -f "$folder/pid"
}

server_remove() {
  folder=$(state_value folder)
  if [ -n "$folder" ] && [ -d "$folder" ]; then
    server_end "${server_removal_signal:-$server_stop_signal}"
    rm -rf "$folder"
  fi
  rm -f "$state"
}

# Where the server's folder is made: in memory, when there is plenty and nothing needs to outlive a power cut.
server_place() {
  local free
  free=$(df --output=avail /dev/shm 2>/dev/null | tail -n 1)
  if [ -z "$durable" ] && [ -z "${TMPDIR:-}" ] && [ -w /dev/shm ] && [ "${free:-0}" -gt 2000000 ]; then
    echo /dev/shm
  else
    echo "${TMPDIR:-/tmp}"
  fi
}

server_main() {
  local action=${1:?start, halt, kill, resume or stop}
  state=${2:?the state file}
  durable=${3:-}
  if [ "$(id -u)" -eq 0 ]; then
    account_prefix=(setpriv --reuid="$server_account" --regid="$server_account" --init-groups)
  fi
  case $action in
    start)
      [ ! -e "$state" ] || server_remove
      mkdir -p "$(dirname "$state")"
      folder=$(mktemp -d "$(server_place)/orvane-$server_name.XXXXXX")
      [ "$(id -u)" -ne 0 ] || chown "$server_account" "$folder"
      port=$(free_port)
      # Written before the server runs, so that "stop" finds what a failing start leaves behind.
      printf 'folder=%s\nport=%s\nscript=%s\n' "$folder" "$port" "$(realpath "$0")" >"$state"
      if ! { server_create && server_launch; }; then
        server_remove
        exit 1
      fi
      server_settings >>"$state"
      ;;
    halt | kill | resume)
      folder=$(state_value folder)
      port=$(state_value port)
      case $action in
        halt) server_end "$server_stop_signal" ;;
        kill) server_end KILL ;;
        resume) server_launch ;;
      esac
      ;;
    stop) [ ! -e "$state" ] || server_remove ;;
    *)
      echo "unknown action: $action" >&2
      exit 64
      ;;
  esac
}
