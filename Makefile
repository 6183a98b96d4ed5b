# The two commands a fresh machine needs: `make demo` and `make test`.
BUILD_DIR ?= build
RUBY ?= ruby
TEST_TIMEOUT ?= 900

.PHONY: all deps build test demo clean format

all: build

deps:
	@scripts/install-deps.sh

build: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build $(BUILD_DIR) -j2 -- --no-print-directory

test: build
	@timeout $(TEST_TIMEOUT) scripts/with-display.sh \
	  $(RUBY) -I $(BUILD_DIR) -I test -e 'Dir["test/test_*.rb"].sort.each { |f| require File.expand_path(f) }'

demo: build
	@scripts/with-display.sh $(RUBY) -I $(BUILD_DIR) examples/demo.rb $(DEMO_ARGS)

format:
	@clang-format -i binding/*.cpp binding/*.h panel/*.mm panel/*.h panel/*.cpp platform/*.h test/driver/*.mm

clean:
	@rm -rf $(BUILD_DIR)
