// The page of examples/web, opened from its folder in Chromium: what it shows is what the command line computes.
// SORVO_AUDIO_TOOL is the program; with SORVO_AUDIO_SCREENSHOT set, a picture of the page is written there.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { fileURLToPath, pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

const here = (path) => fileURLToPath(new URL(`../../${path}`, import.meta.url));
const page_ = here("build/web/index.html");
const tool = process.env.SORVO_AUDIO_TOOL;
const executablePath = "/usr/bin/chromium";
const skip = !existsSync(page_) ? "the page is not built" : !existsSync(executablePath) ? "no Chromium"
    : tool ? false : "no program to compare with";
const folder = mkdtempSync(join(tmpdir(), "sorvo audio "));
const speech = here("examples/data/speech.wav");

// Sounds that take other ways through the page: two channels at another rate, and 24 bits.
function writeWav(file, { tag, bits, channelN, rate, frameN }, write) {
    const bytes = Buffer.alloc(44 + frameN * channelN * bits / 8);
    bytes.write("RIFF", 0);
    bytes.writeUInt32LE(bytes.length - 8, 4);
    bytes.write("WAVEfmt ", 8);
    bytes.writeUInt32LE(16, 16);
    [[tag, 20], [channelN, 22], [channelN * bits / 8, 32], [bits, 34]].forEach(([n, at]) => bytes.writeUInt16LE(n, at));
    [[rate, 24], [rate * channelN * bits / 8, 28], [bytes.length - 44, 40]].forEach(([n, at]) => bytes.writeUInt32LE(n, at));
    bytes.write("data", 36);
    for (let i = 0; i < frameN * channelN; ++i) write(bytes, 44 + i * bits / 8, Math.sin(i * i / 1e5) * 0.7);
    writeFileSync(file, bytes);
}
const stereo = join(folder, "it's stereo.wav");
const deep = join(folder, "deep.wav");
writeWav(stereo, { tag: 3, bits: 32, channelN: 2, rate: 44100, frameN: 50000 }, (bytes, at, x) => bytes.writeFloatLE(x, at));
writeWav(deep, { tag: 1, bits: 24, channelN: 1, rate: 22050, frameN: 60000 },
    (bytes, at, x) => bytes.writeIntLE(Math.round(x * 8e6), at, 3));

let browser;
let page;
const faults = [];
before(async () => {
    if (skip) return;
    browser = await chromium.launch({ executablePath, args: ["--no-sandbox", "--use-fake-ui-for-media-stream",
        "--use-fake-device-for-media-stream", `--use-file-for-fake-audio-capture=${speech}`] });
    page = await browser.newPage({ viewport: { width: 1280, height: 960 }, deviceScaleFactor: 1.5, offline: true });
    page.on("pageerror", (error) => faults.push(error.message));
    page.on("request", (request) => { if (!/^(file|blob|data):/.test(request.url())) faults.push(request.url()); });
    await page.goto(pathToFileURL(page_).href);
    await shown("speech.wav");
});
after(async () => {
    await browser?.close();
    rmSync(folder, { recursive: true });
});

/** Waits for a sound's features. */
const shown = (name) => page.waitForFunction((wanted) => document.getElementById("facts").textContent.startsWith(wanted), name);
const digest = () => page.textContent("#digest");
const digestOfTool = (file, preset) => JSON.parse(execFileSync(tool,
    ["mel", file, "--preset", preset, "-o", join(folder, "mel.npy"), "--force", "--json"])).digest;

test("recordings have the program's digests", { skip }, async () => {
    for (const [file, name] of [[speech, "speech.wav"], [stereo, "it's stereo.wav"], [deep, "deep.wav"]]) {
        await page.setInputFiles("#file", file);
        await shown(name);
        for (const preset of ["whisper", "tacotron2", "hifigan", "librosa"]) {
            await page.selectOption("#preset", preset);
            assert.equal(await digest(), digestOfTool(file, preset), `${name}, ${preset}`);
        }
    }
    await page.selectOption("#preset", "whisper");
});

test("the command that the page shows prints its digest", { skip }, async () => {
    await page.setInputFiles("#file", stereo);
    await shown("it's stereo.wav");
    const command = (await page.textContent("#shell")).replace(/^sorvo-audio/, `'${tool}'`);
    assert.equal(JSON.parse(execFileSync("sh", ["-c", command], { cwd: folder })).digest, await digest());
    const python = (await page.textContent("#python")).replace(/^python3/, "/usr/bin/python3 -B");
    assert.equal(execFileSync("sh", ["-c", python], { cwd: folder, encoding: "utf8",
        env: { ...process.env, PYTHONPATH: here("python") } }).trim(), await digest());
});

test("the picture shows the sound, and grows while it plays", { skip }, async () => {
    await page.click("#built-in");
    await shown("speech.wav");
    const lightIn = (from, to) => page.evaluate(([begin, end]) => {
        const canvas = document.getElementById("picture");
        const x = canvas.width * begin;
        const { data } = canvas.getContext("2d").getImageData(x, canvas.height * 0.1, canvas.width * (end - begin), canvas.height * 0.7);
        return data.reduce((sum, value) => sum + value, 0) / data.length;
    }, [from, to]);
    const before_ = await lightIn(0.6, 0.8);
    await page.click("#play");
    await page.waitForTimeout(600);
    assert.ok(await lightIn(0.6, 0.8) < before_ * 0.85, "what is to come is faint");
    if (process.env.SORVO_AUDIO_SCREENSHOT) {
        await page.waitForTimeout(2200);
        await page.screenshot({ path: process.env.SORVO_AUDIO_SCREENSHOT });
    }
    await page.waitForFunction(() => document.getElementById("play").textContent === "Play");
    assert.ok(Math.abs(await lightIn(0.6, 0.8) - before_) < 1);
});

test("what the microphone heard, saved, has the same digest elsewhere", { skip }, async () => {
    await page.click("#microphone");
    await page.waitForFunction(() => document.getElementById("microphone").textContent === "Done");
    await page.waitForTimeout(1500);
    await page.click("#microphone");
    await shown("microphone.wav");
    const [download] = await Promise.all([page.waitForEvent("download"), page.click("#save")]);
    const file = join(folder, "microphone.wav");
    await download.saveAs(file);
    assert.ok(readFileSync(file).length > 100_000);
    assert.equal(await digest(), digestOfTool(file, "whisper"));
});

test("what is no sound is said to be none", { skip }, async () => {
    writeFileSync(join(folder, "no.wav"), "no sound");
    await page.setInputFiles("#file", join(folder, "no.wav"));
    await page.waitForFunction(() => document.getElementById("message").textContent.includes("give a WAV file"));
    assert.deepEqual(faults, []);
});
