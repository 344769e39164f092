# Two commands do everything on a fresh Debian 12: `make demo` and `make test`.
# They install what packages.txt lists and this machine lacks, build in build/, and run.

.PHONY: all build lv2 install demo test check-lv2 check-ardour sanitize tsan soak fuzz bench audition docs lint clean

all: build

build:
	@sh packages.sh packages.txt
	@cmake --preset release --log-level=WARNING
	@cmake --build build

# The LV2 bundle alone: build/corvane.lv2.
lv2:
	@sh packages.sh packages.txt
	@cmake --preset release --log-level=WARNING
	@cmake --build build --target corvane_lv2

# The LV2 bundle, the program, its manual page and the docs; DESTDIR=... packs them below another root.
PREFIX ?= /usr/local
install:
	@sh packages.sh packages.txt
	@cmake --preset release --log-level=WARNING
	@cmake --build build --target corvane corvane_lv2
	@cmake --install build --prefix "$(abspath $(PREFIX))"

# Four settings on a recorded voice: a table here, files and pictures in demo/.
demo: build
	@build/corvane demo --out-dir demo

test: build
	@ctest --test-dir build --output-on-failure -j 2

# The tests of the LV2 plug-in alone; other people's programs are among them.
check-lv2: build
	@ctest --test-dir build --output-on-failure --no-tests=error -L lv2

# The strip in Ardour, without its window: a preset, a session, the same in a second process.
check-ardour: build
	@sh packages.sh packages-ardour.txt
	@tests/lv2/ardour.sh build/corvane.lv2 build/corvane

# The same tests under the address and undefined-behaviour sanitizers.
sanitize:
	@sh packages.sh packages.txt
	@cmake --preset sanitize --log-level=WARNING
	@cmake --build build-sanitize
	@ctest --test-dir build-sanitize --output-on-failure -j 2

# The tests in which threads meet, under the thread sanitizer; the longest of them writes for SECONDS.
tsan: SECONDS = 20
tsan:
	@sh packages.sh packages.txt
	@cmake --preset tsan --log-level=WARNING
	@cmake --build build-tsan --target threaded_tests
	@CORVANE_THREADS_SECONDS=$(SECONDS) ctest --test-dir build-tsan --output-on-failure --no-tests=error -L threads

# Ten live strips under everything that people and hosts do, for so many seconds. make soak SECONDS=3600 SEED=7
soak: SECONDS = 300
soak: SEED = 1
soak: build
	@build/tests/soak/corvane_soak --seconds $(SECONDS) --seed $(SEED)

# What comes from outside (files, states, typed texts, scripts) against whatever it may hold: ten minutes for each
# target of fuzz/, two at a time; `make fuzz SECONDS=30` for a short look. Findings land in fuzz/findings.
fuzz: SECONDS = 600
fuzz:
	@sh packages.sh packages.txt
	@sh packages.sh packages-fuzz.txt
	@cmake --preset fuzz --log-level=WARNING
	@cmake --build build-fuzz --target fuzzers
	@fuzz/run.sh $(SECONDS)

# Nanoseconds per sample of every variant, beside one plain biquad.
bench: build
	@build/bench/corvane_bench

# What every factory preset does to the material of its category; docs/sound-bank.md tells how to read it.
# make audition CATEGORY=Drums PRESET=snare
audition:
	@sh packages.sh packages.txt
	@sh packages.sh packages-audition.txt
	@cmake --preset release --log-level=WARNING
	@cmake --build build --target corvane_audition
	@build/corvane_audition --category "$(CATEGORY)" --preset "$(PRESET)"

# The printed reference of all parameters.
docs: build
	@build/corvane params --markdown > docs/parameters.md

lint: build
	@sh packages.sh packages-lint.txt
	git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
	git ls-files 'src/*.cpp' 'platform/*.cpp' 'apps/*.cpp' | xargs -P 2 -n 4 clang-tidy -p build --quiet

clean:
	rm -rf build build-sanitize build-tsan build-fuzz demo
