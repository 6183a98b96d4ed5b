#!/usr/bin/env bash
# Compiles every source of the extension, the test driver and the reference
# host against Apple's SDK headers, with the flags of the macOS branch of
# CMakeLists.txt and every warning an error; no Mac needed (docs/MACOS.md).
#
#   scripts/check-macos.sh SDK [SDK_10_13]
#
# SDK (MacOSX 11 or newer, with libc++): arm64 and x86_64, for macOS 10.13,
# against this machine's Ruby headers with a ruby/config.h for Darwin derived
# from its own. SDK_10_13 (MacOSX 10.13): i386, against that SDK's Ruby 2.3
# headers, with Debian's libc++ headers, which that SDK lacks. With both,
# scripts/link-macos.sh then links the bundles for arm64 and x86_64 and checks
# them. Without an SDK it says so and passes: there is nothing to compile against.
set -euo pipefail
cd "$(dirname "$0")/.."

sdk=${1:-}
sdk_1013=${2:-}
if [[ -z $sdk && -z $sdk_1013 ]]; then
  echo "check-macos: skipped: no macOS SDK given (make check-macos MACOS_SDK=<dir>" \
    "[MACOS_SDK_1013=<dir>]; docs/MACOS.md says where to get one)"
  exit 0
fi
for dir in "$sdk" "$sdk_1013"; do
  if [[ -n $dir && ! -d $dir/System/Library/Frameworks/AppKit.framework/Headers ]]; then
    echo "check-macos: $dir holds no AppKit headers: lay the SDK out as docs/MACOS.md says" >&2
    exit 1
  fi
done

RUBY=${RUBY:-ruby}
work=build-macos
mkdir -p "$work"
work=$(cd "$work" && pwd)

# Ruby's configuration header for Darwin, from this machine's Linux one: the
# sizes are those of every 64-bit Darwin target too; what glibc alone has is
# dropped, and what the Darwin C library has instead is added.
darwin_ruby_config() {
  local arch_dir out
  arch_dir=$("$RUBY" -e 'print RbConfig::CONFIG["rubyarchhdrdir"]')
  out=$work/ruby-darwin
  mkdir -p "$out/ruby"
  sed -E \
    -e '/^#define (_GNU_SOURCE|USE_ELF|STACK_END_ADDRESS) /d' \
    -e '/^#define HAVE_(MALLOC_H|ELF_H|GMP_H|X86INTRIN_H|CRYPT_H|SANITIZER_ASAN_INTERFACE_H) /d' \
    -e '/^#define HAVE_SYS_(EVENTFD|PRCTL|SENDFILE|SYSMACROS|USER)_H /d' \
    -e '/^#define HAVE_(MALLOC_USABLE_SIZE|MEMALIGN|SENDFILE|GNU_QSORT_R|PTHREAD_GETATTR_NP) /d' \
    -e '/^#define SET_(CURRENT|ANOTHER)_THREAD_NAME/d' \
    -e 's/^#define DLEXT_MAXLEN .*/#define DLEXT_MAXLEN 7/' \
    -e 's/^#define DLEXT .*/#define DLEXT ".bundle"/' \
    -e 's/^#define RUBY_PLATFORM .*/#define RUBY_PLATFORM "universal-darwin"/' \
    "$arch_dir/ruby/config.h" >"$out/ruby/config.h"
  cat >>"$out/ruby/config.h" <<'EOF'
#define HAVE_MALLOC_MALLOC_H 1
#define HAVE_MALLOC_SIZE 1
#define SET_CURRENT_THREAD_NAME(name) pthread_setname_np(name)
EOF
  echo "$out"
}

# Configures the macOS branch for one architecture into $work/<arch>, takes
# the compile commands it would run, and runs each as a syntax check with
# warnings as errors. The reference host, which that branch does not build
# (a real host stands in for it there), is checked with the extension's flags
# and the C++17 it needs. Arguments: arch target sdk ruby_hdr ruby_arch_hdr [extra C++ flags].
check_arch() {
  local arch=$1 target=$2 sysroot=$3 hdr=$4 arch_hdr=$5 extra=${6:-}
  local dir=$work/$arch
  rm -rf "$dir"
  mkdir -p "$dir"
  cat >"$dir/toolchain.cmake" <<EOF
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_OBJCXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET $target)
set(CMAKE_OBJCXX_COMPILER_TARGET $target)
set(CMAKE_OSX_SYSROOT $sysroot)
set(CMAKE_CXX_FLAGS_INIT "-stdlib=libc++ $extra")
set(CMAKE_OBJCXX_FLAGS_INIT "-stdlib=libc++ $extra")
# Nothing can be linked here: the compiler checks only compile.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
EOF
  cmake -S . -B "$dir/cmake" -DCMAKE_TOOLCHAIN_FILE="$dir/toolchain.cmake" \
    -DCMAKE_OSX_ARCHITECTURES="$arch" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
    -DHOST_RUBY_HDR_DIR="$hdr" -DHOST_RUBY_ARCH_HDR_DIR="$arch_hdr" >"$dir/cmake.log" 2>&1 ||
    { cat "$dir/cmake.log" >&2; return 1; }
  "$RUBY" -rjson -rshellwords -e '
    commands = JSON.parse(File.read(ARGV[0]))
    host = %w[host/main.mm host/toolkit.mm host/command_line.cpp host/ruby_runtime.cpp]
    template = commands.find { |c| c["file"].end_with?(".mm") && c["command"].include?("OptionsPanel.dir") }
    commands += host.map do |file|
      words = template["command"].shellsplit.map { |w| w.start_with?("-std=") ? "-std=gnu++17" : w }
      words[-1] = File.expand_path(file)
      { "directory" => template["directory"], "command" => words.shelljoin, "file" => file }
    end
    commands.each do |c|
      words = c["command"].shellsplit
      at = words.index("-o")
      words.slice!(at, 2)
      words.delete("-c")
      words.insert(1, "-fsyntax-only", "-Werror")
      puts(words.shelljoin)
    end' "$dir/cmake/compile_commands.json" >"$dir/commands"
  local count
  count=$(wc -l <"$dir/commands")
  if ! xargs -P 2 -d '\n' -I{} sh -c '{}' <"$dir/commands" >"$dir/compile.log" 2>&1 ||
    [[ -s $dir/compile.log ]]; then
    cat "$dir/compile.log" >&2
    echo "check-macos: $arch: FAILED (log: $dir/compile.log)"
    return 1
  fi
  echo "check-macos: $arch ($target, $(basename "$sysroot")): $count sources, no error, no warning"
}

scripts/install-deps.sh --macos
status=0
if [[ -n $sdk ]]; then
  config=$(darwin_ruby_config)
  hdr=$("$RUBY" -e 'print RbConfig::CONFIG["rubyhdrdir"]')
  check_arch arm64 arm64-apple-macos "$sdk" "$hdr" "$config" || status=1
  check_arch x86_64 x86_64-apple-macos "$sdk" "$hdr" "$config" || status=1
  # Linking needs libSystem's and the C++ library's stubs, which only the
  # 10.13 SDK's copy holds.
  if [[ $status -eq 0 && -n $sdk_1013 ]]; then
    scripts/link-macos.sh "$sdk" "$sdk_1013" "$work" || status=1
  elif [[ $status -eq 0 ]]; then
    echo "check-macos: linking skipped: it takes libSystem and libc++ from the 10.13 SDK (MACOS_SDK_1013=<dir>)"
  fi
else
  echo "check-macos: arm64, x86_64: skipped: no current SDK given (MACOS_SDK=<dir>)"
fi
if [[ -n $sdk_1013 ]]; then
  ruby_framework=$sdk_1013/System/Library/Frameworks/Ruby.framework/Versions/2.3/usr/include/ruby-2.3.0
  libcxx=$(find /usr/lib -maxdepth 4 -path '/usr/lib/llvm-*/include/c++/v1' | sort -V | tail -n 1)
  check_arch i386 i386-apple-macos "$sdk_1013" "$ruby_framework" \
    "$ruby_framework/universal-darwin17" "-nostdinc++ -isystem $libcxx" || status=1
  echo "check-macos: i386: compiled only: LLVM's Mach-O linker (ld64.lld) has no i386 target"
else
  echo "check-macos: i386: skipped: no 10.13 SDK given (MACOS_SDK_1013=<dir>)"
fi
exit $status
