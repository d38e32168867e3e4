// Signals in blocks of any length. `push` returns all results that are determined by now, possibly none; `flush` returns
// the rest and makes the stream ready for another signal. Joined, the results are those of the whole signal in one
// call, bit for bit.
import { count, floats, longEnough } from "./arguments.js";
import { SorvoArgumentError } from "./errors.js";
import type { Framing, MelBands } from "./framing.js";
import type { Library } from "./library.js";
import { constants } from "./native.js";
import type { Matrix, MelOptions, ResampleOptions, SorvoAudio } from "./sorvo_audio.js";

export type MelStreamOptions = MelOptions;

/** The last part of a signal whose length is not known yet. */
class Signal {
    sampleN = 0; // of the whole signal so far
    #first = 0; // position of the first kept sample
    #kept = 0;
    #samples = new Float32Array(1024);

    append(block: Float32Array): void {
        count("the number of samples since the start", this.sampleN + block.length, 0);
        const keptN = this.sampleN - this.#first;
        if (this.#kept + keptN + block.length > this.#samples.length) {
            const room = new Float32Array(Math.max(this.#samples.length, 2 * (keptN + block.length)));
            room.set(this.#samples.subarray(this.#kept, this.#kept + keptN));
            this.#samples = room;
            this.#kept = 0;
        }
        this.#samples.set(block, this.#kept + keptN);
        this.sampleN += block.length;
    }

    /** Samples begin ... end - 1, with reflection or zeros beyond the ends. */
    part(begin: number, end: number, reflect: boolean): Float32Array {
        const offset = this.#kept - this.#first;
        if (begin >= 0 && end <= this.sampleN) return this.#samples.subarray(begin + offset, end + offset);
        const period = Math.max(2 * (this.sampleN - 1), 1);
        return Float32Array.from({ length: end - begin }, (_, i) => {
            let position = begin + i;
            if (reflect) {
                position = ((position % period) + period) % period;
                position = Math.min(position, period - position) % period;
            } else if (position < 0 || position >= this.sampleN) {
                return 0;
            }
            return this.#samples[position + offset]!;
        });
    }

    forgetBefore(position: number): void {
        const kept = Math.min(Math.max(position, this.#first), this.sampleN);
        this.#kept += kept - this.#first;
        this.#first = kept;
    }
}

/** `melSpectrogram` in blocks. */
export class MelStream {
    readonly #library: Library;
    readonly #framing: Framing;
    readonly #bands: MelBands;
    #signal = new Signal();
    #frameN = 0; // that have been returned

    /** @internal */
    constructor(library: Library, framing: Framing, bands: MelBands) {
        [this.#library, this.#framing, this.#bands] = [library, framing, bands];
    }

    push(block: Float32Array): Matrix {
        const signal = this.#signal;
        signal.append(floats("block", block, 0) as Float32Array);
        // The count is rounded to single precision; as it never falls, no frame is returned too early.
        const completeN = Math.max(0, Math.floor(
            (signal.sampleN - this.#framing.fftN - this.#frameBegin(0)) / this.#framing.hopN) + 1);
        const result = this.#frames(signal.sampleN === 0 ? 0
            : Math.min(this.#framing.frameCount(this.#library, signal.sampleN), completeN));
        // Behind the end, a reflection needs half a frame, and what a rounded count can exceed the length by.
        const reflectedN = Math.floor(this.#framing.fftN / 2) + 3 + Math.floor(signal.sampleN / 2 ** 21);
        signal.forgetBefore(Math.min(this.#frameBegin(this.#frameN), signal.sampleN - reflectedN));
        return result;
    }

    flush(): Matrix {
        const signal = this.#signal;
        try {
            if (signal.sampleN === 0) return this.#frames(0);
            longEnough("signal", signal.part(0, Math.min(signal.sampleN, this.#framing.fftN), false), "nFft",
                Math.min(this.#framing.fftN, signal.sampleN < this.#framing.fftN ? this.#framing.fftN : 0));
            return this.#frames(this.#framing.frameCount(this.#library, signal.sampleN));
        } finally {
            this.#signal = new Signal();
            this.#frameN = 0;
        }
    }

    #frameBegin(t: number): number {
        const centred = this.#framing.center !== constants.CENTER_NONE;
        return t * this.#framing.hopN - (centred ? Math.floor(this.#framing.fftN / 2) : 0);
    }

    /** Frames from the first that has not been returned up to `end`. */
    #frames(end: number): Matrix {
        const { fftN, hopN, center } = this.#framing;
        const rowN = this.#bands.melN;
        const totalN = Math.max(0, end - this.#frameN);
        const data = new Float32Array(rowN * totalN);
        // Short enough for a frame count that is exact in single precision.
        const atOnce = Math.max(1, Math.floor(2 ** 22 / hopN));
        for (let done = 0; done < totalN;) {
            const frameN = Math.min(atOnce, totalN - done);
            const sampleN = (frameN - 1) * hopN + fftN;
            const begin = this.#frameBegin(this.#frameN);
            const part = this.#signal.part(begin, begin + sampleN, center === constants.CENTER_REFLECT);
            const frames = this.#library.compute(rowN * frameN, [part], (dst, src) => this.#bands.spectrogram(
                this.#library, dst, src!, sampleN, this.#framing, frameN, constants.CENTER_NONE));
            for (let row = 0; row < rowN; ++row) {
                data.set(frames.subarray(row * frameN, (row + 1) * frameN), row * totalN + done);
            }
            this.#frameN += frameN;
            done += frameN;
        }
        return { data, shape: [rowN, totalN] };
    }
}

/** `resample` in blocks. Each push repeats up to `up` outputs, of up / down = targetSr / origSr in lowest terms. */
export class ResampleStream {
    readonly #sorvo: SorvoAudio;
    readonly #options: ResampleOptions;
    readonly #up: number;
    readonly #down: number;
    #signal = new Signal();
    #outputN = 0; // that have been returned

    /** @internal */
    constructor(sorvo: SorvoAudio, options: ResampleOptions) {
        sorvo.resample(new Float32Array(1), options); // checks them
        this.#sorvo = sorvo;
        this.#options = { ...options };
        const divisor = greatestDivisor(options.targetSr, options.origSr);
        [this.#up, this.#down] = [options.targetSr / divisor, options.origSr / divisor];
    }

    push(block: Float32Array): Float32Array {
        this.#signal.append(floats("block", block, 0) as Float32Array);
        // Outputs whose 65 taps, 32 on each side of their position, lie before the end of the signal.
        const end = -Math.floor((this.#phase - (this.#signal.sampleN - 32) * this.#up) / this.#down);
        const result = this.#outputs(Math.max(end, 0), "zeros");
        this.#signal.forgetBefore(this.#firstPeriod() * this.#down);
        return result;
    }

    flush(): Float32Array {
        const { sampleN } = this.#signal;
        const tail = this.#options.tail ?? "zeros";
        const targetN = Math.ceil(this.#options.targetSr / this.#options.origSr * (sampleN + (tail === "full" ? 32 : 0)));
        const result = this.#outputs(sampleN === 0 ? 0 : targetN, tail);
        this.#signal = new Signal();
        this.#outputN = 0;
        return result;
    }

    /** Output i lies at input position (phase + i * down) / up. */
    get #phase(): number {
        return Math.floor((this.#up - 1) / 2);
    }

    /** The last period of the phases that begins 32 samples before the next output, or earlier. */
    #firstPeriod(): number {
        const position = Math.floor((this.#phase + this.#outputN * this.#down) / this.#up);
        return Math.max(0, Math.floor((position - 32) / this.#down));
    }

    /** Outputs from the first that has not been returned up to `end`. */
    #outputs(end: number, tail: ResampleOptions["tail"]): Float32Array {
        if (end <= this.#outputN) return new Float32Array(0);
        const period = this.#firstPeriod();
        const part = this.#signal.part(period * this.#down, this.#signal.sampleN, false);
        const all = this.#sorvo.resample(part, { ...this.#options, tail: tail! });
        const result = all.slice(this.#outputN - period * this.#up, end - period * this.#up);
        if (result.length < end - this.#outputN) {
            throw new SorvoArgumentError("the number of outputs", end, "be what the signal yields");
        }
        this.#outputN = end;
        return result;
    }
}

function greatestDivisor(a: number, b: number): number {
    return b === 0 ? a : greatestDivisor(b, a % b);
}
