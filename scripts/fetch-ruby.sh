#!/usr/bin/env bash
# Fetches another Ruby than the system's from Debian's archive into a private
# prefix, for building and testing against the Rubies that hosts embed (on
# amd64, as Debian 12 is here):
#
#   scripts/fetch-ruby.sh VERSION     # 2.7 (bullseye) or 3.3 (trixie)
#
# Prints the path of an environment file to source: it sets RUBY, RUBYLIB and
# GEM_PATH for that Ruby, and RUBY_CMAKE_ARGS for building against it.
#
# apt runs with a state, cache and source list of its own under
# build-rubies/VERSION/, and the packages are only unpacked (dpkg -x): the
# system's apt configuration and installed packages stay as they are. The
# mirror is the one the machine's own apt sources name. A second run reuses
# what the first one fetched and unpacked.
set -euo pipefail
self=$(realpath "$0")
cd "$(dirname "$self")/.."

version=${1:-}
case "$version" in
  2.7) suite=bullseye ;;
  3.3) suite=trixie ;;
  *) echo "usage: $0 2.7|3.3" >&2; exit 2 ;;
esac
[[ $(dpkg --print-architecture) == amd64 ]] || { echo "$0: amd64 only" >&2; exit 1; }

dir=$PWD/build-rubies/$version
root=$dir/root
env_file=$dir/env
# A prefix unpacked by this very script is up to date.
if [[ -f "$env_file" && "$env_file" -nt "$self" && -x "$root/usr/bin/ruby$version" ]]; then
  echo "$env_file"
  exit 0
fi
scripts/install-deps.sh

# The interpreter, its library and headers (rbs comes with 3.3), minitest.
# Trixie's Ruby needs a newer C library than Debian 12's: it runs
# with trixie's own, loader included (see patch_program).
packages=("ruby$version" "libruby$version" "ruby$version-dev" ruby-minitest)
[[ $suite == trixie ]] && packages+=(libc6)
# Bullseye's Fiddle, which test/test_two_copies.rb uses, needs its libffi.
[[ $suite == bullseye ]] && packages+=(libffi7)

# The machine's Debian mirror: the first source of its own release's main
# component, in one-line (.list) or deb822 (.sources) form.
mirror() {
  local codename
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  {
    cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null |
      awk -v s="$codename" '$1 == "deb" { sub(/\[[^]]*\] */, ""); if ($3 == s) { print $2; exit } }'
    cat /etc/apt/sources.list.d/*.sources 2>/dev/null |
      awk -v s="$codename" '
        function found() { return types ~ /(^| )deb( |$)/ && (" " suites " ") ~ (" " s " ") && uris != "" && enabled != "no" }
        /^[ \t]*$/ { if (found()) { print uris; exit } types = suites = uris = enabled = ""; next }
        /^Types:/ { sub(/^Types:[ \t]*/, ""); types = $0 }
        /^Suites:/ { sub(/^Suites:[ \t]*/, ""); suites = $0 }
        /^URIs:/ { uris = $2 }
        /^Enabled:/ { enabled = $2 }
        END { if (found()) print uris }'
  } | head -n 1
}

apt_private() {
  apt-get -q -o Dir::State="$dir/apt/state" -o Dir::State::status="$dir/apt/state/status" \
    -o Dir::Cache="$dir/apt/cache" -o Dir::Etc::SourceList="$dir/apt/sources.list" \
    -o Dir::Etc::SourceParts="$dir/apt/empty" -o Dir::Etc::Preferences=/dev/null \
    -o Dir::Etc::PreferencesParts="$dir/apt/empty" -o APT::Sandbox::User=root "$@"
}

update_lists() {
  local uri
  uri=$(mirror)
  [[ -n "$uri" ]] || { echo "no Debian mirror in /etc/apt/sources.list*" >&2; exit 1; }
  echo "deb $uri $suite main" >"$dir/apt/sources.list"
  apt_private update >/dev/null
}

download() {
  (cd "$dir/debs" && apt_private download "$@" >/dev/null)
}

# Only what is not in build-rubies/VERSION/debs yet; lists kept from an earlier
# run may name versions that the mirror has replaced since, hence one retry.
fetch_debs() {
  mkdir -p "$dir/apt/state/lists/partial" "$dir/apt/cache/archives/partial" "$dir/apt/empty" "$dir/debs"
  touch "$dir/apt/state/status"
  compgen -G "$dir/apt/state/lists/*_Packages*" >/dev/null || update_lists
  local missing=() p
  for p in "${packages[@]}"; do
    compgen -G "$dir/debs/${p}_*.deb" >/dev/null || missing+=("$p")
  done
  ((${#missing[@]} == 0)) || download "${missing[@]}" 2>/dev/null || { update_lists && download "${missing[@]}"; }
}

# Where the prefix's libraries are (libruby, and trixie's C library), and for
# trixie the loader that goes with that C library. Programs get them as an
# rpath and interpreter of their own, which reach the libraries they load too;
# LD_LIBRARY_PATH would also reach every process they start: the X server,
# GNUstep's daemons.
libdir=$root/usr/lib/x86_64-linux-gnu
loader=""
[[ $suite == trixie ]] && loader=$root/usr/lib64/ld-linux-x86-64.so.2

patch_program() {
  patchelf --force-rpath --set-rpath "$libdir" ${loader:+--set-interpreter "$loader"} "$1"
}

unpack() {
  rm -rf "$root"
  local deb
  for deb in "$dir"/debs/*.deb; do dpkg -x "$deb" "$root"; done
  patch_program "$root/usr/bin/ruby$version"
}

# Programs linked against this Ruby (the reference host) need the same. The
# linker checks libruby's references against Debian 12's C library, which
# lacks trixie's newer symbols: they are left to the loader.
link_flags() {
  echo "-Wl,--disable-new-dtags -Wl,-rpath,$libdir${loader:+ -Wl,--dynamic-linker=$loader -Wl,--allow-shlib-undefined}"
}

write_env() {
  local lib=$root/usr/lib/ruby arch=$root/usr/lib/x86_64-linux-gnu/ruby
  local abi
  abi=$(basename "$(ls -d "$lib"/[0-9]*)")
  cat >"$env_file.tmp" <<EOF
# Ruby $version from Debian $suite, written by scripts/fetch-ruby.sh.
export RUBY=$root/usr/bin/ruby$version
export RUBYLIB=$lib/vendor_ruby:$arch/vendor_ruby/$abi:$lib/$abi:$arch/$abi
export GEM_PATH=$lib/gems/$abi:$root/usr/share/rubygems-integration/all:$root/usr/lib/x86_64-linux-gnu/rubygems-integration/$abi
export RUBY_CMAKE_ARGS="-DCMAKE_EXE_LINKER_FLAGS='$(link_flags)'"
EOF
  mv "$env_file.tmp" "$env_file"
}

fetch_debs
unpack
write_env
echo "$env_file"
