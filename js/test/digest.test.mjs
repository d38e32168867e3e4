// The calls of digest_calls.txt through the 22 functions of each module give the published digests, those of correctly
// rounded elementary functions. The same digests for native libraries: tools/digest, python/sorvo_audio/_digest.py.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { loadSorvoAudio } from "sorvo-audio";

const text = (path) => readFileSync(new URL(`../../${path}`, import.meta.url), "utf8");
const lines = (path) => text(path).split("\n").filter((line) => line !== "" && !line.startsWith("#"));
const published = Object.fromEntries(lines("docs/digests.txt").map((line) => {
    const words = line.split(/ +/);
    return [words[0], words.at(-1)];
}));

const wrap = (x) => BigInt.asUintN(64, x);
function mix(x) {
    x = wrap(x + 0x9E3779B97F4A7C15n);
    x = wrap((x ^ (x >> 30n)) * 0xBF58476D1CE4E5B9n);
    x = wrap((x ^ (x >> 27n)) * 0x94D049BB133111EBn);
    return x ^ (x >> 31n);
}

const mixed = []; // mix(i), which most arrays are made of
const hash = (i) => (mixed[i] ??= mix(BigInt(i)));
const low = (h, mask) => Number(h & BigInt(mask));
const floatOf = (bits) => new Float32Array(Uint32Array.of(bits).buffer)[0];
const noise = (h) => (Number(h >> 40n) - 2 ** 23) * 2 ** -23;
const specials = [0x7FC00000, 0x7F800000, 0xFF800000, 0, 0x80000000, 0x7F7FFFFF, 0x00800000, 0x80000001].map(floatOf);
const kinds = {
    noise: (i, h) => noise(h),
    power: (i, h) => Math.abs(noise(h)) * 2 ** -low(h, 31),
    spread: (i, h) => noise(h) * 2 ** -low(h, 63),
    bursts: (i, h) => noise(h) * [1, 2 ** -5, 2 ** -12, 0][low(hash(Math.floor(i / 1024)), 3)],
    holes: (i, h) => (low(hash(Math.floor(i / 16)), 1) !== 0 ? 0 : noise(h)),
    huge: (i, h) => noise(h) * 2 ** 127,
    tiny: (i, h) => noise(h) * 2 ** -126,
    special: (i, h) => (low(h, 31) === 0 ? specials[low(h >> 5n, 7)] : noise(h)),
    bits: (i, h) => floatOf(Number(h >> 32n)),
    ramp: (i) => i * 2 ** -10,
    impulse: (i, h, n) => (i === Math.floor(n / 3) ? 1 : 0),
};

const made = new Map();
function makeArray(kind, n) {
    if (kind.startsWith("fill:")) return new Float32Array(n).fill(number(kind.slice(5)));
    const key = `${kind}:${n}`;
    if (!made.has(key)) made.set(key, Float32Array.from({ length: n }, (_, i) => kinds[kind](i, hash(i), n)));
    return made.get(key).slice();
}

const number = (word) => Number(word.replace("inf", "Infinity").replace("nan", "NaN"));

function makeArgument(word, earlier) {
    if (word === "same") return earlier[0];
    if (word === "null") return null;
    if (word === "int") return new Int32Array(1);
    if (word.startsWith("[")) return Float32Array.from(word.slice(1, -1).split(","), number);
    if (!word.includes(":")) return number(word);
    const [, role, rest] = /^(?:(out|inout):)?(.*)$/.exec(word);
    const kind = role === "out" ? `fill:0.25:${rest}` : rest;
    const colon = kind.lastIndexOf(":");
    return makeArray(kind.slice(0, colon), Number(kind.slice(colon + 1)));
}

function digests(native) {
    const sums = new Map();
    for (const line of lines("python/sorvo_audio/digest_calls.txt")) {
        const [name, ...words] = line.trim().split(/ +/);
        const sum = sums.get(name) ?? { position: 0n, value: 0n };
        sums.set(name, sum);
        const add = (bits) => {
            sum.value = wrap(sum.value + mix((sum.position++ << 32n) | BigInt(bits >>> 0)));
        };
        const values = [];
        for (const word of words) values.push(makeArgument(word, values));
        add(native[`sorvoAudio${name}`](...values));
        words.forEach((word, i) => {
            if (word === "int") add(values[i][0]);
            if (!/^(in)?out:/.test(word)) return;
            const bits = new Uint32Array(values[i].buffer);
            values[i].forEach((value, at) => add(Number.isNaN(value) ? 0x7FC00000 : bits[at]));
        });
    }
    let all = 0n;
    for (const { value } of sums.values()) all = mix(all ^ value);
    const result = [...sums].map(([name, { value }]) => [`sorvoAudio${name}`, value]);
    return Object.fromEntries([...result, ["all", all]].map(([name, value]) => [name, value.toString(16).padStart(16, "0")]));
}

for (const variant of ["simd128", "plain"]) {
    test(`digests of ${variant}`, async () => {
        const sorvo = await loadSorvoAudio({ variant });
        assert.deepEqual(digests(sorvo.native), published);
    });
}
