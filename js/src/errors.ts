/** Base of all errors of the package. */
export class SorvoAudioError extends Error {
    override name = "SorvoAudioError";
}

/** A value that breaks a rule; the message holds all three. */
export class SorvoArgumentError extends SorvoAudioError {
    override name = "SorvoArgumentError";

    constructor(
        readonly argument: string,
        readonly value: unknown,
        readonly rule: string,
    ) {
        super(`${argument} is ${describe(value)}; it must ${rule}`);
    }
}

/** WebAssembly's memory is full. The call may be repeated. */
export class SorvoMemoryError extends SorvoAudioError {
    override name = "SorvoMemoryError";
}

function describe(value: unknown): string {
    if (typeof value === "string") return JSON.stringify(value);
    if (ArrayBuffer.isView(value)) return `${value.constructor.name}(${(value as Float32Array).length})`;
    if (Array.isArray(value)) return `an array of ${value.length}`;
    if (typeof value === "object" && value !== null) return `an object ${value.constructor?.name ?? ""}`.trim();
    return String(value);
}
