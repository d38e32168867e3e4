// Logarithms of mel bands, as models take them. Each is one sequence of float operations and calls of the library,
// which the command line and the Python package repeat, so that all give the same bits.
import type { SorvoAudio } from "./sorvo_audio.js";

/** log(max(x, floor)); log(1 + x) is accurate near 0, so log(x) is computed from 1 on, and below as -log(1 / x). */
export function logarithms(sorvo: SorvoAudio, x: Float32Array, floor: number): Float32Array {
    const least = Math.fround(floor);
    const held = x.map((value) => (value < least ? least : value));
    const result = sorvo.log1p(held.map((value) => Math.fround(value < 1 ? 1 / value : value) - 1));
    return result.map((value, i) => (held[i]! < 1 ? -value : value));
}

/** 10 log10(max(x, 1e-10)), not lower than 80 below the largest; all NaN if one is NaN. */
export function levels(sorvo: SorvoAudio, powers: Float32Array): Float32Array {
    const result = sorvo.powerToDb(powers);
    return powers.some(Number.isNaN) ? result.fill(NaN) : result;
}

/** (max(log10(max(x, 1e-10)), the largest - 8) + 4) / 4 */
export function whisper(sorvo: SorvoAudio, bands: Float32Array): Float32Array {
    return levels(sorvo, bands).map((value) => Math.fround(value + 40) / 40);
}
