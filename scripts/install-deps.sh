#!/usr/bin/env bash
# Installs the Debian packages that building, testing and the demo need;
# with --bench also the peers that bench/ measures our panel against, with
# --macos what scripts/check-macos.sh needs besides Apple's SDK headers.
# Safe to run again: it asks apt only for what is missing.
set -euo pipefail

packages=(
  clang cmake make
  libgnustep-gui-dev gnustep-back0.29 gnustep-base-runtime
  ruby-dev ruby-minitest
  xvfb xauth
  # The real-input test presses keys and moves the pointer as a person does.
  xdotool
  # The keyboard test reads the screen's pixels as the X server holds them.
  imagemagick
  # The window-manager test: a real window manager, a tool that asks it for
  # its windows and closes them, and another program's window (xmessage) with
  # the tools that read windows' properties (xprop, xwininfo).
  openbox wmctrl x11-utils
  # The text-editing test puts text on the X clipboard and reads it back as
  # another program does; the focus test runs a second window manager, which
  # needs a session bus.
  xclip xfwm4 dbus
  # scripts/check-reliability.sh: clang's sanitizer runtimes (only recommended
  # by clang) and valgrind.
  libclang-rt-14-dev valgrind
  # scripts/fetch-ruby.sh: points a newer Debian's Ruby at its own C library.
  patchelf
  # The toolkit's fonts have no Japanese, Korean or Chinese letters. GNUstep
  # draws a letter its font lacks in another font only when that font's family
  # name is also its face name: IPA's Japanese Gothic, Nanum's Korean Gothic
  # and Hanazono (for the Chinese letters beyond Japanese) are such fonts.
  # Debian's usual Chinese fonts (Noto CJK, WenQuanYi, AR PL) are not, and
  # with one of them GNUstep draws question marks.
  fonts-ipafont-gothic fonts-nanum fonts-hanazono
)
if [[ ${1:-} == --bench ]]; then
  # The same dialog built with GTK 3 and as an HTML page in a WebKitGTK view.
  packages+=(ruby-gtk3 ruby-webkit2-gtk)
fi
if [[ ${1:-} == --macos ]]; then
  # The C++ library's headers, which the 10.13 SDK does not hold; LLVM's
  # Mach-O linker, and its lipo, otool, nm and objdump for the bundles.
  packages+=(libc++-14-dev lld llvm)
fi

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

if [[ $(id -u) -ne 0 ]]; then
  echo "Missing packages: ${missing[*]}" >&2
  echo "Install them with: sudo apt-get install -y ${missing[*]}" >&2
  exit 1
fi
echo "Installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq "${missing[@]}" >/dev/null
