import { SorvoArgumentError, SorvoAudioError, SorvoMemoryError } from "./errors.js";
import { type Exports, type Floats, Memory } from "./memory.js";
import { constants, type Raw } from "./native.js";

/** @internal The module's functions, called by addresses, and what surrounds their calls. */
export class Library {
    readonly memory: Memory;
    readonly raw: Raw;

    constructor(exports: Exports) {
        this.memory = new Memory(exports);
        this.raw = exports as unknown as Raw;
    }

    /** The `count` floats that a call writes, given where they go and the inputs' addresses. */
    compute(count: number, inputs: readonly Floats[], call: (dst: number, ...sources: number[]) => number): Float32Array {
        return this.memory.scope((scope) => {
            const sources = scope.inputs(inputs);
            const dst = scope.output(count);
            check(call(dst, ...sources));
            return this.memory.floats(dst, count).slice();
        });
    }

    /** The int that a call writes. */
    int(call: (result: number) => number): number {
        return this.memory.scope((scope) => {
            const result = scope.output(1);
            check(call(result));
            return this.memory.ints(result, 1)[0]!;
        });
    }

    digest(values: Floats): string {
        return this.memory.scope((scope) => {
            const valueN = values.length;
            const [src] = scope.inputs([values]);
            const words = scope.output(2);
            this.memory.exports.sorvoDigest(words, src!, valueN);
            return Array.from(this.memory.ints(words, 2), (word) => (word >>> 0).toString(16).padStart(8, "0")).join("");
        });
    }
}

/** Throws what a status stands for. */
export function check(status: number): void {
    if (status === constants.ERROR_MEMORY) {
        throw new SorvoMemoryError("WebAssembly has no room for what the call needs");
    }
    if (status === constants.ERROR_ARGUMENT) {
        throw new SorvoArgumentError("an argument", "refused by the library", "be in its range");
    }
    if (status !== constants.OK) {
        throw new SorvoAudioError(`the library failed with status ${status}: a length does not fit an int, or an internal error`);
    }
}
