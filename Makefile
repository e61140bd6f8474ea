# The README's two commands: `make demo` and `make check`. Everything else here serves them.
BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
SCREENSHOTS ?= $(CURDIR)/demo-screenshots

# What a fresh Debian 12 machine lacks to build, test and show the plug-in.
PACKAGES := cmake make g++ qtbase5-dev qtbase5-private-dev qttools5-dev qttools5-dev-tools \
            libsystemd-dev pkg-config \
            fonts-dejavu-core util-linux iproute2 strace e2fsprogs dbus-daemon qttranslations5-l10n \
            acl attr systemd dbus \
            xvfb openbox at-spi2-core python3-pyatspi

# The Debian packages (make deb) and the suite that installs them need these as well
# (systemd-tmpfiles, of the systemd above, applies the package's rule).
DEB_PACKAGES := build-essential dpkg-dev debhelper lintian
DEB_DIR ?= $(BUILD_DIR)/deb

.PHONY: check demo deps build deb

deps:
	@missing=""; \
	for p in $(PACKAGES); do \
	    dpkg-query -W -f='$${Status}\n' "$$p" 2>/dev/null | grep -q '^install ok installed' \
	        || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	    if [ "$$(id -u)" -eq 0 ]; then \
	        echo "Installing:$$missing"; \
	        apt-get update -qq && \
	        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing; \
	    else \
	        echo "Some packages are missing. Run this, then try again:"; \
	        echo "  sudo apt-get install -y$$missing"; \
	        exit 1; \
	    fi; \
	fi

build: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD_DIR) -j$(JOBS)

check deb: PACKAGES += $(DEB_PACKAGES)

# PYX_DEB_DIR tells the installed-package suite where the packages are, and that it must find them.
check: build deb
	cd $(BUILD_DIR) && PYX_DEB_DIR=$(abspath $(DEB_DIR)) ctest --output-on-failure -j$(JOBS)

# The whole suite again in a tree of its own built with AddressSanitizer and UndefinedBehavior-
# Sanitizer: a memory error, undefined behaviour or a leak in our code fails its test.
ASAN_BUILD_DIR ?= build-asan
.PHONY: build-asan check-asan
build-asan: deps
	cmake -S . -B $(ASAN_BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DPYX_SANITIZE=ON
	cmake --build $(ASAN_BUILD_DIR) -j$(JOBS)

check-asan: build-asan
	cd $(ASAN_BUILD_DIR) && ctest --output-on-failure -j$(JOBS)

# The system suites SHAKE_ROUNDS times in a row with one core held busy, in the normal tree or
# the sanitizer tree: a wait that holds only on a quiet machine fails here.
SHAKE_ROUNDS ?= 3
.PHONY: shake shake-asan
shake: build
	tests/shake $(BUILD_DIR) $(SHAKE_ROUNDS)

shake-asan: build-asan
	tests/shake $(ASAN_BUILD_DIR) $(SHAKE_ROUNDS)

# libFuzzer targets (fuzz/), built by clang in a tree of their own; each runs FUZZ_SECONDS.
FUZZ_BUILD_DIR ?= build-fuzz
FUZZ_SECONDS ?= 60
.PHONY: fuzz
fuzz: PACKAGES += clang libclang-rt-14-dev
fuzz: deps
	cmake -S . -B $(FUZZ_BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	    -DCMAKE_CXX_COMPILER=clang++ -DPYX_FUZZ=ON -DBUILD_TESTING=OFF
	cmake --build $(FUZZ_BUILD_DIR) -j$(JOBS) --target fuzzers
	fuzz/run $(FUZZ_BUILD_DIR) $(FUZZ_SECONDS)

# Times the plug-in against the tools an administrator would use instead; prints the table that
# docs/performance.md shows.
.PHONY: bench
bench: PACKAGES += hyperfine xvfb xterm xfonts-base
bench: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD_DIR) -j$(JOBS) --target bench-drivers
	bench/run $(BUILD_DIR)

# Runs the console on the simulated host: interactive with a display, screenshots without one.
demo: build
	BUILD_DIR=$(BUILD_DIR) sandbox/demo "$(SCREENSHOTS)"

# The plug-in's package and the console stand-in's, built from a copy of the tree so that the
# package build's files stay out of it; the .deb, .changes and .buildinfo files land in DEB_DIR.
deb: deps
	rm -rf $(DEB_DIR)/src $(DEB_DIR)/*.deb $(DEB_DIR)/*.changes $(DEB_DIR)/*.buildinfo
	mkdir -p $(DEB_DIR)/src
	tar -cf - --exclude-vcs --exclude=./build --exclude='./build-*' --exclude='./obj-*' \
	    --exclude=./demo-screenshots --exclude=./$(BUILD_DIR) --exclude=./$(DEB_DIR) . \
	    | tar -xf - -C $(DEB_DIR)/src
	cd $(DEB_DIR)/src && DEB_BUILD_OPTIONS="nocheck parallel=$(JOBS)" dpkg-buildpackage -us -uc -b
	lintian --fail-on error $(DEB_DIR)/*.changes
