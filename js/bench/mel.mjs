// Whisper's mel spectrogram of 30 s (windows of 400 every 160 samples, 80 bands): this package beside transformers.js,
// and how far their numbers lie apart. `npm install --no-save @huggingface/transformers` first.
import { loadSorvoAudio } from "sorvo-audio";

const sr = 16000;
const y = Float32Array.from({ length: 30 * sr }, (_, i) =>
    0.4 * Math.sin(2 * Math.PI * (200 + i / 200) * i / sr) + 0.05 * Math.sin(i * i));

/** The least of the milliseconds that a call takes: others may use the machine, too. */
async function fastest(call, repetitions) {
    let least = Infinity;
    for (let i = 0; i < repetitions; ++i) {
        const begin = performance.now();
        await call();
        least = Math.min(least, performance.now() - begin);
    }
    return `${least.toFixed(1)} ms`;
}

const options = { sr, nFft: 400, hopLength: 160, nMels: 80 };
let ours;
for (const variant of ["simd128", "plain"]) {
    const sorvo = await loadSorvoAudio({ variant });
    console.log(`sorvo-audio, ${variant}: ${await fastest(() => sorvo.melSpectrogram(y, options), 100)}`);
    ours = sorvo.melSpectrogram(y, options);
}

const { mel_filter_bank, spectrogram, window_function } =
    await import(new URL("../node_modules/@huggingface/transformers/src/utils/audio.js", import.meta.url));
const bank = mel_filter_bank(201, 80, 0, 8000, sr, "slaney", "slaney");
const window = window_function(400, "hann");
const theirs = () => spectrogram(y, window, 400, 160, { power: 2, mel_filters: bank });
console.log(`transformers.js: ${await fastest(theirs, 20)}`);
const { data, dims } = await theirs();
const largest = ours.data.reduce((a, b) => Math.max(a, b));
const difference = ours.data.reduce((most, value, i) => Math.max(most, Math.abs(value - data[i])), 0);
console.log(`${dims} and ${ours.shape}; the largest difference is ${(difference / largest).toExponential(1)} of the largest value`);
