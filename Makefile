# The README's commands. Each installs what is missing, then builds incrementally in build/.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)

.PHONY: deps configure build demo test bench clean

deps:
	@scripts/install-deps

configure: deps
	@test -f $(BUILD_DIR)/build.ninja || cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

demo: build
	@scripts/demo $(BUILD_DIR)

test: build
	@ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

bench: build
	@$(BUILD_DIR)/bench/tessel-bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true

clean:
	@rm -rf $(BUILD_DIR)
