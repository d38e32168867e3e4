# Short names for the scripts; each of them starts from a fresh clone.
.PHONY: demo test bench web clean

demo:
	@scripts/demo.sh

test:
	@scripts/test.sh

bench:
	@scripts/bench.sh

web:
	@scripts/web.sh

clean:
	rm -rf build
