# Short names for the scripts; each of them starts from a fresh clone.
.PHONY: demo test bench clean

demo:
	@scripts/demo.sh

test:
	@scripts/test.sh

bench:
	@scripts/bench.sh

clean:
	rm -rf build
