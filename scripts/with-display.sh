#!/usr/bin/env bash
# Runs a command with the toolkit set up for a bare X server: a private home
# whose GNUstep defaults keep the back-end quiet, and an Xvfb of its own when
# no DISPLAY is set. Everything it starts is stopped afterwards.
set -euo pipefail

home=$(mktemp -d "${TMPDIR:-/tmp}/optionspanel-home.XXXXXX")
xvfb_pid=""

cleanup() {
  # GNUstep starts its notification daemon on demand; end the ones that run
  # with our private home, by pid, and leave everybody else's alone.
  for env in /proc/[0-9]*/environ; do
    if grep -qz "^HOME=$home\$" "$env" 2>/dev/null; then
      pid=${env#/proc/}; pid=${pid%/environ}
      [[ "$pid" != "$$" ]] && kill "$pid" 2>/dev/null || true
    fi
  done
  [[ -n "$xvfb_pid" ]] && kill "$xvfb_pid" 2>/dev/null || true
  rm -rf "$home"
}
trap cleanup EXIT

# GNUstep keeps its daemons' ports in the temporary directory: a private one
# gives this run daemons of its own, which it may then end. GNUstep takes that
# directory from TEMP, not TMPDIR; without it every run on the machine shares
# /tmp/GNUstepSecure<uid>, and a run that ends takes the pasteboard and
# notification servers of the runs still going with it.
export HOME="$home"
export TMPDIR="$home/tmp"
export TEMP="$TMPDIR"
mkdir -p "$TMPDIR"
# GNUstep takes root's defaults from root's home whatever HOME says; its own
# configuration file can point them at the private home instead.
grep -v -E '^GNUSTEP_USER_(DEFAULTS_)?DIR=' /etc/GNUstep/GNUstep.conf >"$home/GNUstep.conf"
printf 'GNUSTEP_USER_DIR=%s/GNUstep\nGNUSTEP_USER_DEFAULTS_DIR=%s/GNUstep/Defaults\n' \
  "$home" "$home" >>"$home/GNUstep.conf"
export GNUSTEP_CONFIG_FILE="$home/GNUstep.conf"
defaults write NSGlobalDomain GSBackHandlesWindowDecorations NO
defaults write NSGlobalDomain GSSuppressAppIcon YES

if [[ -z "${DISPLAY:-}" ]]; then
  for n in $(seq 90 140); do
    [[ -e "/tmp/.X$n-lock" || -e "/tmp/.X11-unix/X$n" ]] && continue
    Xvfb ":$n" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
    xvfb_pid=$!
    for _ in $(seq 50); do
      [[ -e "/tmp/.X11-unix/X$n" ]] && break
      sleep 0.1
    done
    if kill -0 "$xvfb_pid" 2>/dev/null && [[ -e "/tmp/.X11-unix/X$n" ]]; then
      export DISPLAY=":$n"
      break
    fi
    xvfb_pid=""
  done
  [[ -n "${DISPLAY:-}" ]] || { echo "could not start Xvfb" >&2; exit 1; }
fi

"$@"
