// The same bits as the command line and the Python package, whose library computes elementary functions by itself:
// SORVO_AUDIO_TOOL is the program, SORVO_AUDIO_LIBRARY the shared object, and without them nothing is compared.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, test } from "node:test";
import { fileURLToPath } from "node:url";
import { loadSorvoAudio } from "sorvo-audio";

const here = (path) => fileURLToPath(new URL(`../../${path}`, import.meta.url));
const tool = process.env.SORVO_AUDIO_TOOL;
const skip = tool && process.env.SORVO_AUDIO_LIBRARY ? false : "no native library to compare with";
const folder = mkdtempSync(join(tmpdir(), "sorvo audio "));
after(() => rmSync(folder, { recursive: true }));

const recording = here("examples/data/speech.wav");
const bytes = readFileSync(recording);
const y = Float32Array.from({ length: (bytes.length - 44) / 2 }, (_, i) => bytes.readInt16LE(44 + 2 * i) / 32768);

for (const variant of ["simd128", "plain"]) {
    test(`features of the presets, ${variant}`, { skip }, async () => {
        const sorvo = await loadSorvoAudio({ variant });
        for (const [name, preset] of Object.entries(sorvo.presets)) {
            for (const seconds of [undefined, 30]) {
                const padded = seconds === undefined ? [] : ["--pad-to-seconds", seconds];
                const printed = execFileSync(tool, ["mel", recording, "-o", join(folder, "mel.npy"), "--force",
                    "--preset", name, "--json", ...padded]);
                const { sr } = preset.settings;
                const x = sr === 16000 ? y : sorvo.resample(y, { origSr: 16000, targetSr: sr, tail: "same" });
                const features = preset.features(x, { padToSeconds: seconds });
                const { digest, shape } = JSON.parse(printed);
                assert.deepEqual([sorvo.digest(features.data), features.shape], [digest, shape], `${name} ${seconds}`);
            }
        }
    });

    test(`functions as in Python, ${variant}`, { skip }, async () => {
        const sorvo = await loadSorvoAudio({ variant });
        const [b, a] = [[0.1, 0.3, 0.3, 0.1], [1, -0.6, 0.5, -0.1]];
        const powers = sorvo.stft(y, { power: 2 });
        const noisy = Float32Array.from(powers.data, (value, i) => (i % 1000 === 0 ? NaN : value));
        const calls = {
            "sa.stft(y, n_fft=600, window='hamming', norm='window').view('f4')":
                sorvo.stft(y, { nFft: 600, window: "hamming", norm: "window" }).data,
            "sa.istft(sa.stft(y, hop_length=300), hop_length=300)": sorvo.istft(sorvo.stft(y, { hopLength: 300 }), { hopLength: 300 }),
            "sa.melspectrogram(y, sr=16000, htk=True, norm=None, pad_mode='constant', power=1.3)":
                sorvo.melSpectrogram(y, { sr: 16000, htk: true, norm: null, padMode: "constant", power: 1.3 }).data,
            "sa.power_to_db(p)": sorvo.powerToDb(noisy),
            "sa.power_to_db(p, ref='max', amin=1e-20, top_db=None)": sorvo.powerToDb(noisy, { ref: "max", amin: 1e-20, topDb: null }),
            "sa.power_to_db(p, ref=0.01, top_db=30)": sorvo.powerToDb(noisy, { ref: 0.01, topDb: 30 }),
            "sa.mfcc(y, sr=16000, n_mels=64)": sorvo.mfcc(y, { sr: 16000, nMels: 64 }).data,
            "sa.lfilter(b, a, y)": sorvo.lfilter(b, a, y),
            "sa.lfilter(b, a, y, zi=sa.lfilter_zi(b, a))[1]": sorvo.lfilter(b, a, y, { zi: sorvo.lfilterZi(b, a) }).zf,
            "sa.filtfilt(b, a, y, padtype='even')": sorvo.filtfilt(b, a, y, { padtype: "even" }),
            "sa.resample(y, orig_sr=16000, target_sr=11025, tail='full')":
                sorvo.resample(y, { origSr: 16000, targetSr: 11025, tail: "full" }),
            "sa.trim(y, top_db=30)[0]": sorvo.trim(y, { topDb: 30 }).y,
            "sa.magphase(sa.stft(y), phase='angle')[1]": sorvo.magphase(sorvo.stft(y).data, { phase: "angle" }).phase,
            "sa.standardize(y)": sorvo.standardize(y),
        };
        const program = `
import numpy as np, soundfile, sorvo_audio as sa
y = soundfile.read(${JSON.stringify(recording)}, dtype="float32")[0]
b, a = ${JSON.stringify([b, a])}
p = sa.stft(y, power=2.0)
p.reshape(-1)[::1000] = np.nan
${Object.keys(calls).map((call) => `print(sa.digest(${call}))`).join("\n")}`;
        const printed = execFileSync("/usr/bin/python3", ["-W", "ignore", "-B", "-c", program],
            { encoding: "utf8", env: { ...process.env, PYTHONPATH: here("python") } });
        assert.deepEqual(Object.fromEntries(Object.entries(calls).map(([call, values]) => [call, sorvo.digest(values)])),
            Object.fromEntries(printed.trim().split("\n").map((digest, i) => [Object.keys(calls)[i], digest])));
    });
}
