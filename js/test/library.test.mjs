import assert from "node:assert/strict";
import { test } from "node:test";
import { constants, loadSorvoAudio, SorvoArgumentError, SorvoMemoryError } from "sorvo-audio";

const sorvo = await loadSorvoAudio();
const { native } = sorvo;
const signal = (n) => Float32Array.from({ length: n }, (_, i) => Math.sin(i * i / 1000) * (i % 97) / 97);
const y = signal(16000);
const close = (a, b, tolerance) => a.forEach((value, i) => assert.ok(Math.abs(value - b[i]) <= tolerance, `${i}`));

/** The error that names this argument. */
const refuses = (argument, call) =>
    assert.throws(call, (error) => error instanceof SorvoArgumentError && error.argument === argument
        && error.message.includes(error.rule) && "value" in error, argument);

test("an inverse gives back the signal", () => {
    close(sorvo.ifft(sorvo.fft(y.subarray(0, 300))).filter((_, i) => i % 2 === 0), y, 1e-6);
    for (const options of [{ nFft: 512 }, { nFft: 400, hopLength: 160, center: false }]) {
        const length = options.center === false ? 15_000 : y.length;
        const { nFft, ...others } = options;
        const back = sorvo.istft(sorvo.stft(y, options), { ...others, length });
        close(back.subarray(400, 14_000), y.subarray(400, 14_000), 1e-5);
    }
});

test("what is made of parts equals the whole", () => {
    const options = { sr: 16000, nFft: 400, hopLength: 160, nMels: 80 };
    const whole = sorvo.melSpectrogram(y, options);
    const powers = sorvo.stft(y, { nFft: 400, hopLength: 160, power: 2 });
    assert.deepEqual(sorvo.melOfSpectrogram(powers, { sr: 16000, nMels: 80 }).shape, whole.shape);
    close(sorvo.melOfSpectrogram(powers, { sr: 16000, nMels: 80 }).data, whole.data, 1e-4);
    assert.equal(sorvo.frameCount(y.length, { nFft: 400, hopLength: 160 }), whole.shape[1]);
    const b = [0.2, 0.3], a = [1, -0.4];
    const first = sorvo.lfilter(b, a, y.subarray(0, 777), { zi: new Float32Array(1) });
    const second = sorvo.lfilter(b, a, y.subarray(777), { zi: first.zf });
    assert.deepEqual(Float32Array.of(...first.y, ...second.y), sorvo.lfilter(b, a, y));
    const { magnitude, phase } = sorvo.magphase(sorvo.fft(y.subarray(0, 64)), { phase: "angle" });
    close(magnitude.map((value, i) => value * Math.cos(phase[i])),
        sorvo.fft(y.subarray(0, 64)).filter((_, i) => i % 2 === 0), 1e-5);
});

test("streams give the bits of the whole signal", () => {
    const joined = (parts, rowN) => {
        const total = parts.reduce((n, part) => n + part.shape[1], 0);
        const data = new Float32Array(rowN * total);
        let done = 0;
        for (const part of parts) {
            const n = part.shape[1];
            for (let row = 0; row < rowN; ++row) data.set(part.data.subarray(row * n, row * n + n), row * total + done);
            done += n;
        }
        return { data, shape: [rowN, total] };
    };
    const settings = [{}, { center: false }, { padMode: "constant" }, { hopLength: 700 }];
    for (const setting of settings) {
        const options = { sr: 16000, nFft: 400, hopLength: 160, nMels: 40, ...setting };
        const stream = sorvo.melStream(options);
        for (const blockN of [128, 1, 5000]) {
            const parts = [];
            for (let at = 0; at < 9000; at += blockN) parts.push(stream.push(y.subarray(at, Math.min(at + blockN, 9000))));
            assert.ok(parts.at(-1) !== undefined && joined(parts, 40).shape[1] > 10);
            parts.push(stream.flush());
            assert.deepEqual(joined(parts, 40), sorvo.melSpectrogram(y.subarray(0, 9000), options));
        }
    }
    for (const [origSr, targetSr] of [[48000, 16000], [44100, 16000], [16000, 22050]]) {
        for (const tail of ["zeros", "same", "full"]) {
            const stream = sorvo.resampleStream({ origSr, targetSr, tail });
            const parts = [];
            for (let at = 0; at < y.length; at += 1000) parts.push(...stream.push(y.subarray(at, at + 1000)));
            assert.deepEqual(Float32Array.of(...parts, ...stream.flush()), sorvo.resample(y, { origSr, targetSr, tail }));
        }
    }
});

test("errors name the argument, its value and the rule", () => {
    refuses("nFft", () => sorvo.stft(y, { nFft: 0 }));
    refuses("hopLength", () => sorvo.stft(y, { hopLength: 1.5 }));
    refuses("window", () => sorvo.stft(y, { window: "hanning" }));
    refuses("the option", () => sorvo.stft(y, { hop_length: 160 }));
    refuses("y", () => sorvo.stft([1, 2, 3]));
    refuses("y", () => sorvo.stft(new Int16Array(8000)));
    refuses("y.length", () => sorvo.stft(y.subarray(0, 100)));
    refuses("sr", () => sorvo.melSpectrogram(y, {}));
    refuses("nMels", () => sorvo.melSpectrogram(y, { sr: 16000, nFft: 100, nMels: 51 }));
    refuses("fmax", () => sorvo.melSpectrogram(y, { sr: 16000, fmin: 4000, fmax: 100 }));
    refuses("power", () => sorvo.melSpectrogram(y, { sr: 16000, power: NaN }));
    refuses("x.length", () => sorvo.fft(new Float32Array(0)));
    refuses("x.length", () => sorvo.ifft(new Float32Array(3)));
    refuses("zi.length", () => sorvo.lfilter([1], [1, 2, 3], y, { zi: new Float32Array(1) }));
    refuses("padlen", () => sorvo.filtfilt([1], [1, 0.5], y, { padlen: 16000 }));
    refuses("origSr", () => sorvo.resample(y, { targetSr: 16000 }));
    refuses("tail", () => sorvo.resample(y, { origSr: 1, targetSr: 1, tail: "all" }));
    refuses("spectrogram.data.length", () => sorvo.istft({ data: y, shape: [201, 10, 2] }));
    refuses("nMfcc", () => sorvo.mfcc(y, { sr: 16000, nMels: 40, nMfcc: 41 }));
    refuses("y.length", () => sorvo.presets.whisper.features(y.subarray(0, 10)));
    refuses("amin", () => sorvo.powerToDb(y, { amin: 0 }));
    refuses("argument 2 of sorvoAudioFFT", () => native.sorvoAudioFFT(y, y, 2 ** 31));
    refuses("argument 1 of sorvoAudioFFT", () => native.sorvoAudioFFT(y, [1, 2], 2));
    refuses("the length of argument 0", () => native.sorvoAudioFFT(new Float32Array(7), y, 4));
    refuses("the number of arguments of sorvoAudioFFT", () => native.sorvoAudioFFT(y, y));
});

/** Calls that the library accepts; the values that each argument must not have are changed in. */
const good = {
    sorvoAudioFFT: ["o", "i", 8], sorvoAudioIFFT: ["o", "i", 8], sorvoAudioGetWindow: ["o", 8, 1],
    sorvoAudioGetFrameLen: ["r", 100, 16, 4, 0],
    sorvoAudioGetSpectrogram: ["o", "i", 64, 16, 4, 16, 1, 13, 0, 1, 0],
    sorvoAudioGetInverseSpectrogram: ["o", "i", 5, 9, 4, 16, 1, 32, 0, 0],
    sorvoAudioGetSampleLen: ["r", 5, 9, 4, 0], sorvoAudioGetFBMatrix: ["o", 33, 100, 4000, 10, 8000, 0, 0],
    sorvoAudioGetMelSpectrogram: ["o", "i", 64, 8000, 16, 4, 16, 1, 13, 0, 2, 0, 100, 4000, 8, 0, 0],
    sorvoAudioConvertToMel: ["o", "i", "i", 9, 5, 4], sorvoAudioLinerFilter: ["o", "i", "i", "i", null, 8, 8, 3, 3, 0],
    sorvoAudioGetLinerFilterZiCoef: ["o", "i", "i", 2, 3, 3],
    sorvoAudioFilterFilter: ["o", "i", "i", "i", 8, 8, 3, 3, 1, 4], sorvoAudioResample: ["o", "i", 8000, 8, 16000, 16],
    sorvoAudioGetResampleLen: ["r", 8000, 16, 16000], sorvoAudioComplexNorm: ["o", "i", 8, 2],
    sorvoAudioMagPhase: ["o", "o", "i", 4, 3, 0, 1], sorvoAudioConvertPowerToDB: ["o", "i", 8, 80],
    sorvoAudioLog1p: ["o", "i", 8], sorvoAudioStandardize: ["o", "i", 8],
    sorvoAudioGetNonSilentPos: ["r", "r", "i", 64, 16, 4, 20], sorvoAudioFixFrameLen: ["o", "i", 3, 5, 4, 0],
};

test("bad arguments are statuses, whatever the variant, and touch no output", async () => {
    for (const variant of ["simd128", "plain"]) {
        const { native: functions } = await loadSorvoAudio({ variant });
        assert.deepEqual(Object.keys(functions), Object.keys(good).sort((a, b) =>
            Object.keys(functions).indexOf(a) - Object.keys(functions).indexOf(b)));
        for (const [name, pattern] of Object.entries(good)) {
            const values = () => pattern.map((value) => ({
                o: () => new Float32Array(600).fill(7), i: () => new Float32Array(600).fill(1), r: () => Int32Array.of(7),
            })[value]?.() ?? value);
            assert.equal(functions[name](...values()), constants.OK, name);
            let refusedN = 0;
            pattern.forEach((value, i) => {
                for (const bad of typeof value === "number" ? [-1, -(2 ** 31)] : [null]) {
                    const spoilt = values();
                    spoilt[i] = bad;
                    const status = functions[name](...spoilt);
                    assert.ok(status === constants.OK || status === constants.ERROR_ARGUMENT, `${name} ${i}`);
                    if (status === constants.OK) continue;
                    ++refusedN;
                    pattern.forEach((role, at) => {
                        const expected = role === "o" || role === "r" ? 7 : role === "i" ? 1 : undefined;
                        if (expected !== undefined && spoilt[at] !== null) assert.ok(spoilt[at].every((n) => n === expected));
                    });
                }
            });
            assert.ok(refusedN >= 3, name);
        }
    }
});

test("lack of memory is an error, after which everything works", async () => {
    for (const variant of ["simd128", "plain"]) {
        const small = await loadSorvoAudio({ variant });
        const before = small.digest(small.melSpectrogram(y, { sr: 16000 }).data);
        const [dst, src] = [new Float32Array(8), new Float32Array(8)];
        // Ratios whose tables no 32-bit memory holds: products that wrap around are not to hide that.
        for (const [up, down] of [[4200001, 4200000], [2147483647, 2147483646], [3947581, 1000000]]) {
            assert.equal(small.native.sorvoAudioResample(dst, src, up, 8, down, 8), constants.ERROR_MEMORY, `${up}:${down}`);
        }
        const max = constants.INT_MAX;
        const inverse = new Float32Array(20);
        assert.equal(small.native.sorvoAudioGetInverseSpectrogram(dst, inverse, 2, 5, max, 8, 1, 8, 0, 0), constants.ERROR_MEMORY);
        assert.equal(small.native.sorvoAudioFilterFilter(dst, src, dst, src.fill(1), 8, 8, 1, 1, 3, max), constants.ERROR_MEMORY);
        const wide = [dst, src, 8, 8, 2, max, 1, 1, 0, 1, 0];
        assert.equal(small.native.sorvoAudioGetSpectrogram(new Float32Array(10), ...wide.slice(1)), constants.ERROR_MEMORY);
        assert.throws(() => small.allocate(2 ** 30), SorvoMemoryError);
        assert.throws(() => small.resample(new Float32Array(100), { origSr: 1, targetSr: 2 ** 31 - 1 }), Error);
        assert.equal(small.digest(small.melSpectrogram(y, { sr: 16000 }).data), before);
    }
});

test("memory does not grow by calls", async () => {
    const fresh = await loadSorvoAudio();
    const features = () => fresh.presets.whisper.features(y);
    features();
    const refuse = () => assert.throws(() => fresh.stft(y, { nFft: 0 }));
    const { memoryBytes } = fresh;
    for (let i = 0; i < 10_000; ++i) {
        fresh.melSpectrogram(y.subarray(0, 1600), { sr: 16000, nFft: 400, hopLength: 160, nMels: 80 });
        if (i % 100 === 0) refuse();
        if (i % 100 === 0) fresh.allocate(100_000).free();
        if (i % 1000 === 0) features();
    }
    assert.equal(fresh.memoryBytes, memoryBytes);
});

test("floats in WebAssembly's memory are taken as they are", async () => {
    const fresh = await loadSorvoAudio();
    const [src, dst] = [fresh.allocate(512), fresh.allocate(1024)];
    src.array.set(y.subarray(0, 512));
    const view = src.array;
    assert.equal(fresh.native.sorvoAudioFFT(dst, view, 512), constants.OK);
    assert.deepEqual(dst.array, fresh.fft(y.subarray(0, 512)));
    const expected = fresh.log1p(y.subarray(0, 512));
    // A view that growing memory empties during the call.
    const large = new Float32Array(2 ** 25);
    assert.equal(fresh.native.sorvoAudioFixFrameLen(large, view, 1, large.length, 512, 3), constants.OK);
    assert.equal(view.length, 0);
    assert.deepEqual(large.subarray(0, 513), Float32Array.of(...src.array, 3));
    assert.equal(fresh.native.sorvoAudioLog1p(src, src, 512), constants.OK);
    assert.deepEqual(src.array, expected);
    src.free();
    assert.throws(() => src.array, SorvoArgumentError);
});
