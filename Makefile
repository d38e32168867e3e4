# Short names for the scripts; each of them starts from a fresh clone.
.PHONY: demo test ports bench web clean

demo:
	@scripts/demo.sh

test:
	@scripts/test.sh

ports:
	@scripts/ports.sh

bench:
	@scripts/bench.sh

web:
	@scripts/web.sh

clean:
	rm -rf build
