# The two commands a fresh machine needs: `make demo` and `make test`.
BUILD_DIR ?= build
RUBY ?= ruby
TEST_TIMEOUT ?= 900

.PHONY: all deps build test demo screenshots check-reliability check-reliability-short check-cxx14 bench clean format

all: build

deps:
	@scripts/install-deps.sh

build: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build $(BUILD_DIR) -j2 -- --no-print-directory

test: build
	@timeout $(TEST_TIMEOUT) scripts/with-display.sh \
	  $(RUBY) -I $(BUILD_DIR) -I test -e 'Dir["test/test_*.rb"].sort.each { |f| require File.expand_path(f) }'

# GC stress, ASan+UBSan, valgrind memcheck, fuzz and soak (README, "Reliability");
# the short form runs small sizes, a few minutes in all.
check-reliability: build
	@scripts/check-reliability.sh

check-reliability-short: build
	@scripts/check-reliability.sh --short

# The two extensions as C++14, which the older toolchains some hosts still need
# must be able to build (docs/MACOS.md); C++17 features that the compiler would
# accept as extensions count as errors.
CXX14_FLAGS = -Werror=c++17-extensions
check-cxx14: deps
	@cmake -S . -B build-cxx14 -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_STANDARD=14 \
	  -DCMAKE_OBJCXX_STANDARD=14 -DCMAKE_CXX_FLAGS="$(CXX14_FLAGS)" \
	  -DCMAKE_OBJCXX_FLAGS="$(CXX14_FLAGS)" >/dev/null
	@cmake --build build-cxx14 -j2 --target OptionsPanel OptionsPanelDriver -- --no-print-directory

# Our panel beside the same dialog in GTK 3 and in a WebKitGTK view (docs/PERFORMANCE.md);
# BENCH_ARGS="--write docs/PERFORMANCE.md" also records the tables there.
bench: build
	@scripts/install-deps.sh --bench
	@timeout 7200 scripts/with-display.sh $(RUBY) bench/run.rb --build $(BUILD_DIR) $(BENCH_ARGS)

demo: build
	@scripts/with-display.sh $(BUILD_DIR)/velmar-host examples/render_settings_plugin.rb -- \
	  --shots $(BUILD_DIR)/demo $(DEMO_ARGS)

# Both tabs, as built and with every group changed, in each language, for the docs.
screenshots: build
	@scripts/with-display.sh sh -c 'for lang in en de ja; do \
	  $(BUILD_DIR)/velmar-host --timeout 60 scripts/screenshots.rb -- $$lang docs/images || exit 1; done'

format:
	@clang-format -i binding/*.cpp binding/*.h panel/*.mm panel/*.h panel/*.cpp platform/*.h driver/*.mm \
	  host/*.mm host/*.cpp host/*.h

clean:
	@rm -rf $(BUILD_DIR) build-cxx14
