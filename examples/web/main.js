import { loadSorvoAudio, supportedVariant } from "../../js/dist/index.js";
import plain from "../../js/dist/sorvo_audio_plain.wasm";
import simd128 from "../../js/dist/sorvo_audio_simd128.wasm";
import speech from "../data/speech.wav";
import { Columns, draw } from "./picture.js";
import { mixed, readWav, wavOf } from "./sound.js";
import microphoneProcessor from "./worklet.js?text";

const variant = supportedVariant();
const module = await WebAssembly.compile({ simd128, plain }[variant]);
const sorvo = await loadSorvoAudio({ wasm: module, variant });

const element = (id) => document.getElementById(id);
const [canvas, message, play, presetBox] = ["picture", "message", "play", "preset"].map(element);
for (const { settings } of Object.values(sorvo.presets)) presetBox.add(new Option(settings.about, settings.name));

/** The sound: name, samples, rate, and whether the file that has these samples is the one that was opened. */
let sound = null;
let columns = new Columns(sorvo.presets.whisper.settings);
let shownSeconds = 1;
let playing = null; // { context, source, start }
let recording = null; // { context, stream, blocks }

function say(text, isError = false) {
    message.textContent = text;
    message.classList.toggle("error", isError);
}

function attempt(work) {
    return async (...values) => {
        try {
            say("");
            await work(...values);
        } catch (error) {
            say(error.message, true);
        }
    };
}

// Features

function compute() {
    const preset = sorvo.presets[presetBox.value];
    const { settings } = preset;
    element("about").textContent = describe(settings);
    if (!sound) return;
    const samples = sound.rate === settings.sr ? sound.samples
        : sorvo.resample(sound.samples, { origSr: sound.rate, targetSr: settings.sr, tail: "same" });
    const features = preset.features(samples);
    const begin = performance.now(); // of the next time, as the first one builds tables
    preset.features(samples);
    const milliseconds = performance.now() - begin;
    columns = new Columns(settings);
    columns.append(features);
    shownSeconds = sound.samples.length / sound.rate;
    element("digest").textContent = sorvo.digest(features.data);
    element("facts").textContent = `${sound.name} · ${shownSeconds.toFixed(1)} s · ${features.shape.join(" × ")}`;
    element("timing").textContent = `${features.data.length.toLocaleString("en")} values in ${milliseconds.toFixed(1)} ms, `
        + (variant === "simd128" ? "WebAssembly with SIMD" : "plain WebAssembly");
    element("save").hidden = sound.isFile;
    showCommands(settings.name, settings.sr);
    play.disabled = false;
    redraw();
}

function describe({ sr, nFft, hopLength, nMels }) {
    return `${nMels} bands · windows of ${nFft} every ${hopLength} samples · ${sr / 1000} kHz`;
}

function showCommands(name, sr) {
    const file = sound.isFile ? sound.name : sound.name.replace(/\.[^.]*$/, "") + ".wav";
    const inShell = /^[\w.-]+$/.test(file) ? file : `'${file.replaceAll("'", "'\\''")}'`;
    const inPython = JSON.stringify(file).replaceAll("'", "\\u0027");
    element("shell").textContent = `sorvo-audio mel ${inShell} --preset ${name} -o features.npy --json`;
    const samples = sound.rate === sr ? "y"
        : `sa.resample(y, orig_sr=rate, target_sr=${sr}, tail="same")`;
    element("python").textContent = "python3 -c 'import soundfile, sorvo_audio as sa; "
        + `y, rate = soundfile.read(${inPython}, dtype="float32", always_2d=True); `
        + `y = y.mean(1, dtype=float).astype("float32"); print(sa.digest(sa.presets.${name}.features(${samples})))'`;
}

function redraw() {
    const heard = playing ? playing.context.currentTime - playing.start : null;
    if (heard !== null && heard >= shownSeconds) stop();
    draw(canvas, columns, shownSeconds, playing ? heard : null);
    if (playing || recording) requestAnimationFrame(redraw);
}

// Sounds

function take(newSound) {
    stop();
    sound = newSound;
    compute();
}

async function open(file) {
    const bytes = await file.arrayBuffer();
    const wav = readWav(bytes);
    if (wav) return take({ name: file.name, ...wav, isFile: true });
    const rate = sorvo.presets[presetBox.value].settings.sr;
    const decoded = await new OfflineAudioContext(1, 1, rate).decodeAudioData(bytes).catch(() => {
        throw new Error(`${file.name} is no sound that this browser can decode; give a WAV file`);
    });
    const channels = Array.from({ length: decoded.numberOfChannels }, (_, i) => decoded.getChannelData(i));
    take({ name: file.name, samples: mixed(channels), rate, isFile: false });
    say("Your browser decoded this file, in its own way. Save the sound as WAV to get the same digest elsewhere.");
}

function openBuiltIn() {
    const { buffer, byteOffset, byteLength } = speech;
    take({ name: "speech.wav", ...readWav(buffer.slice(byteOffset, byteOffset + byteLength)), isFile: true });
}

// Playing

async function start() {
    const context = new AudioContext();
    const buffer = context.createBuffer(1, sound.samples.length, sound.rate);
    buffer.copyToChannel(sound.samples, 0);
    const source = new AudioBufferSourceNode(context, { buffer });
    source.connect(context.destination);
    source.start();
    playing = { context, start: context.currentTime };
    play.textContent = "Stop";
    redraw();
}

function stop() {
    playing?.context.close();
    playing = null;
    play.textContent = "Play";
}

// Microphone

async function record() {
    stop();
    if (!navigator.mediaDevices) throw new Error("This browser gives no microphone to a page that it was not served");
    const stream = await navigator.mediaDevices.getUserMedia({
        audio: { channelCount: 1, echoCancellation: false, noiseSuppression: false, autoGainControl: false },
    });
    const context = new AudioContext();
    // A page from a folder may load a script of this kind alone.
    await context.audioWorklet.addModule(`data:text/javascript,${encodeURIComponent(microphoneProcessor)}`);
    const preset = sorvo.presets[presetBox.value];
    const node = new AudioWorkletNode(context, "microphone", {
        numberOfOutputs: 0,
        processorOptions: { module, variant, rate: context.sampleRate, options: preset.options },
    });
    recording = { context, stream, blocks: [], sampleN: 0 };
    columns = new Columns({ ...preset.settings, compression: null });
    node.port.onmessage = ({ data: { samples, bands } }) => {
        if (!recording) return;
        recording.blocks.push(samples);
        recording.sampleN += samples.length;
        columns.append(bands);
        shownSeconds = Math.max(recording.sampleN / context.sampleRate, 0.5);
    };
    context.createMediaStreamSource(stream).connect(node);
    element("microphone").setAttribute("aria-pressed", "true");
    element("microphone").textContent = "Done";
    play.disabled = true;
    element("facts").textContent = "listening";
    element("digest").textContent = "················";
    requestAnimationFrame(redraw);
}

function endRecording() {
    const { context, stream, blocks, sampleN } = recording;
    recording = null;
    for (const track of stream.getTracks()) track.stop();
    context.close();
    element("microphone").setAttribute("aria-pressed", "false");
    element("microphone").textContent = "Speak";
    const samples = new Float32Array(sampleN);
    let at = 0;
    for (const block of blocks) {
        samples.set(block, at);
        at += block.length;
    }
    take({ name: "microphone.wav", samples, rate: context.sampleRate, isFile: false });
}

// Controls

element("file").addEventListener("change", attempt(async ({ target }) => {
    if (target.files.length > 0) await open(target.files[0]);
}));
element("built-in").addEventListener("click", attempt(openBuiltIn));
element("microphone").addEventListener("click", attempt(() => (recording ? endRecording() : record())));
play.addEventListener("click", attempt(async () => {
    if (!playing) return start();
    stop();
    redraw();
}));
presetBox.addEventListener("change", attempt(() => {
    stop();
    compute();
}));
element("save").addEventListener("click", () => {
    const link = document.createElement("a");
    link.href = URL.createObjectURL(wavOf(sound));
    link.download = sound.name.replace(/\.[^.]*$/, "") + ".wav";
    link.click();
});
for (const button of document.querySelectorAll("[data-copy]")) {
    button.addEventListener("click", attempt(async () => {
        await navigator.clipboard.writeText(element(button.dataset.copy).textContent);
        button.textContent = "Copied";
        setTimeout(() => { button.textContent = "Copy"; }, 1500);
    }));
}
for (const name of ["dragenter", "dragover", "dragleave", "drop"]) {
    document.addEventListener(name, (event) => {
        event.preventDefault();
        element("stage").classList.toggle("over", name === "dragenter" || name === "dragover");
    });
}
document.addEventListener("drop", attempt(async ({ dataTransfer }) => {
    if (dataTransfer.files.length > 0) await open(dataTransfer.files[0]);
}));
addEventListener("resize", () => redraw());
await attempt(openBuiltIn)();
