import { choice, count, floats, real } from "./arguments.js";
import { logarithms, whisper } from "./compression.js";
import { SorvoArgumentError } from "./errors.js";
import type { MelOptions, Matrix, SorvoAudio } from "./sorvo_audio.js";
import { presetTable } from "./presets_table.js";

export { presetTable };
export type PresetName = (typeof presetTable)[number]["name"];

/** All that determines a model's mel features. */
export interface PresetSettings {
    readonly name: string;
    readonly about: string;
    readonly sr: number;
    readonly nFft: number;
    readonly hopLength: number;
    readonly nMels: number;
    readonly fmax: number | null;
    readonly power: number;
    readonly htk: boolean;
    readonly norm: "slaney" | null;
    readonly center: boolean;
    readonly padMode: "reflect" | "constant";
    /** Samples by which both ends are reflected before all else. */
    readonly pad: number;
    /** There are at most samples / hopLength + extraFrames frames. */
    readonly extraFrames: number;
    /** Added to the squared magnitudes; needs `power` 1. */
    readonly powerOffset: number;
    /** null; "log": log(max(mel, 1e-5)); "whisper": log10, the 8 decades below the maximum, (x + 4) / 4. */
    readonly compression: null | "log" | "whisper";
}

/** Features of one model. */
export class Preset {
    readonly settings: PresetSettings;
    readonly #sorvo: SorvoAudio;

    /** @internal */
    constructor(sorvo: SorvoAudio, settings: PresetSettings) {
        this.#sorvo = sorvo;
        this.settings = Object.freeze({ ...settings });
    }

    /** The options of `melSpectrogram` and `melStream`; pad, extraFrames, powerOffset and compression are not. */
    get options(): MelOptions {
        const { sr, nFft, hopLength, nMels, fmax, power, htk, norm, center, padMode } = this.settings;
        return { sr, nFft, hopLength, nMels, fmax, power, htk, norm, center, padMode };
    }

    /** What the model takes, [nMels, frames]. `padToSeconds`: zeros behind the signal, such as up to Whisper's 30 s. */
    features(y: Float32Array, options: { padToSeconds?: number } = {}): Matrix {
        const { nFft, hopLength, extraFrames, compression } = this.settings;
        const compress = choice("compression", compression, [
            [null, (bands: Float32Array) => bands],
            ["log", (bands: Float32Array) => logarithms(this.#sorvo, bands, 1e-5)],
            ["whisper", (bands: Float32Array) => whisper(this.#sorvo, bands)],
        ]);
        let signal = floats("y", y) as Float32Array;
        if (options.padToSeconds !== undefined) {
            signal = this.#padded(signal, real("padToSeconds", options.padToSeconds, { above: 0 }));
        }
        const sampleN = signal.length;
        const pad = count("pad", this.settings.pad, 0);
        const least = Math.max(nFft - 2 * pad, pad + 1, hopLength * (1 - extraFrames));
        if (sampleN < least) {
            throw new SorvoArgumentError("y.length", sampleN, `be at least ${least} for these features`);
        }
        if (pad > 0) {
            const middle = signal;
            signal = Float32Array.from({ length: sampleN + 2 * pad }, (_, i) => {
                const position = Math.abs(i - pad);
                return middle[position < sampleN ? position : 2 * (sampleN - 1) - position]!;
            });
        }
        const mel = this.settings.powerOffset > 0 ? this.#offsetMel(signal)
            : this.#sorvo.melSpectrogram(signal, this.options);
        const cut = firstFrames(mel, Math.floor(sampleN / hopLength) + extraFrames);
        return { data: compress(cut.data), shape: cut.shape };
    }

    #padded(y: Float32Array, seconds: number): Float32Array {
        const wantedN = Math.floor(seconds * this.settings.sr + 0.5);
        if (y.length > wantedN) throw new SorvoArgumentError("y.length", y.length, `be at most ${wantedN}, by padToSeconds`);
        const padded = new Float32Array(wantedN);
        padded.set(y);
        return padded;
    }

    #offsetMel(y: Float32Array): Matrix {
        const { nFft, hopLength, center, padMode, power, sr, nMels, fmax, htk, norm } = this.settings;
        if (power !== 1) throw new SorvoArgumentError("power", power, "be 1 with a powerOffset");
        const { data, shape } = this.#sorvo.stft(y, { nFft, hopLength, center, padMode, power: 2 });
        const offset = Math.fround(this.settings.powerOffset);
        const magnitudes = data.map((value) => Math.sqrt(Math.fround(value + offset)));
        return this.#sorvo.melOfSpectrogram({ data: magnitudes, shape }, { sr, nMels, fmax, htk, norm });
    }
}

function firstFrames({ data, shape: [rowN, frameN] }: Matrix, mostN: number): Matrix {
    if (frameN <= mostN) return { data, shape: [rowN, frameN] };
    const kept = new Float32Array(rowN * mostN);
    for (let row = 0; row < rowN; ++row) {
        kept.set(data.subarray(row * frameN, row * frameN + mostN), row * mostN);
    }
    return { data: kept, shape: [rowN, mostN] };
}
