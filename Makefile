# Two commands do everything on a fresh Debian 12: `make demo` and `make test`.
BUILD ?= build
PRESET ?= release

.PHONY: all packages configure demo test sanitize bench lint docs clean

all: configure
	cmake --build $(BUILD)

packages:
	@sh packages.sh

configure: packages
	@cmake --preset $(PRESET) -B $(BUILD) --log-level=WARNING

test: all
	ctest --test-dir $(BUILD) --output-on-failure -j 2

clean:
	rm -rf build build-sanitize demo
