import { SorvoArgumentError, SorvoMemoryError } from "./errors.js";

/** What the WebAssembly module exports besides the library's functions. */
export interface Exports {
    readonly memory: WebAssembly.Memory;
    malloc(byteCount: number): number;
    free(address: number): void;
    sorvoDigest(words: number, values: number, count: number): void;
    readonly [name: string]: unknown;
}

/**
 * Floats in WebAssembly's memory. Given in place of a Float32Array they are not copied, neither to the library nor
 * back. Free them when they are no longer needed.
 */
export class WasmFloats {
    readonly #memory: Memory;
    #address: number;

    /** @internal */
    constructor(memory: Memory, readonly length: number) {
        this.#memory = memory;
        this.#address = memory.allocate(4 * length);
        this.array.fill(0);
    }

    /** A view of the floats. It loses them when the memory grows, which any call may do: ask for it anew. */
    get array(): Float32Array {
        return this.#memory.floats(this.address(), this.length);
    }

    free(): void {
        this.#memory.free(this.#address);
        this.#address = 0;
    }

    /** @internal */
    address(): number {
        if (this.#address === 0) throw new SorvoArgumentError("WasmFloats", this.length, "not be used after free()");
        return this.#address;
    }
}

/** Samples, features or coefficients. */
export type Floats = Float32Array | WasmFloats;

/** @internal The heap of the module. */
export class Memory {
    #view = new Float32Array(0);

    constructor(readonly exports: Exports) {}

    allocate(byteCount: number): number {
        const address = byteCount < 2 ** 31 ? this.exports.malloc(Math.max(byteCount, 4)) : 0;
        if (address === 0) {
            throw new SorvoMemoryError(`WebAssembly has no room for ${byteCount} bytes more`);
        }
        return address;
    }

    free(address: number): void {
        this.exports.free(address);
    }

    /** Of floats that lie in this memory. */
    addressOf(values: Floats): number | undefined {
        if (values instanceof WasmFloats) return values.address();
        return values.buffer === this.exports.memory.buffer ? values.byteOffset : undefined;
    }

    /** Floats at an address, as long as the memory does not grow. */
    floats(address: number, count: number): Float32Array {
        if (this.#view.buffer !== this.exports.memory.buffer) {
            this.#view = new Float32Array(this.exports.memory.buffer);
        }
        return this.#view.subarray(address / 4, address / 4 + count);
    }

    ints(address: number, count: number): Int32Array {
        return new Int32Array(this.exports.memory.buffer, address, count);
    }

    /** Runs `work` with storage that is freed after it, whatever happens. */
    scope<Result>(work: (scope: Scope) => Result): Result {
        const scope = new Scope(this);
        try {
            return work(scope);
        } finally {
            scope.free();
        }
    }
}

/** @internal Storage of one call. */
export class Scope {
    readonly #addresses: number[] = [];

    constructor(private readonly memory: Memory) {}

    /** Room for numbers of four bytes each. */
    take(count: number): number {
        const address = this.memory.allocate(4 * count);
        this.#addresses.push(address);
        return address;
    }

    /** The addresses of floats; they are copied unless they lie in WebAssembly's memory. */
    inputs(arrays: readonly Floats[]): number[] {
        // All of them before anything is allocated: growing memory takes the floats out of views of it.
        const inside = arrays.map((values) => this.memory.addressOf(values));
        return arrays.map((values, i) => {
            const known = inside[i];
            if (known !== undefined) return known;
            const address = this.take(values.length);
            this.memory.floats(address, values.length).set(values as Float32Array);
            return address;
        });
    }

    /** Room for results, zero so far. */
    output(count: number): number {
        const address = this.take(count);
        this.memory.floats(address, count).fill(0);
        return address;
    }

    free(): void {
        for (const address of this.#addresses) this.memory.free(address);
    }
}
