import { choice, coefficients, count, floats, longEnough, real, settle } from "./arguments.js";
import { levels } from "./compression.js";
import { SorvoArgumentError } from "./errors.js";
import {
    bandDefaults, type BandOptions, frameDefaults, type FrameOptions, Framing, MelBands, type SpectrumNorm, windows,
} from "./framing.js";
import { Library } from "./library.js";
import { type Exports, type Floats, WasmFloats } from "./memory.js";
import { bindNative, constants, type Native } from "./native.js";
import { Preset, type PresetName, type PresetSettings, presetTable } from "./presets.js";
import { MelStream, type MelStreamOptions, ResampleStream } from "./streams.js";

/** Rows of numbers, the last index running fastest. */
export interface Matrix {
    readonly data: Float32Array;
    /** [bins or bands, frames] */
    readonly shape: readonly [rows: number, frames: number];
}

/** Rows of pairs, real part first. */
export interface ComplexMatrix {
    readonly data: Float32Array;
    /** [bins, frames, 2] */
    readonly shape: readonly [bins: number, frames: number, 2];
}

export interface StftOptions extends FrameOptions {
    /** Multiplies every spectrum: "window", by 1 / the root of the window's energy; "length", by 2 / nFft. */
    norm?: SpectrumNorm;
}

export interface MelOptions extends FrameOptions, BandOptions {
    /** Exponent of the magnitudes before they are summed up in bands, 2. */
    power?: number;
    /** `norm` of `stft`. */
    fftNorm?: SpectrumNorm;
}

export interface IstftOptions {
    hopLength?: number | null;
    winLength?: number | null;
    window?: "hann" | "hamming";
    center?: boolean;
    /** That of `stft`; "length" is undone, "window" is not. */
    norm?: SpectrumNorm;
    /** Samples of the result; else as many as the frames stand for. */
    length?: number | null;
}

export interface PowerToDbOptions {
    /** The power that is 0 dB, 1; or "max". */
    ref?: number | "max";
    /** The least power, 1e-10; NaN counts as this. */
    amin?: number;
    /** Dynamic range that is kept, 80; null keeps all. */
    topDb?: number | null;
}

export interface ResampleOptions {
    origSr: number;
    targetSr: number;
    /**
     * The outputs later than half an input sample before the end: "zeros", they are 0 (the default); "same", they are
     * computed; "full", also what rings behind the end.
     */
    tail?: Tail;
}

export type Tail = "zeros" | "same" | "full";
export type Coefficients = readonly number[] | Float32Array | Float64Array;
/** Beyond both ends: reflected about the edge value, reflected, the edge value, or nothing. */
export type PadType = "odd" | "even" | "constant" | null;

const melDefaults: Required<MelOptions> = { ...frameDefaults, ...bandDefaults, power: 2, fftNorm: null };

/** The library. Names, meanings and defaults are those of the Python package, in camel case. */
export class SorvoAudio {
    /** The 22 C functions. */
    readonly native: Native;
    /** What well-known models and toolkits take. */
    readonly presets: Readonly<Record<PresetName, Preset>>;
    readonly #library: Library;

    /** @internal */
    constructor(exports: Exports, readonly variant: "simd128" | "plain") {
        this.#library = new Library(exports);
        this.native = bindNative(this.#library.memory);
        this.presets = Object.fromEntries(presetTable.map((row) => [row.name, new Preset(this, row)])) as
            Record<PresetName, Preset>;
    }

    /** Zeros in WebAssembly's memory, which calls take without copying. Free them. */
    allocate(length: number): WasmFloats {
        return new WasmFloats(this.#library.memory, count("length", length));
    }

    /** Bytes of WebAssembly's memory. It grows, and never shrinks. */
    get memoryBytes(): number {
        return this.#library.memory.exports.memory.buffer.byteLength;
    }

    /** 16 digits that sum up the bits of all values, any NaN being one; `sorvo-audio` and Python print the same. */
    digest(values: Floats): string {
        return this.#library.digest(floats("values", values, 0));
    }

    /** Spectrum of n real samples: n pairs, unscaled. */
    fft(x: Floats): Float32Array {
        const n = floats("x", x).length;
        return this.#library.compute(2 * n, [x], (dst, src) => this.#library.raw.sorvoAudioFFT(dst, src!, n));
    }

    /** Inverse transform of n pairs, scaled by 1 / n: n pairs. */
    ifft(x: Floats): Float32Array {
        const n = pairCount("x", x);
        return this.#library.compute(2 * n, [x], (dst, src) => this.#library.raw.sorvoAudioIFFT(dst, src!, n));
    }

    /** Periodic analysis window. */
    getWindow(window: "hann" | "hamming", n: number): Float32Array {
        const type = choice("window", window, windows);
        return this.#library.compute(count("n", n), [],
            (dst) => this.#library.raw.sorvoAudioGetWindow(dst, n, type));
    }

    /** Frames of `stft` and `melSpectrogram`; 0 for fewer than nFft samples. */
    frameCount(sampleN: number, options?: FrameOptions): number {
        return new Framing(settle(options, frameDefaults), null, null, "norm")
            .frameCount(this.#library, count("sampleN", sampleN));
    }

    /** Short-time Fourier transform. With `power`, magnitudes to this power; else pairs. */
    stft(y: Floats, options: StftOptions & { power: number }): Matrix;
    stft(y: Floats, options?: StftOptions & { power?: null }): ComplexMatrix;
    stft(y: Floats, options?: StftOptions & { power?: number | null }): Matrix | ComplexMatrix {
        const all = settle(options, { ...frameDefaults, power: null as number | null, norm: null as SpectrumNorm });
        const framing = new Framing(all, all.power, all.norm, "norm");
        longEnough("y", floats("y", y), "nFft", framing.fftN);
        const frameN = framing.frameCount(this.#library, y.length);
        const pairs = this.#library.compute(2 * framing.freqN * frameN, [y], (dst, src) =>
            framing.spectrogram(this.#library, dst, src!, y.length, frameN, framing.center));
        if (all.power === null) return { data: pairs, shape: [framing.freqN, frameN, 2] };
        const data = new Float32Array(pairs.length / 2);
        for (let i = 0; i < data.length; ++i) data[i] = pairs[2 * i]!;
        return { data, shape: [framing.freqN, frameN] };
    }

    /** Signal of a complex spectrogram. */
    istft(spectrogram: ComplexMatrix, options?: IstftOptions): Float32Array {
        const [freqN, frameN] = shapeOf("spectrogram", spectrogram, 3);
        if (freqN < 2) throw new SorvoArgumentError("the number of bins", freqN, "be at least 2");
        const all = settle<Required<IstftOptions>>(options, {
            hopLength: null, winLength: null, window: "hann", center: true, norm: null, length: null,
        });
        const { norm, length, ...frame } = all;
        const framing = new Framing({ ...frame, nFft: 2 * freqN - 2, padMode: "reflect" }, null, norm, "norm");
        const sampleN = length !== null ? count("length", length) : this.#library.int((result) =>
            this.#library.raw.sorvoAudioGetSampleLen(result, frameN, freqN, framing.hopN, framing.center));
        if (sampleN === 0) throw new SorvoArgumentError("length", null, "be given where there is one centred frame");
        return this.#library.compute(sampleN, [spectrogram.data], (dst, src) =>
            this.#library.raw.sorvoAudioGetInverseSpectrogram(dst, src!, frameN, freqN, framing.hopN, framing.winN,
                framing.winType, sampleN, framing.center, framing.normType));
    }

    /** Mel filter bank [nMels, nFft / 2 + 1]. */
    melFilterbank(options: BandOptions & { nFft: number }): Matrix {
        const all = settle(options, { ...bandDefaults, nFft: undefined as unknown as number }, ["sr", "nFft"]);
        const fftN = count("nFft", all.nFft);
        const bands = new MelBands(all, fftN);
        const freqN = Math.floor(fftN / 2) + 1;
        return { data: bands.bank(this.#library, freqN), shape: [bands.melN, freqN] };
    }

    /** Mel spectrogram [nMels, frames] of a signal, linear. */
    melSpectrogram(y: Floats, options: MelOptions): Matrix {
        const all = settle(options, melDefaults, ["sr"]);
        const framing = new Framing(all, real("power", all.power, { above: 0 }), all.fftNorm, "fftNorm");
        const bands = new MelBands(all, framing.fftN);
        longEnough("y", floats("y", y), "nFft", framing.fftN);
        const frameN = framing.frameCount(this.#library, y.length);
        const data = this.#library.compute(bands.melN * frameN, [y], (dst, src) =>
            bands.spectrogram(this.#library, dst, src!, y.length, framing, frameN, framing.center));
        return { data, shape: [bands.melN, frameN] };
    }

    /** Sums up a spectrogram [bins, frames], as it is, in mel bands; nFft is 2 * (bins - 1). */
    melOfSpectrogram(spectrogram: Matrix, options: BandOptions): Matrix {
        const [freqN] = shapeOf("spectrogram", spectrogram, 2);
        const bands = new MelBands(settle(options, bandDefaults, ["sr"]), 2 * freqN - 2);
        return this.project(spectrogram, { data: bands.bank(this.#library, freqN), shape: [bands.melN, freqN] });
    }

    /** Product of a filter bank [bands, bins] and a spectrogram [bins, frames]; bands < bins. */
    project(spectrogram: Matrix, bank: Matrix): Matrix {
        const [freqN, frameN] = shapeOf("spectrogram", spectrogram, 2);
        const [melN, bankN] = shapeOf("bank", bank, 2);
        if (bankN !== freqN) throw new SorvoArgumentError("bank.shape[1]", bankN, `be the ${freqN} bins`);
        if (melN >= freqN) throw new SorvoArgumentError("bank.shape[0]", melN, `be less than the ${freqN} bins`);
        const data = this.#library.compute(melN * frameN, [spectrogram.data, bank.data], (dst, src, fb) =>
            this.#library.raw.sorvoAudioConvertToMel(dst, src!, fb!, freqN, frameN, melN));
        return { data, shape: [melN, frameN] };
    }

    /** Magnitudes, to a power, and phases, in radians or as unit pairs, of pairs. */
    magphase(
        pairs: Floats, options?: { power?: number; phase?: "complex" | "angle" },
    ): { magnitude: Float32Array; phase: Float32Array } {
        const all = settle(options, { power: 1, phase: "complex" as const });
        const n = pairCount("pairs", pairs);
        const power = real("power", all.power, { minimum: 0 });
        const form = choice("phase", all.phase,
            [["complex", constants.PHASE_COMPLEX], ["angle", constants.PHASE_ANGLE]]);
        const phaseN = form === constants.PHASE_COMPLEX ? 2 * n : n;
        const both = this.#library.compute(n + phaseN, [pairs], (dst, src) =>
            this.#library.raw.sorvoAudioMagPhase(dst, dst + 4 * n, src!, 1, n, form, power));
        return { magnitude: both.slice(0, n), phase: both.slice(n) };
    }

    /** Powers in decibels relative to `ref`, not less than `topDb` below the largest. */
    powerToDb(powers: Floats, options?: PowerToDbOptions): Float32Array {
        const all = settle<Required<PowerToDbOptions>>(options, { ref: 1, amin: 1e-10, topDb: 80 });
        const amin = real("amin", all.amin, { minimum: 2 ** -126 });
        const range = all.topDb === null ? Infinity : Math.fround(real("topDb", all.topDb, { minimum: 0 }));
        const src = viewOf(floats("powers", powers));
        // The library's least power is 1e-10: what shall be less is scaled up by a power of two, which is exact.
        const scale = 2 ** Math.max(0, Math.ceil(Math.log2(1e-10 / amin)));
        const scaled = new Float32Array(src.length + 1);
        let largest = NaN;
        for (const power of src) if (!(power <= largest) && !Number.isNaN(power)) largest = power;
        scaled.set(src);
        scaled[src.length] = all.ref === "max" ? largest : Math.abs(real("ref", all.ref));
        const least = Math.fround(amin);
        const most = 2 ** 128 * (1 - 2 ** -24) / scale;
        for (let i = 0; i < scaled.length; ++i) {
            const power = scaled[i]!;
            scaled[i] = (power >= least ? power : least) * scale;
            if (scale > 1 && power > most) throw new SorvoArgumentError("amin", amin, `be greater beside powers up to ${power}`);
        }
        const n = scaled.length;
        // The library's reference is the largest; the difference to the last value is relative to ref.
        const result = this.#library.compute(n, [scaled], (dst, from) =>
            this.#library.raw.sorvoAudioConvertPowerToDB(dst, from!, n, -1));
        const offset = result[n - 1]!;
        const decibels = result.subarray(0, n - 1);
        let top = -Infinity;
        for (let i = 0; i < decibels.length; ++i) {
            decibels[i]! -= offset;
            top = Math.max(top, decibels[i]!);
        }
        const floor = Math.fround(top - range);
        for (let i = 0; i < decibels.length; ++i) decibels[i] = Math.max(decibels[i]!, floor);
        return decibels.slice();
    }

    /** log(1 + x), accurate near 0. */
    log1p(x: Floats): Float32Array {
        const n = floats("x", x).length;
        return this.#library.compute(n, [x], (dst, src) => this.#library.raw.sorvoAudioLog1p(dst, src!, n));
    }

    /** To zero mean and unit variance. */
    standardize(x: Floats): Float32Array {
        const n = floats("x", x).length;
        return this.#library.compute(n, [x], (dst, src) => this.#library.raw.sorvoAudioStandardize(dst, src!, n));
    }

    /** a[0] y[n] = b[0] x[n] + b[1] x[n-1] + ... - a[1] y[n-1] - ...; from rest, or from the state `zi`. */
    lfilter(b: Coefficients, a: Coefficients, x: Floats, options?: { zi?: null }): Float32Array;
    lfilter(b: Coefficients, a: Coefficients, x: Floats, options: { zi: Float32Array }): { y: Float32Array; zf: Float32Array };
    lfilter(b: Coefficients, a: Coefficients, x: Floats, options?: { zi?: Float32Array | null }): unknown {
        const [num, den] = [coefficients("b", b), coefficients("a", a)];
        const { zi } = settle(options, { zi: null as Float32Array | null });
        const n = floats("x", x).length;
        const stateN = Math.max(num.length, den.length) - 1;
        if (zi !== null && floats("zi", zi, 0).length !== stateN) {
            throw new SorvoArgumentError("zi.length", zi.length, `be ${stateN}, one less than the longer of b and a`);
        }
        const both = this.#library.compute(n + stateN, [x, num, den], (dst, src, nCoef, dCoef) => {
            const state = dst + 4 * n;
            if (zi !== null) this.#library.memory.floats(state, stateN).set(zi);
            return this.#library.raw.sorvoAudioLinerFilter(dst, src!, nCoef!, dCoef!, state, n, n, num.length, den.length,
                stateN);
        });
        return zi === null ? both.slice(0, n) : { y: both.slice(0, n), zf: both.slice(n) };
    }

    /** State of a filter that has settled on a constant input of 1, for `lfilter`. */
    lfilterZi(b: Coefficients, a: Coefficients): Float32Array {
        const [num, den] = [coefficients("b", b), coefficients("a", a)];
        const stateN = Math.max(num.length, den.length) - 1;
        if (stateN === 0) return new Float32Array(0);
        return this.#library.compute(stateN, [num, den], (dst, nCoef, dCoef) =>
            this.#library.raw.sorvoAudioGetLinerFilterZiCoef(dst, nCoef!, dCoef!, stateN, num.length, den.length));
    }

    /** Zero-phase filtering: forward, then backward. */
    filtfilt(
        b: Coefficients, a: Coefficients, x: Floats, options?: { padtype?: PadType; padlen?: number | null },
    ): Float32Array {
        const [num, den] = [coefficients("b", b), coefficients("a", a)];
        const all = settle(options, { padtype: "odd" as PadType, padlen: null as number | null });
        const n = floats("x", x).length;
        const padType = choice("padtype", all.padtype, [["odd", constants.PAD_ODD], ["even", constants.PAD_REFLECT],
            ["constant", constants.PAD_CONSTANT], [null, constants.PAD_NONE]]);
        const padLen = all.padlen === null ? 3 * Math.max(num.length, den.length) : count("padlen", all.padlen, 0);
        if ((padType === constants.PAD_ODD || padType === constants.PAD_REFLECT) && padLen >= n) {
            throw new SorvoArgumentError("padlen", padLen, `be less than the ${n} samples of x`);
        }
        return this.#library.compute(n, [x, num, den], (dst, src, nCoef, dCoef) =>
            this.#library.raw.sorvoAudioFilterFilter(dst, src!, nCoef!, dCoef!, n, n, num.length, den.length, padType,
                padLen));
    }

    /** Converts the sample rate by a sinc of 65 taps. */
    resample(y: Floats, options: ResampleOptions): Float32Array {
        const all = settle<Required<ResampleOptions>>(options, {
            origSr: undefined as unknown as number, targetSr: undefined as unknown as number, tail: "zeros",
        }, ["origSr", "targetSr"]);
        const [origSr, targetSr] = [count("origSr", all.origSr), count("targetSr", all.targetSr)];
        const [zeroN, ringingN] = choice<readonly [number, number]>("tail", all.tail,
            [["zeros", [0, 0]], ["same", [2, 0]], ["full", [33, 32]]]);
        const n = floats("y", y).length;
        const targetN = this.#library.int((result) =>
            this.#library.raw.sorvoAudioGetResampleLen(result, targetSr, n + ringingN, origSr));
        let padded = y;
        if (zeroN > 0) {
            padded = new Float32Array(n + zeroN);
            padded.set(viewOf(y));
        }
        return this.#library.compute(targetN, [padded], (dst, src) =>
            this.#library.raw.sorvoAudioResample(dst, src!, targetSr, targetN, origSr, padded.length));
    }

    /** Cuts silence off both ends: the span, and its first and end position. */
    trim(
        y: Float32Array, options?: { topDb?: number; frameLength?: number; hopLength?: number },
    ): { y: Float32Array; span: readonly [begin: number, end: number] } {
        const all = settle(options, { topDb: 60, frameLength: 2048, hopLength: 512 });
        const frameN = count("frameLength", all.frameLength);
        longEnough("y", floats("y", y), "frameLength", frameN);
        const [hopN, topDb] = [count("hopLength", all.hopLength), real("topDb", all.topDb, { minimum: 0 })];
        const [pos, length] = [new Int32Array(1), new Int32Array(1)];
        this.native.sorvoAudioGetNonSilentPos(pos, length, y, y.length, frameN, hopN, topDb);
        const begin = Math.max(pos[0]!, 0);
        return { y: y.slice(begin, begin + length[0]!), span: [begin, begin + length[0]!] };
    }

    /** Mel-frequency cepstral coefficients [nMfcc, frames]: the cosine transform of mel bands in decibels. */
    mfcc(y: Floats, options: MelOptions & { nMfcc?: number }): Matrix {
        const { nMfcc, ...mel } = settle(options, { ...melDefaults, nMfcc: 20 }, ["sr"]);
        const bands = this.melSpectrogram(y, mel);
        const [bandN, frameN] = bands.shape;
        if (count("nMfcc", nMfcc) > bandN) {
            throw new SorvoArgumentError("nMfcc", nMfcc, `be at most nMels = ${bandN}`);
        }
        // The library projects on fewer rows than it is given, so a band of zeros, with no weight, is added.
        const basis = new Float32Array(nMfcc * (bandN + 1));
        const scales = [Math.fround(Math.sqrt(1 / bandN)), Math.fround(Math.sqrt(2 / bandN))] as const;
        for (let i = 0; i < bandN; ++i) {
            const impulse = new Float32Array(4 * bandN);
            impulse[2 * i + 1] = 1;
            const cosines = this.fft(impulse);
            for (let k = 0; k < nMfcc; ++k) basis[k * (bandN + 1) + i] = cosines[2 * k]! * scales[k === 0 ? 0 : 1];
        }
        const data = new Float32Array((bandN + 1) * frameN);
        data.set(levels(this, bands.data));
        return this.project({ data, shape: [bandN + 1, frameN] }, { data: basis, shape: [nMfcc, bandN + 1] });
    }

    /** A preset of one's own: another one's settings, some of them changed. */
    preset(settings: PresetSettings): Preset {
        return new Preset(this, settings);
    }

    /** `melSpectrogram` of a signal that comes in blocks. */
    melStream(options: MelStreamOptions): MelStream {
        const all = settle(options, melDefaults, ["sr"]);
        const framing = new Framing(all, real("power", all.power, { above: 0 }), all.fftNorm, "fftNorm");
        return new MelStream(this.#library, framing, new MelBands(all, framing.fftN));
    }

    /** `resample` of a signal that comes in blocks. */
    resampleStream(options: ResampleOptions): ResampleStream {
        return new ResampleStream(this, options);
    }
}

function viewOf(values: Floats): Float32Array {
    return values instanceof WasmFloats ? values.array : values;
}

function pairCount(name: string, values: Floats): number {
    const n = floats(name, values, 2).length;
    if (n % 2 !== 0) throw new SorvoArgumentError(`${name}.length`, n, "be even: pairs of real and imaginary part");
    return n / 2;
}

function shapeOf(name: string, matrix: Matrix | ComplexMatrix, dimensionN: 2 | 3): [rows: number, frames: number] {
    const shape: unknown = (matrix as Partial<Matrix> | null)?.shape;
    if (!Array.isArray(shape) || shape.length !== dimensionN || (dimensionN === 3 && shape[2] !== 2)) {
        throw new SorvoArgumentError(`${name}.shape`, shape, `be [bins, frames${dimensionN === 3 ? ", 2" : ""}]`);
    }
    const [rows, frames] = [count(`${name}.shape[0]`, shape[0]), count(`${name}.shape[1]`, shape[1])];
    const cellN = shape.reduce((product: number, n: number) => product * n, 1);
    if (floats(`${name}.data`, matrix.data).length !== cellN) {
        throw new SorvoArgumentError(`${name}.data.length`, matrix.data.length, `be ${cellN}, as ${name}.shape says`);
    }
    return [rows, frames];
}
