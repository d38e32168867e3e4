import { SorvoArgumentError } from "./errors.js";
import { type Floats, type Memory, type Scope, WasmFloats } from "./memory.js";

/** Status codes and option values of the C header. */
export const constants = {
    OK: 0,
    ERROR_ARGUMENT: -1,
    ERROR_MEMORY: -5,
    ERROR_INTERNAL: -128,
    WINDOW_HANN: 1,
    WINDOW_HAMMING: 2,
    CENTER_NONE: 0,
    CENTER_REFLECT: 1,
    CENTER_ZEROS: 2,
    NORM_NONE: 0,
    NORM_WINDOW: 1,
    NORM_LENGTH: 2,
    MEL_SLANEY: 0,
    MEL_HTK: 1,
    MEL_NORM_NONE: 0,
    MEL_NORM_AREA: 1,
    PHASE_ANGLE: 0,
    PHASE_COMPLEX: 1,
    PAD_NONE: 0,
    PAD_ODD: 1,
    PAD_REFLECT: 2,
    PAD_CONSTANT: 3,
    INT_MAX: 2 ** 31 - 1,
} as const;

type Output = Floats | null;
type Input = Floats | null;
type IntOutput = Int32Array | null;

/**
 * The 22 C functions, one to one; the header `sorvo_audio.h` is their manual. Each returns a status. `null` is the null
 * pointer, an `int*` is an Int32Array of one. Before a call, an array that is shorter than the arguments say is a
 * SorvoArgumentError, as is a number that does not fit an `int`.
 */
export interface Native {
    sorvoAudioFFT(dst: Output, src: Input, fftN: number): number;
    sorvoAudioIFFT(dst: Output, src: Input, fftN: number): number;
    sorvoAudioGetWindow(dst: Output, windowN: number, winType: number): number;
    sorvoAudioGetFrameLen(frameN: IntOutput, sampleN: number, fftN: number, hopN: number, center: number): number;
    sorvoAudioGetSpectrogram(
        dst: Output, src: Input, sampleN: number, fftN: number, hopN: number, winN: number, winType: number,
        maxFrameN: number, center: number, power: number, normType: number,
    ): number;
    sorvoAudioGetInverseSpectrogram(
        dst: Output, src: Input, frameN: number, freqN: number, hopN: number, winN: number, winType: number,
        maxSampleN: number, center: number, normType: number,
    ): number;
    sorvoAudioGetSampleLen(sampleN: IntOutput, frameN: number, freqN: number, hopN: number, center: number): number;
    sorvoAudioGetFBMatrix(
        dst: Output, freqN: number, fMin: number, fMax: number, melN: number, sampleRate: number, melNorm: number,
        melFormula: number,
    ): number;
    sorvoAudioGetMelSpectrogram(
        dst: Output, src: Input, sampleN: number, sampleRate: number, fftN: number, hopN: number, winN: number,
        winType: number, maxFrameN: number, center: number, power: number, fftNormType: number, fMin: number,
        fMax: number, melN: number, melNorm: number, melFormula: number,
    ): number;
    sorvoAudioConvertToMel(
        dst: Output, src: Input, fb: Input, freqN: number, frameN: number, melN: number,
    ): number;
    sorvoAudioLinerFilter(
        dst: Output, src: Input, nCoef: Input, dCoef: Input, zi: Output, dstN: number, srcN: number, nCoefN: number,
        dCoefN: number, ziN: number,
    ): number;
    sorvoAudioGetLinerFilterZiCoef(
        dst: Output, nCoef: Input, dCoef: Input, dstN: number, nCoefN: number, dCoefN: number,
    ): number;
    sorvoAudioFilterFilter(
        dst: Output, src: Input, nCoef: Input, dCoef: Input, dstN: number, srcN: number, nCoefN: number,
        dCoefN: number, padType: number, padLen: number,
    ): number;
    sorvoAudioResample(
        dst: Output, src: Input, dstSampleRate: number, dstN: number, srcSampleRate: number, srcN: number,
    ): number;
    sorvoAudioGetResampleLen(
        dstSampleN: IntOutput, dstSampleRate: number, srcSampleN: number, srcSampleRate: number,
    ): number;
    sorvoAudioComplexNorm(dst: Output, src: Input, srcN: number, power: number): number;
    sorvoAudioMagPhase(
        magDst: Output, phaseDst: Output, src: Input, freqN: number, frameN: number, phaseForm: number, power: number,
    ): number;
    sorvoAudioConvertPowerToDB(dst: Output, src: Input, srcN: number, topDb: number): number;
    sorvoAudioLog1p(dst: Output, src: Input, srcN: number): number;
    sorvoAudioStandardize(dst: Output, src: Input, srcN: number): number;
    sorvoAudioGetNonSilentPos(
        pos: IntOutput, len: IntOutput, src: Input, sampleN: number, winN: number, hopN: number, thrDb: number,
    ): number;
    sorvoAudioFixFrameLen(
        dst: Output, src: Input, freqN: number, dstFrameN: number, srcFrameN: number, padValue: number,
    ): number;
}

/**
 * The parameters of each function: o, floats that are written; i, floats that are read; r, an int that is written; n,
 * an int; f, a float. Then how many floats each array must hold at least, of the numbers.
 */
const functions: Record<keyof Native, [parameters: string, sizes: (...numbers: number[]) => number[]]> = {
    sorvoAudioFFT: ["oin", (n) => [2 * n, n]],
    sorvoAudioIFFT: ["oin", (n) => [2 * n, 2 * n]],
    sorvoAudioGetWindow: ["onn", (n) => [n]],
    sorvoAudioGetFrameLen: ["rnnnn", () => []],
    sorvoAudioGetSpectrogram: [
        "oinnnnnnnfn",
        (sampleN, fftN, hopN, winN, winType, maxFrameN) => [2 * bins(fftN) * maxFrameN, sampleN],
    ],
    sorvoAudioGetInverseSpectrogram: [
        "oinnnnnnnn",
        (frameN, freqN, hopN, winN, winType, maxSampleN) => [
            Math.min((frameN - 1) * hopN + 2 * freqN - 2, maxSampleN), 2 * freqN * frameN,
        ],
    ],
    sorvoAudioGetSampleLen: ["rnnnn", () => []],
    sorvoAudioGetFBMatrix: ["onffnnnn", (freqN, fMin, fMax, melN) => [bankSize(melN, freqN)]],
    sorvoAudioGetMelSpectrogram: [
        "oinnnnnnnnfnffnnn",
        (sampleN, rate, fftN, hopN, winN, winType, maxFrameN, center, power, fftNorm, fMin, fMax, melN) => [
            bankSize(melN, bins(fftN)) / bins(fftN) * maxFrameN, sampleN,
        ],
    ],
    sorvoAudioConvertToMel: [
        "oiinnn",
        (freqN, frameN, melN) => [bankSize(melN, freqN) / freqN * frameN, freqN * frameN, bankSize(melN, freqN)],
    ],
    sorvoAudioLinerFilter: [
        "oiiionnnnn", (dstN, srcN, nCoefN, dCoefN, ziN) => [Math.min(dstN, srcN), srcN, nCoefN, dCoefN, ziN],
    ],
    sorvoAudioGetLinerFilterZiCoef: ["oiinnn", (dstN, nCoefN, dCoefN) => [dstN, nCoefN, dCoefN]],
    sorvoAudioFilterFilter: [
        "oiiinnnnnn", (dstN, srcN, nCoefN, dCoefN) => [dstN, srcN, nCoefN, dCoefN],
    ],
    sorvoAudioResample: ["oinnnn", (dstRate, dstN, srcRate, srcN) => [dstN, srcN]],
    sorvoAudioGetResampleLen: ["rnnn", () => []],
    sorvoAudioComplexNorm: ["oinf", (n) => [n, 2 * n]],
    sorvoAudioMagPhase: [
        "ooinnnf",
        (freqN, frameN, form) => [
            freqN * frameN, freqN * frameN * (form === constants.PHASE_COMPLEX ? 2 : 1), 2 * freqN * frameN,
        ],
    ],
    sorvoAudioConvertPowerToDB: ["oinf", (n) => [n, n]],
    sorvoAudioLog1p: ["oin", (n) => [n, n]],
    sorvoAudioStandardize: ["oin", (n) => [n, n]],
    sorvoAudioGetNonSilentPos: ["rrinnnf", (sampleN) => [sampleN]],
    sorvoAudioFixFrameLen: ["oinnnf", (freqN, dstN, srcN) => [freqN * dstN, freqN * srcN]],
};

/** A bank that is refused needs no room. */
function bankSize(melN: number, freqN: number): number {
    return melN < freqN ? melN * freqN : 0;
}

function bins(fftN: number): number {
    return Math.floor(fftN / 2) + 1;
}

type Argument = Floats | Int32Array | null | number;
/** The functions by addresses. */
export type Raw = Record<keyof Native, (...values: number[]) => number>;

/** @internal */
export function bindNative(memory: Memory): Native {
    const entries = Object.entries(functions).map(([name, [parameters, sizes]]) => {
        const raw = (memory.exports as unknown as Raw)[name as keyof Native];
        return [name, (...values: Argument[]) => {
            checkKinds(name, parameters, values);
            checkSizes(parameters, values, sizes);
            return memory.scope((scope) => call(memory, scope, raw, parameters, values));
        }];
    });
    return Object.fromEntries(entries) as Native;
}

function checkKinds(name: string, parameters: string, values: readonly Argument[]): void {
    if (values.length !== parameters.length) {
        throw new SorvoArgumentError(`the number of arguments of ${name}`, values.length, `be ${parameters.length}`);
    }
    values.forEach((value, i) => {
        const [accepted, rule] = {
            o: [isFloats(value), "be a Float32Array, WasmFloats or null"],
            i: [isFloats(value), "be a Float32Array, WasmFloats or null"],
            r: [value === null || (value instanceof Int32Array && value.length > 0), "be an Int32Array of one or null"],
            n: [typeof value === "number" && (value | 0) === value, "be an integer of 32 bits"],
            f: [typeof value === "number", "be a number"],
        }[parameters[i] as "o" | "i" | "r" | "n" | "f"] as [boolean, string];
        if (!accepted) throw new SorvoArgumentError(`argument ${i} of ${name}`, value, rule);
    });
}

function isFloats(value: Argument): boolean {
    return value === null || value instanceof Float32Array || value instanceof WasmFloats;
}

function checkSizes(parameters: string, values: readonly Argument[], sizes: (...n: number[]) => number[]): void {
    const needed = sizes(...values.filter((value): value is number => typeof value === "number"));
    let array = 0;
    values.forEach((value, i) => {
        if (parameters[i] !== "o" && parameters[i] !== "i") return;
        const least = needed[array++]!;
        if (value !== null && (value as Floats).length < least) {
            throw new SorvoArgumentError(`the length of argument ${i}`, (value as Floats).length, `be at least ${least}`);
        }
    });
}

function call(
    memory: Memory, scope: Scope, raw: (...values: number[]) => number, parameters: string, values: readonly Argument[],
): number {
    const inside = memory.exports.memory.buffer;
    const arrays = [...new Set(values.filter((value): value is Floats => isFloats(value) && value !== null))];
    const copied = values.filter((value, i): value is Float32Array =>
        parameters[i] === "o" && value instanceof Float32Array && value.buffer !== inside);
    const addresses = new Map<Argument, number>([[null, 0]]); // an array given twice is one array
    scope.inputs(arrays).forEach((address, i) => addresses.set(arrays[i]!, address));
    const results = new Set(values.filter((value): value is Int32Array => value instanceof Int32Array));
    for (const result of results) {
        const address = scope.take(1);
        memory.ints(address, 1)[0] = result[0]!;
        addresses.set(result, address);
    }
    const numbers = values.map((value) => (typeof value === "number" ? value : addresses.get(value)!));
    const status = raw(...numbers);
    for (const array of copied) array.set(memory.floats(addresses.get(array)!, array.length));
    for (const result of results) result[0] = memory.ints(addresses.get(result)!, 1)[0]!;
    return status;
}
