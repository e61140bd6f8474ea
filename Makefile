# The README's two commands: `make demo` and `make check`. Everything else here serves them.
BUILD_DIR ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
SCREENSHOTS ?= $(CURDIR)/demo-screenshots

# What a fresh Debian 12 machine lacks to build, test and show the plug-in.
PACKAGES := cmake make g++ qtbase5-dev qttools5-dev qttools5-dev-tools \
            fonts-dejavu-core util-linux iproute2

.PHONY: check demo deps build

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

check: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j$(JOBS)

# Runs the console on the simulated host: interactive with a display, screenshots without one.
demo: build
	BUILD_DIR=$(BUILD_DIR) sandbox/demo "$(SCREENSHOTS)"
