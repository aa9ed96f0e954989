# Everyday commands. Each one first makes sure the build tools are there.
#   make test     sanitizer build and all its tests, package checks among them (what CI runs)
#   make check-clang  the same sources and tests built with clang (CI runs it after make test)
#   make check-static  static libraries, release build, all tests (CI runs it last)
#   make demo     build and run the demo program (examples/soic8)
#   make bench    release build, run the benchmarks
#   make fuzz     libFuzzer build (clang), each target for FUZZ_SECONDS (default 60);
#                 new inputs go to build/fuzz/corpus/<target>
#   make install  release build installed to PREFIX (default /usr/local)
#   make format   clang-format every source
#   make clean    remove build/

PREFIX ?= /usr/local
CXX := g++
JOBS ?= 2

SOURCE_DIRS := foundation dispc imageio scopes tools tests bench fuzz examples

# Debian packages the build needs; a command name is tested where there is one.
DEB_PACKAGES := cmake ninja-build g++ clang pkgconf libgtest-dev libgmock-dev libbenchmark-dev libpng-dev \
                libcairo2-dev fonts-dejavu-core

export UBSAN_OPTIONS ?= print_stacktrace=1

.PHONY: all deps test check-clang check-static demo bench fuzz install format clean

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
	    pkgconf) command -v pkg-config >/dev/null 2>&1 && continue ;; \
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

check-clang: deps
	cmake --preset clang
	cmake --build --preset clang -j $(JOBS)
	ctest --preset clang -j $(JOBS)

check-static: deps
	CXX=$(CXX) cmake --preset static
	cmake --build --preset static -j $(JOBS)
	ctest --preset static -j $(JOBS)

demo: deps
	CXX=$(CXX) cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target soic8
	$(CURDIR)/build/dev/examples/soic8

# Peer libraries the benchmarks measure against (Boost.Geometry, headers only;
# OpenCV's polygon fill; Cairo, a dependency of the device, serves as a peer too).
bench: DEB_PACKAGES += libboost-dev libopencv-dev
bench: deps
	CXX=$(CXX) cmake --preset release
	cmake --build --preset release -j $(JOBS) --target bench
	@set -e; for b in $(CURDIR)/build/release/bench/*_bench; do \
	  [ -x "$$b" ] || continue; echo "== $$(basename $$b)"; "$$b"; \
	done

FUZZ_SECONDS ?= 60
fuzz: deps
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	@set -e; for f in $(CURDIR)/build/fuzz/fuzz/*_fuzzer; do \
	  name=$$(basename $$f _fuzzer); out=$(CURDIR)/build/fuzz/corpus/$$name; mkdir -p $$out; \
	  echo "== $$name ($(FUZZ_SECONDS) s)"; \
	  "$$f" -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 $$out $(CURDIR)/fuzz/corpus/$$name; \
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
