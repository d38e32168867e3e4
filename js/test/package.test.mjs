// The package as others get it: types, packed and installed into an empty folder, and bundled.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

const package_ = fileURLToPath(new URL("..", import.meta.url));
const folder = mkdtempSync(join(tmpdir(), "sorvo audio "));
const run = (program, ...words) => execFileSync(program, words, { cwd: folder, encoding: "utf8", stdio: "pipe" });
const node = (file, ...words) => run(process.execPath, file, ...words);

before(() => {
    const archive = run("npm", "pack", package_, "--silent").trim();
    writeFileSync(join(folder, "package.json"), '{ "type": "module" }');
    run("npm", "install", "--offline", "--no-audit", "--no-fund", `./${archive}`);
});
after(() => rmSync(folder, { recursive: true }));

test("the packed package runs in an empty folder, without other packages", () => {
    assert.deepEqual(readdirSync(join(folder, "node_modules")).filter((name) => name[0] !== "."), ["sorvo-audio"]);
    writeFileSync(join(folder, "use.js"), `
        import { loadSorvoAudio } from "sorvo-audio";
        loadSorvoAudio().then((sorvo) =>
            console.log(sorvo.variant, sorvo.presets.whisper.features(new Float32Array(16000)).shape.join()));`);
    assert.equal(node("use.js").trim(), "simd128 80,100");
});

test("a module has less than 400 KB when it is compressed", () => {
    for (const variant of ["simd128", "plain"]) {
        const bytes = readFileSync(join(folder, `node_modules/sorvo-audio/dist/sorvo_audio_${variant}.wasm`));
        assert.ok(gzipSync(bytes, { level: 9 }).length < 400_000, variant);
    }
});

test("the types say what a strict compiler needs to know", () => {
    const wrong = ["sorvo.melSpectrogram(y, {});", "sorvo.stft([1, 2]);", "sorvo.stft(y, { nfft: 512 });",
        'sorvo.stft(y, { window: "hanning" });', "sorvo.presets.wisper;", "sorvo.native.sorvoAudioFFT(y, y);"];
    writeFileSync(join(folder, "use.ts"), `
        import { loadSorvoAudio, type ComplexMatrix, type Matrix } from "sorvo-audio";
        const sorvo = await loadSorvoAudio({ variant: "plain" });
        const y = new Float32Array(16000);
        const complex: ComplexMatrix = sorvo.stft(y, { nFft: 512 });
        const powers: Matrix = sorvo.stft(y, { power: 2 });
        const mel: Matrix = sorvo.melSpectrogram(y, { sr: 16000, fmax: null, norm: "slaney" });
        const y2: Float32Array = sorvo.istft(complex);
        const { y: filtered, zf } = sorvo.lfilter([1], [1, 0.5], y, { zi: new Float32Array(1) });
        const status: number = sorvo.native.sorvoAudioFFT(null, y, 4);
        console.log(powers, mel, y2, filtered, zf, status, sorvo.presets.whisper_128.settings.nMels);
        ${wrong.map((line) => `// @ts-expect-error\n${line}`).join("\n")}`);
    node(join(package_, "node_modules/typescript/bin/tsc"), "--strict", "--noEmit", "--module", "NodeNext",
        "--target", "ES2022", "--lib", "ES2022,DOM", "use.ts");
});

test("a bundler takes the modules along", async () => {
    const { build } = await import("vite");
    writeFileSync(join(folder, "index.html"), '<script type="module" src="use.js"></script>');
    await build({ root: folder, logLevel: "error" });
    const assets = readdirSync(join(folder, "dist/assets"));
    for (const variant of ["simd128", "plain"]) {
        const asset = assets.find((name) => name.startsWith(`sorvo_audio_${variant}`) && name.endsWith(".wasm"));
        assert.ok(asset !== undefined);
        assert.ok(assets.some((name) => name.endsWith(".js")
            && readFileSync(join(folder, "dist/assets", name), "utf8").includes(asset)));
    }
});
