import { choice, count, real } from "./arguments.js";
import { SorvoArgumentError } from "./errors.js";
import type { Library } from "./library.js";
import { constants } from "./native.js";

/** How a signal is cut into frames. */
export interface FrameOptions {
    /** Frame and transform length in samples, 2048. */
    nFft?: number;
    /** Samples between frames; a quarter of `winLength` unless given. */
    hopLength?: number | null;
    /** Length of the window, centred in the frame; `nFft` unless given. */
    winLength?: number | null;
    window?: "hann" | "hamming";
    /** Frame t lies around sample t * hopLength (true, the default), or starts there. */
    center?: boolean;
    /** What lies beyond the ends of a centred signal: its reflection (the default) or zeros. */
    padMode?: "reflect" | "constant";
}

export type SpectrumNorm = null | "window" | "length";

/** What mel bands there are. */
export interface BandOptions {
    /** Sample rate in Hz; must be given. */
    sr: number;
    /** Bands, 128; at most half of `nFft`. */
    nMels?: number;
    /** Lowest frequency in Hz, 0. */
    fmin?: number;
    /** Highest frequency in Hz; half the sample rate unless given. */
    fmax?: number | null;
    /** The mel scale 2595 log10(1 + f / 700); else Slaney's. */
    htk?: boolean;
    /** "slaney", triangles of equal area (the default), or null, of height 1. */
    norm?: "slaney" | null;
}

export const frameDefaults: Required<FrameOptions> = {
    nFft: 2048, hopLength: null, winLength: null, window: "hann", center: true, padMode: "reflect",
};

export const bandDefaults: Required<BandOptions> = {
    sr: undefined as unknown as number, nMels: 128, fmin: 0, fmax: null, htk: false, norm: "slaney",
};

export const windows = [["hann", constants.WINDOW_HANN], ["hamming", constants.WINDOW_HAMMING]] as const;

/** @internal Checked options in the library's own terms. */
export class Framing {
    readonly fftN: number;
    readonly hopN: number;
    readonly winN: number;
    readonly winType: number;
    readonly center: number;
    readonly power: number;
    readonly normType: number;

    constructor(options: Required<FrameOptions>, power: number | null, norm: SpectrumNorm, normName: string) {
        this.fftN = count("nFft", options.nFft);
        const padded = choice("padMode", options.padMode,
            [["reflect", constants.CENTER_REFLECT], ["constant", constants.CENTER_ZEROS]]);
        this.winN = options.winLength === null ? this.fftN : count("winLength", options.winLength);
        this.hopN = options.hopLength === null ? Math.max(1, Math.floor(this.winN / 4))
            : count("hopLength", options.hopLength);
        this.winType = choice("window", options.window, windows);
        this.center = choice("center", options.center, [[true, padded], [false, constants.CENTER_NONE]]);
        this.power = power === null ? 0 : real("power", power, { above: 0 });
        this.normType = choice(normName, norm,
            [[null, constants.NORM_NONE], ["window", constants.NORM_WINDOW], ["length", constants.NORM_LENGTH]]);
    }

    get freqN(): number {
        return Math.floor(this.fftN / 2) + 1;
    }

    frameCount(library: Library, sampleN: number): number {
        const frameN = library.int((result) =>
            library.raw.sorvoAudioGetFrameLen(result, sampleN, this.fftN, this.hopN, this.center));
        if (frameN < 0) {
            throw new SorvoArgumentError("hopLength", this.hopN, `leave at most ${constants.INT_MAX} frames`);
        }
        return frameN;
    }

    spectrogram(library: Library, dst: number, src: number, sampleN: number, frameN: number, center: number): number {
        return library.raw.sorvoAudioGetSpectrogram(dst, src, sampleN, this.fftN, this.hopN, this.winN, this.winType,
            frameN, center, this.power, this.normType);
    }
}

/** @internal Checked options of a mel filter bank in the library's own terms. */
export class MelBands {
    readonly sampleRate: number;
    readonly fMin: number;
    readonly fMax: number;
    readonly melN: number;
    readonly melNorm: number;
    readonly melFormula: number;

    constructor(options: Required<BandOptions>, fftN: number) {
        this.sampleRate = count("sr", options.sr);
        this.fMin = real("fmin", options.fmin, { minimum: 0 });
        this.melN = count("nMels", options.nMels);
        if (this.melN > Math.floor(fftN / 2)) {
            throw new SorvoArgumentError("nMels", this.melN, `be at most half of nFft = ${fftN}`);
        }
        this.fMax = options.fmax === null ? this.sampleRate / 2 : real("fmax", options.fmax);
        if (!(this.fMax > this.fMin)) {
            throw new SorvoArgumentError("fmax", this.fMax, `be greater than fmin = ${this.fMin}`);
        }
        this.melNorm = choice("norm", options.norm,
            [[null, constants.MEL_NORM_NONE], ["slaney", constants.MEL_NORM_AREA]]);
        this.melFormula = choice("htk", options.htk, [[false, constants.MEL_SLANEY], [true, constants.MEL_HTK]]);
    }

    bank(library: Library, freqN: number): Float32Array {
        return library.compute(this.melN * freqN, [], (dst) => library.raw.sorvoAudioGetFBMatrix(
            dst, freqN, this.fMin, this.fMax, this.melN, this.sampleRate, this.melNorm, this.melFormula));
    }

    spectrogram(
        library: Library, dst: number, src: number, sampleN: number, framing: Framing, frameN: number, center: number,
    ): number {
        return library.raw.sorvoAudioGetMelSpectrogram(dst, src, sampleN, this.sampleRate, framing.fftN, framing.hopN,
            framing.winN, framing.winType, frameN, center, framing.power, framing.normType, this.fMin, this.fMax,
            this.melN, this.melNorm, this.melFormula);
    }
}
