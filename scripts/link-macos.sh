#!/usr/bin/env bash
# Links the extension's and the driver's bundles for arm64 and x86_64, at -O0
# and at -O2, with LLVM's Mach-O linker against the SDKs' .tbd stubs, strictly:
# only Ruby's C API may be left to the process that loads a bundle, each of
# its symbols named. Then makes the universal bundles and shows what a Mac's
# lipo, otool and nm would (docs/MACOS.md). scripts/check-macos.sh runs it
# once it has configured each architecture into WORK/<arch>.
#
#   scripts/link-macos.sh SDK SDK_10_13 WORK
set -euo pipefail
cd "$(dirname "$0")/.."

sdk=$1
sdk_1013=$2
work=$3
RUBY=${RUBY:-ruby}
# Debian installs LLVM's tools under versioned names only.
llvm=$(dirname "$(find /usr/lib -maxdepth 3 -path '/usr/lib/llvm-*/bin/ld64.lld' | sort -V | tail -n 1)")
targets=(OptionsPanel OptionsPanelDriver)

# The libraries a bundle links, as one SDK root: the frameworks and libobjc
# of SDK; libSystem and the C++ library, which that SDK's copy lacks, from
# SDK_10_13, whose stubs list i386 and x86_64 only. For arm64 they are taken
# to list it too: the C library and the C++ library export the same names on
# every architecture.
library_root() {
  local arch=$1 root=$work/$1/libraries
  rm -rf "$root"
  mkdir -p "$root/usr/lib"
  ln -s "$(cd "$sdk" && pwd)/System" "$root/System"
  cp -a "$sdk/usr/lib/." "$root/usr/lib/"
  cp -a "$sdk_1013"/usr/lib/libSystem*.tbd "$sdk_1013"/usr/lib/libc++*.tbd "$sdk_1013/usr/lib/system" \
    "$root/usr/lib/"
  if [[ $arch == arm64 ]]; then
    find "$root/usr/lib" -name '*.tbd' ! -name 'libobjc*' -type f -print0 |
      xargs -0 sed -i -E 's/^( *(- )?archs: *\[.*)x86_64 \]/\1x86_64, arm64 ]/'
  fi
  echo "$root"
}

# Compiles every source of both bundles at one optimisation level into
# WORK/<arch>/O<level>/<target>/, with the macOS branch's own commands.
compile_objects() {
  local arch=$1 level=$2 out=$work/$1/O$2
  rm -rf "$out"
  "$RUBY" -rjson -rshellwords -rfileutils -e '
    out, level = ARGV[1], ARGV[2]
    JSON.parse(File.read(ARGV[0])).each_with_index do |c, i|
      target = c["command"][%r{(\w+)\.dir/}, 1]
      FileUtils.mkdir_p(File.join(out, target))
      words = c["command"].shellsplit.map { |w| w =~ /\A-O[0-9s]\z/ ? "-O#{level}" : w }
      words[words.index("-o") + 1] = File.join(out, target, "#{i}.o")
      words.insert(1, "-Werror")
      puts("cd #{c["directory"].shellescape} && #{words.shelljoin}")
    end' "$work/$arch/cmake/compile_commands.json" "$out" "$level" >"$work/$arch/objects-O$level"
  if ! xargs -P 2 -d '\n' -I{} sh -c '{}' <"$work/$arch/objects-O$level" >"$out.log" 2>&1 ||
    [[ -s $out.log ]]; then
    cat "$out.log" >&2
    echo "check-macos: $arch -O$level: compiling FAILED (log: $out.log)"
    return 1
  fi
}

# The libraries that the macOS branch of CMakeLists.txt links the bundle
# with, and those that clang++ adds itself: libc++ and libSystem.
bundle_libraries() {
  "$RUBY" -rshellwords -e '
    words = File.read(ARGV[0]).shellsplit
    words = words.drop(words.rindex { |w| w.end_with?(".o") } + 1)
    libraries = words.each_cons(2).select { |a, _| a == "-framework" }.flatten + words.grep(/\A-l/)
    puts(libraries + %w[-lc++ -lSystem])' "$work/$1/cmake/CMakeFiles/$2.dir/link.txt"
}

# Links one bundle with every symbol resolved but those of Ruby's C API,
# which stay to the process, each by name: the interpreter that loads the
# bundle has them.
link_bundle() {
  local arch=$1 level=$2 target=$3 root=$4 min_os=$5
  local objects=("$work/$arch/O$level/$target"/*.o) libraries=()
  mapfile -t libraries < <(bundle_libraries "$arch" "$target")
  local ruby_symbols=()
  mapfile -t ruby_symbols < <("$llvm/llvm-nm" -u "${objects[@]}" 2>/dev/null | grep -E '^_(rb|ruby)_' | sort -u)
  local allowed=()
  for symbol in "${ruby_symbols[@]}"; do
    allowed+=(-U "$symbol")
  done
  if ! "$llvm/ld64.lld" -arch "$arch" -platform_version macos "$min_os" 14.2 -syslibroot "$root" \
    -bundle -o "$work/$arch/O$level/$target.bundle" "${objects[@]}" \
    "${libraries[@]}" \
    -undefined error "${allowed[@]}" >"$work/$arch/O$level/$target.link.log" 2>&1; then
    head -n 40 "$work/$arch/O$level/$target.link.log" >&2
    echo "check-macos: $arch -O$level: linking $target FAILED"
    return 1
  fi
  echo "check-macos: $arch -O$level: $target.bundle linked with ${libraries[*]}," \
    "${#ruby_symbols[@]} Ruby symbols left to the host"
}

link_arch() {
  local arch=$1 min_os=$2 root level target
  root=$(library_root "$arch")
  for level in 0 2; do
    compile_objects "$arch" "$level" || return 1
    for target in "${targets[@]}"; do
      link_bundle "$arch" "$level" "$target" "$root" "$min_os" || return 1
    done
  done
}

# What docs/MACOS.md lets a bundle export, with Mach-O's leading underscore.
documented_exports() {
  "$RUBY" -e '
    doc = File.read("docs/MACOS.md")[/^## What the bundle exports\n(.*?)(?=^## |\z)/m, 1].to_s
    names = ARGV[0] == "OptionsPanel" ? doc.scan(/^- `(\w+)`/).flatten : doc.scan(/driver bundle exports only `(\w+)`/).flatten
    puts(names.map { |n| "_#{n}" }.sort)' "$1"
}

# The -O2 slices as one universal bundle, shown as a Mac's tools would, and
# checked: its exports are the documented ones, and nothing but Ruby is
# left to the process (bound by name in any image, "flat-namespace").
universal_bundle() {
  local target=$1 arch
  local out=$work/universal/$target.bundle
  mkdir -p "$work/universal"
  "$llvm/llvm-lipo" -create "$work"/{arm64,x86_64}/O2/"$target.bundle" -output "$out"
  echo "check-macos: $target.bundle: architectures: $("$llvm/llvm-lipo" -archs "$out")"
  for arch in arm64 x86_64; do
    echo "  $arch loads:" $("$llvm/llvm-objdump" --macho --arch="$arch" --dylibs-used "$out" |
      tail -n +2 | awk '{print $1}')
    echo "  $arch minimum macOS:" $("$llvm/llvm-objdump" --macho --arch="$arch" --private-headers "$out" |
      grep -A5 -E 'LC_BUILD_VERSION|LC_VERSION_MIN_MACOSX' | awk '$1 == "minos" || $1 == "version" {print $2}')
    local flat
    flat=$("$llvm/llvm-objdump" --macho --arch="$arch" --bind --lazy-bind --weak-bind "$out" |
      awk '/flat-namespace/ {print $NF}' | grep -vE '^_(rb|ruby)_' || true)
    if [[ -n $flat ]]; then
      echo "check-macos: $target.bundle ($arch) leaves more than Ruby to the host:" $flat
      return 1
    fi
  done
  local exports
  exports=$("$llvm/llvm-nm" -gU --arch=all "$out" | awk 'NF == 3 {print $3}' | sort -u)
  echo "  exports:" $exports
  if [[ $exports != "$(documented_exports "$target")" ]]; then
    echo "check-macos: $target.bundle exports other symbols than docs/MACOS.md lists:" \
      $(documented_exports "$target")
    return 1
  fi
}

link_arch arm64 11.0
link_arch x86_64 10.13
for target in "${targets[@]}"; do
  universal_bundle "$target"
done
