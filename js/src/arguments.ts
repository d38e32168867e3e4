import { SorvoArgumentError } from "./errors.js";
import { type Floats, WasmFloats } from "./memory.js";
import { constants } from "./native.js";

/** An integer that C can take. */
export function count(name: string, value: unknown, minimum = 1): number {
    if (!Number.isInteger(value) || (value as number) < minimum || (value as number) > constants.INT_MAX) {
        throw new SorvoArgumentError(name, value, `be an integer from ${minimum} to ${constants.INT_MAX}`);
    }
    return value as number;
}

/** A number, not NaN, greater than `above` and at least `minimum`. */
export function real(name: string, value: unknown, { above = -Infinity, minimum = -Infinity } = {}): number {
    if (typeof value !== "number" || !(value >= minimum && (value > above || above === -Infinity))) {
        const rule = above > -Infinity ? ` greater than ${above}` : minimum > -Infinity ? ` not less than ${minimum}` : "";
        throw new SorvoArgumentError(name, value, `be a number${rule}`);
    }
    return value;
}

/** The library's value of a named option. */
export function choice<Value>(name: string, value: unknown, values: readonly (readonly [unknown, Value])[]): Value {
    const found = values.find(([word]) => word === value);
    if (found === undefined) {
        throw new SorvoArgumentError(name, value, `be one of ${values.map(([word]) => JSON.stringify(word)).join(", ")}`);
    }
    return found[1];
}

/** Samples or features. */
export function floats(name: string, value: unknown, minimum = 1): Floats {
    if (!(value instanceof Float32Array || value instanceof WasmFloats)) {
        const integers = value instanceof Int16Array;
        throw new SorvoArgumentError(name, value, "be a Float32Array or WasmFloats"
            + (integers ? `. Samples of full scale 32768: Float32Array.from(${name}, (sample) => sample / 32768)` : ""));
    }
    count(`${name}.length`, value.length, minimum);
    return value;
}

/** A signal with at least one frame. */
export function longEnough(name: string, value: Floats, frameName: string, frameN: number): void {
    if (value.length < frameN) {
        throw new SorvoArgumentError(`${name}.length`, value.length, `be at least ${frameName} = ${frameN}`);
    }
}

/** Filter coefficients, rounded to what the library takes. */
export function coefficients(name: string, value: unknown): Float32Array {
    if (!(Array.isArray(value) || value instanceof Float32Array || value instanceof Float64Array) || value.length === 0
        || !Array.prototype.every.call(value, (item) => typeof item === "number")) {
        throw new SorvoArgumentError(name, value, "be a non-empty array of numbers");
    }
    return Float32Array.from(value as ArrayLike<number>);
}

/** Given options over defaults; an option that there is not is an error, and so is what must be given and is not. */
export function settle<Options extends object>(
    given: object | undefined, defaults: Options, required: readonly (keyof Options & string)[] = [],
): Options {
    for (const name of Object.keys(given ?? {})) {
        if (!(name in defaults)) {
            throw new SorvoArgumentError("the option", name, `be one of ${Object.keys(defaults).join(", ")}`);
        }
    }
    const known = Object.entries(given ?? {}).filter(([, value]) => value !== undefined);
    const settled = { ...defaults, ...Object.fromEntries(known) };
    for (const name of required) {
        if (settled[name] === undefined) throw new SorvoArgumentError(name, undefined, "be given");
    }
    return settled;
}
