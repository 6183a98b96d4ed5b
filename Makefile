# The two commands a fresh machine needs: `make demo` and `make test`.
BUILD_DIR ?= build
RUBY ?= ruby
TEST_TIMEOUT ?= 900
# The Rubies that `make test-rubies` fetches from Debian's archive and tests on.
RUBIES ?= 2.7 3.3

.PHONY: all deps build test test-rubies demo screenshots check-reliability check-reliability-short check-mutants check-cxx14 check-macos bench clean format

all: build

deps:
	@scripts/install-deps.sh

build: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DRUBY_EXECUTABLE="$$(command -v $(RUBY))" $(CMAKE_ARGS) >/dev/null
	@cmake --build $(BUILD_DIR) -j2 -- --no-print-directory

test: build
	@timeout $(TEST_TIMEOUT) scripts/with-display.sh \
	  $(RUBY) -I $(BUILD_DIR) -I test -e 'Dir["test/test_*.rb"].sort.each { |f| require File.expand_path(f) }'

# The suite on each of RUBIES, built against it into build-ruby<version>/;
# scripts/fetch-ruby.sh keeps those Rubies in build-rubies/.
test-rubies: deps
	@for v in $(RUBIES); do \
	  ( env_file=$$(scripts/fetch-ruby.sh $$v) && . "$$env_file" && echo "Ruby $$v:" && \
	    $(MAKE) --no-print-directory test RUBY="$$RUBY" BUILD_DIR=build-ruby$$v \
	      CMAKE_ARGS="$$RUBY_CMAKE_ARGS" ) || exit 1; \
	done

# GC stress, ASan+UBSan, valgrind memcheck, fuzz and soak (README, "Reliability");
# the short form runs small sizes, a few minutes in all.
check-reliability: build
	@scripts/check-reliability.sh

check-reliability-short: build
	@scripts/check-reliability.sh --short

# Simple faults made in binding/, panel/ and platform/, each built in build-mutants/
# and run against the suite (README, "Mutants"): 100 of them, or
# MUTANTS_ARGS=--quick for a few; --key K replays a run.
check-mutants: deps
	@$(RUBY) scripts/check-mutants.rb --ruby "$$(command -v $(RUBY))" $(MUTANTS_ARGS)

# The two extensions as C++14, which the older toolchains some hosts still need
# must be able to build (docs/MACOS.md); C++17 features that the compiler would
# accept as extensions count as errors.
CXX14_FLAGS = -Werror=c++17-extensions
check-cxx14: deps
	@cmake -S . -B build-cxx14 -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_STANDARD=14 \
	  -DCMAKE_OBJCXX_STANDARD=14 -DCMAKE_CXX_FLAGS="$(CXX14_FLAGS)" \
	  -DCMAKE_OBJCXX_FLAGS="$(CXX14_FLAGS)" >/dev/null
	@cmake --build build-cxx14 -j2 --target OptionsPanel OptionsPanelDriver -- --no-print-directory

# Every source of both extensions and the reference host compiled against
# Apple's SDK headers, as the macOS branch of CMakeLists.txt compiles them,
# warnings as errors: arm64 and x86_64 with MACOS_SDK, i386 with MACOS_SDK_1013.
# With both, both bundles linked for arm64 and x86_64 and checked (ld64.lld).
# Without either it says it was skipped (docs/MACOS.md says where to get them).
check-macos:
	@scripts/check-macos.sh "$(MACOS_SDK)" "$(MACOS_SDK_1013)"

# Our panel beside the same dialog in GTK 3 and in a WebKitGTK view (docs/PERFORMANCE.md);
# BENCH_ARGS="--write docs/PERFORMANCE.md" also records the tables there.
bench: build
	@scripts/install-deps.sh --bench
	@timeout 7200 scripts/with-display.sh $(RUBY) bench/run.rb --build $(BUILD_DIR) $(BENCH_ARGS)

demo: build
	@scripts/with-display.sh $(BUILD_DIR)/velmar-host examples/render_settings_plugin.rb -- \
	  --shots $(BUILD_DIR)/demo $(DEMO_ARGS)

# Both tabs, as built and with every group changed, in each language: English,
# German and Japanese for the docs, and a contact sheet of every language with
# its groups changed.
SHOT_LANGUAGES = en de ja fr es it pt_br ru pl ko zh_cn
screenshots: build
	@scripts/with-display.sh sh -c 'for lang in $(SHOT_LANGUAGES); do \
	  $(BUILD_DIR)/velmar-host --timeout 60 scripts/screenshots.rb -- $$lang $(BUILD_DIR)/shots || exit 1; done'
	@cp $(foreach lang,en de ja,$(BUILD_DIR)/shots/$(lang)-*.png) docs/images/
	@montage -label '%t' -font DejaVu-Sans -pointsize 14 -geometry +8+8 -tile 4x -background '#dddddd' -depth 8 \
	  $(foreach lang,$(SHOT_LANGUAGES),$(BUILD_DIR)/shots/$(lang)-image-changed.png \
	  $(BUILD_DIR)/shots/$(lang)-environment-changed.png) docs/images/every-language.png

format:
	@clang-format -i binding/*.cpp binding/*.h panel/*.mm panel/*.h panel/*.cpp platform/*.h platform/*.cpp driver/*.mm driver/*.h \
	  host/*.mm host/*.cpp host/*.h

clean:
	@rm -rf $(BUILD_DIR) build-cxx14 build-macos
