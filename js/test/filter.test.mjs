// In place and otherwise, a filter gives the same bits for any number of states: compilers of WebAssembly have
// vectorised the loop over 5 to 7 states wrongly where it runs in place.
import assert from "node:assert/strict";
import { test } from "node:test";
import { loadSorvoAudio } from "sorvo-audio";

/** The definition, in double, with a state that is stored as float. */
function filtered(b, a, x) {
    const z = new Float32Array(b.length);
    return x.map((value) => {
        const y = z[0] + b[0] * value;
        for (let k = 1; k < b.length; ++k) z[k - 1] = b[k] * value + (k + 1 < b.length ? z[k] - a[k] * y : -(a[k] * y));
        return y;
    });
}

for (const variant of ["simd128", "plain"]) {
    test(`in-place filters of ${variant}`, async () => {
        const { native } = await loadSorvoAudio({ variant });
        const x = Float32Array.from({ length: 500 }, (_, i) => Math.sin(i * i));
        for (let stateN = 1; stateN <= 12; ++stateN) {
            const b = Float32Array.from({ length: stateN + 1 }, (_, k) => 1 / (k + 2));
            const a = Float32Array.from({ length: stateN + 1 }, (_, k) => (k === 0 ? 1 : 0.5 * Math.cos(3 * k) / stateN));
            const expected = filtered(b, a, x);
            for (const dst of [x.slice(), new Float32Array(x.length)]) {
                const src = dst[1] === 0 ? x : dst;
                assert.equal(native.sorvoAudioLinerFilter(dst, src, b, a, null, 500, 500, stateN + 1, stateN + 1, 0), 0);
                assert.deepEqual(dst, expected, `${stateN} states, ${src === dst ? "in place" : "elsewhere"}`);
            }
        }
    });
}
