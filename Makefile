# The README's commands. Each installs what is missing, then builds incrementally in build/.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)

SANITIZE_DIR ?= build-sanitize
FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 60
FUZZ_TARGETS := fuzz-decimal-time fuzz-decimal fuzz-calc-json fuzz-rules-json fuzz-ruleset-file fuzz-diagnostic-package fuzz-stub-number fuzz-stub-pdf fuzz-stub-tokens fuzz-stub-facts fuzz-position-defaults fuzz-signature-image fuzz-production-archive fuzz-setup-files fuzz-pdf-structure fuzz-dts-template-definition

.PHONY: deps configure build demo test bench check-sanitize fuzz clean screenshots app

deps:
	@scripts/install-deps

configure: deps
	@test -f $(BUILD_DIR)/build.ninja || cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

demo: build
	@scripts/demo $(BUILD_DIR)

# The window on your own store (the data folder, or TESSEL_STORE_ROOT).
app: build
	@$(BUILD_DIR)/App/shell/tessel-app

# A PNG of every main screen of the window, opened on a fresh demo store, in build/screenshots/.
screenshots: build
	@TESSEL_DEMO_NO_WINDOW=1 scripts/demo $(BUILD_DIR) >/dev/null
	@QT_QPA_PLATFORM=offscreen $(BUILD_DIR)/tools/tessel-screenshots $(BUILD_DIR)/demo $(BUILD_DIR)/screenshots $(BUILD_DIR)/fixtures/stubs/demo-week $(BUILD_DIR)/fixtures/forms

test: build
	@ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

# OCR runs with one OpenMP thread, as tessel runs it, and so does the tesseract command it is measured against.
bench: build
	@OMP_THREAD_LIMIT=1 $(BUILD_DIR)/bench/tessel-bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true

# The whole suite under AddressSanitizer and UndefinedBehaviorSanitizer, in a build folder of its own.
check-sanitize: deps
	@test -f $(SANITIZE_DIR)/build.ninja || cmake -S . -B $(SANITIZE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTESSEL_SANITIZE=ON -DTESSEL_BUILD_BENCH=OFF
	@cmake --build $(SANITIZE_DIR) -j $(JOBS)
	@ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1 \
		LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:print_suppressions=0 \
		ctest --test-dir $(SANITIZE_DIR) --output-on-failure -j $(JOBS)

# Each libFuzzer target for FUZZ_SECONDS, starting from the seeds kept in fuzz/corpus/. What a run adds
# to the corpus stays in the build folder; a crash is left there as crash-* for its regression test.
# Fontconfig's caches, kept for the life of the process, are not counted as leaks (as in the tests).
fuzz: deps
	@test -f $(FUZZ_DIR)/build.ninja || CXX=clang++ cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTESSEL_FUZZ=ON
	@cmake --build $(FUZZ_DIR) -j $(JOBS) --target $(FUZZ_TARGETS)
	@for target in $(FUZZ_TARGETS); do \
		mkdir -p $(FUZZ_DIR)/corpus/$$target && cp -n fuzz/corpus/$$target/* $(FUZZ_DIR)/corpus/$$target/ 2>/dev/null; \
		echo "== $$target for $(FUZZ_SECONDS) s"; \
		(cd $(FUZZ_DIR) && LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:print_suppressions=0 \
			./fuzz/$$target -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 corpus/$$target) || exit 1; \
	done

clean:
	@rm -rf $(BUILD_DIR) $(SANITIZE_DIR) $(FUZZ_DIR)
