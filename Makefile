# Everyday commands. Each one first makes sure the build tools are there.
#   make test     sanitizer build, all tests, then an installed-package check (what CI runs)
#   make check-clang  the same sources and tests built with clang (CI runs it after make test)
#   make demo     build and run the demo program
#   make bench    release build, run the benchmarks
#   make install  release build installed to PREFIX (default /usr/local)
#   make format   clang-format every source
#   make clean    remove build/

PREFIX ?= /usr/local
CXX := g++
JOBS ?= 2

SANITIZE_FLAGS := -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer
ASAN_DIR := $(CURDIR)/build/asan
INSTALL_DIR := $(ASAN_DIR)/_install
PACKAGE_DIR := $(ASAN_DIR)/_package
SOURCE_DIRS := foundation dispc tests bench fuzz examples

# Debian packages the build needs; a command name is tested where there is one.
DEB_PACKAGES := cmake ninja-build g++ clang libgtest-dev libgmock-dev libbenchmark-dev

export UBSAN_OPTIONS ?= print_stacktrace=1

.PHONY: all deps test check-clang demo bench install format clean

all: deps
	CXX=$(CXX) cmake --preset dev
	cmake --build --preset dev -j $(JOBS)

deps:
	@missing=""; \
	for pkg in $(DEB_PACKAGES); do \
	  case $$pkg in \
	    cmake) command -v cmake >/dev/null 2>&1 && continue ;; \
	    ninja-build) command -v ninja >/dev/null 2>&1 && continue ;; \
	    g++) command -v g++ >/dev/null 2>&1 && continue ;; \
	    clang) command -v clang++ >/dev/null 2>&1 && continue ;; \
	    *) dpkg -s $$pkg 2>/dev/null | grep -q '^Status: install ok installed' && continue ;; \
	  esac; \
	  missing="$$missing $$pkg"; \
	done; \
	if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" -eq 0 ]; then \
	    echo "Installing:$$missing"; \
	    export DEBIAN_FRONTEND=noninteractive; \
	    apt-get update && apt-get install -y $$missing || exit 1; \
	  else \
	    echo "Missing packages:$$missing" >&2; \
	    echo "Install them as root:  apt-get install -y$$missing" >&2; \
	    exit 1; \
	  fi; \
	fi

test: deps
	CXX=$(CXX) cmake --preset asan
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)
	rm -rf $(INSTALL_DIR) $(PACKAGE_DIR)
	cmake --install $(ASAN_DIR) --prefix $(INSTALL_DIR)
	CXX=$(CXX) cmake -S tests/package -B $(PACKAGE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_PREFIX_PATH=$(INSTALL_DIR) \
	  "-DCMAKE_CXX_FLAGS=$(SANITIZE_FLAGS)" "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined"
	cmake --build $(PACKAGE_DIR) -j $(JOBS)
	$(PACKAGE_DIR)/package_test

check-clang: deps
	cmake --preset clang
	cmake --build --preset clang -j $(JOBS)
	ctest --preset clang -j $(JOBS)

demo: deps
	CXX=$(CXX) cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target demo
	$(CURDIR)/build/dev/examples/demo

bench: deps
	CXX=$(CXX) cmake --preset release
	cmake --build --preset release -j $(JOBS) --target bench
	@set -e; for b in $(CURDIR)/build/release/bench/*_bench; do \
	  [ -x "$$b" ] || continue; echo "== $$(basename $$b)"; "$$b"; \
	done

install: deps
	CXX=$(CXX) cmake --preset release
	cmake --build --preset release -j $(JOBS)
	cmake --install $(CURDIR)/build/release --prefix $(PREFIX)

format:
	@command -v clang-format >/dev/null 2>&1 || { echo "clang-format not found (apt-get install clang-format)" >&2; exit 1; }
	find $(SOURCE_DIRS) \( -name '*.h' -o -name '*.cpp' \) -print0 | xargs -0 clang-format -i

clean:
	rm -rf $(CURDIR)/build
