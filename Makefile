# The two commands a newcomer needs: `make run` and `make test`.
BUILD ?= build
JOBS ?= 2
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo

.PHONY: setup configure build run test bench fuzz fuzz-build fuzz-long package clean

setup:
	@bash scripts/setup.sh

configure: setup
	@test -f $(BUILD)/CMakeCache.txt || cmake -S . -B $(BUILD) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD) -j$(JOBS)

run: build
	$(BUILD)/bin/tunecatch

test: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j$(JOBS) --timeout 300

# A Debian package in $(BUILD)/: apt-get install ./$(BUILD)/tunecatch_*.deb
package: build
	cmake --build $(BUILD) --target package

bench: build
	@bash scripts/bench.sh $(BUILD)

fuzz-build: setup
	cmake -S . -B $(BUILD)-fuzz -DCMAKE_CXX_COMPILER=clang++ -DTUNECATCH_FUZZ=ON \
	    -DTUNECATCH_BUILD_TESTS=OFF -DTUNECATCH_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD)-fuzz -j$(JOBS)

# A short run of every fuzz target.
fuzz: fuzz-build
	@bash scripts/fuzz.sh $(BUILD)-fuzz

# Ten minutes per target; what reached new code is kept in fuzz/corpus.
fuzz-long: fuzz-build
	@FUZZ_SECONDS=600 FUZZ_KEEP=1 bash scripts/fuzz.sh $(BUILD)-fuzz

clean:
	rm -rf $(BUILD) $(BUILD)-fuzz
