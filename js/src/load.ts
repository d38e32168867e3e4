import { SorvoAudioError } from "./errors.js";
import type { Exports } from "./memory.js";
import { SorvoAudio } from "./sorvo_audio.js";

export type Variant = "simd128" | "plain";

// A module whose one function adds vectors.
const simdProbe = Uint8Array.of(0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 10, 1, 8, 0, 65, 0,
    253, 15, 253, 98, 11);

/** The variant that this WebAssembly can run. */
export function supportedVariant(): Variant {
    return WebAssembly.validate(simdProbe) ? "simd128" : "plain";
}

/** The library of a compiled module, at once: for AudioWorklets, which are handed the module. */
export function instantiateSorvoAudio(module: WebAssembly.Module, variant: Variant = "simd128"): SorvoAudio {
    const stop = (code: number): never => {
        throw new SorvoAudioError(`WebAssembly ended with code ${code}`);
    };
    const instance = new WebAssembly.Instance(module, {
        wasi_snapshot_preview1: { proc_exit: stop },
        env: { emscripten_notify_memory_growth: () => undefined },
    });
    const exports = instance.exports as unknown as Exports & { _initialize(): void };
    exports._initialize();
    return new SorvoAudio(exports, variant);
}

export interface LoadOptions {
    /** Which module to take instead of the fastest one that runs. */
    variant?: Variant;
    /** The module: where it does not lie beside this file, or is compiled already. */
    wasm?: WebAssembly.Module | BufferSource | URL | string;
}

/** @internal Makes `loadSorvoAudio` of a function that reads the bytes at an address. */
export function loader(read: (url: URL | string) => Promise<BufferSource>) {
    return async function loadSorvoAudio(options: LoadOptions = {}): Promise<SorvoAudio> {
        const variant = options.variant ?? supportedVariant();
        let wasm = options.wasm ?? moduleUrl(variant);
        if (wasm instanceof URL || typeof wasm === "string") wasm = await read(wasm);
        const module = wasm instanceof WebAssembly.Module ? wasm : await WebAssembly.compile(wasm);
        return instantiateSorvoAudio(module, variant);
    };
}

// Written out, so that bundlers find both files.
function moduleUrl(variant: Variant): URL {
    return variant === "simd128" ? new URL("./sorvo_audio_simd128.wasm", import.meta.url)
        : new URL("./sorvo_audio_plain.wasm", import.meta.url);
}
