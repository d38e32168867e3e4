// Sound files to samples, as sorvo-audio reads them: one channel of floats of full scale 1.

/** A WAV file, or null where the file is none, or of a kind that is left to the browser. */
export function readWav(buffer) {
    const view = new DataView(buffer);
    const text = (at) => String.fromCharCode(...new Uint8Array(buffer, at, 4));
    if (view.byteLength < 12 || text(0) !== "RIFF" || text(8) !== "WAVE") return null;
    let format = null;
    for (let at = 12; at + 8 <= view.byteLength;) {
        const [name, length] = [text(at), view.getUint32(at + 4, true)];
        at += 8;
        if (name === "fmt " && at + 16 <= view.byteLength) {
            const tag = view.getUint16(at, true);
            format = {
                tag: tag === 0xfffe && length >= 26 ? view.getUint16(at + 24, true) : tag,
                channelN: view.getUint16(at + 2, true),
                rate: view.getUint32(at + 4, true),
                bits: view.getUint16(at + 14, true),
            };
        }
        if (name === "data") {
            const read = format && samplesOf(view, format);
            if (!read || format.channelN === 0) return null;
            const frameBytes = format.channelN * format.bits / 8;
            const frameN = Math.floor(Math.min(length, view.byteLength - at) / frameBytes);
            const channels = Array.from({ length: format.channelN }, (_, channel) =>
                Float32Array.from({ length: frameN }, (_, i) => read(at + i * frameBytes + channel * format.bits / 8)));
            return { samples: mixed(channels), rate: format.rate };
        }
        at += length + length % 2;
    }
    return null;
}

function samplesOf(view, { tag, bits }) {
    const readers = {
        "1/8": (at) => (view.getUint8(at) - 128) / 2 ** 7,
        "1/16": (at) => view.getInt16(at, true) / 2 ** 15,
        "1/24": (at) => (view.getInt8(at + 2) * 2 ** 16 + view.getUint16(at, true)) / 2 ** 23,
        "1/32": (at) => view.getInt32(at, true) / 2 ** 31,
        "3/32": (at) => view.getFloat32(at, true),
        "3/64": (at) => view.getFloat64(at, true),
    };
    return readers[`${tag}/${bits}`];
}

/** The mean of all channels. */
export function mixed(channels) {
    if (channels.length === 1) return channels[0];
    return channels[0].map((_, i) => channels.reduce((sum, channel) => sum + channel[i], 0) / channels.length);
}

/** A WAV file of floats, which holds every sample as it is. */
export function wavOf({ samples, rate }) {
    const bytes = new ArrayBuffer(58 + 4 * samples.length);
    const view = new DataView(bytes);
    const words = [["RIFF", 0], ["WAVE", 8], ["fmt ", 12], ["fact", 38], ["data", 50]];
    for (const [word, at] of words) [...word].forEach((letter, i) => view.setUint8(at + i, letter.charCodeAt(0)));
    const numbers = [[4, 50 + 4 * samples.length], [16, 18], [24, rate], [28, 4 * rate], [42, 4], [46, samples.length],
        [54, 4 * samples.length]];
    for (const [at, value] of numbers) view.setUint32(at, value, true);
    for (const [at, value] of [[20, 3], [22, 1], [32, 4], [34, 32]]) view.setUint16(at, value, true);
    new Float32Array(samples).forEach((value, i) => view.setFloat32(58 + 4 * i, value, true));
    return new Blob([bytes], { type: "audio/wav" });
}
