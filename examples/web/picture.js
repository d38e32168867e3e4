// Draws mel bands in decibels, with axes and a colour bar.

const rangeDb = 80;
const colours = ["000004", "140e36", "3b0f70", "641a80", "8c2981", "b73779", "de4968", "f7705c", "fe9f6d", "fecf92", "fcfdbf"]
    .map((hex) => [0, 2, 4].map((at) => parseInt(hex.slice(at, at + 2), 16)));

/** The colour of a level from 0, dark, to 1, light. */
function colourOf(level) {
    const place = Math.min(Math.max(level, 0), 1) * (colours.length - 1);
    const lower = Math.min(Math.floor(place), colours.length - 2);
    return colours[lower].map((value, i) => value + (colours[lower + 1][i] - value) * (place - lower));
}

const palette = Array.from({ length: 256 }, (_, i) => colourOf(i / 255));

/** Decibels of features, of which some are logarithms already. */
export function decibelsOf({ power, compression }) {
    if (compression === "whisper") return (value) => 10 * (4 * value - 4);
    if (compression === "log") return (value) => 20 / power * value / Math.LN10;
    return (value) => 20 / power * Math.log10(Math.max(value, 1e-10));
}

const toMel = (hz, htk) => {
    if (htk) return 2595 * Math.log10(1 + hz / 700);
    return hz < 1000 ? hz * 3 / 200 : 15 + 27 * Math.log(hz / 1000) / Math.log(6.4);
};

/** Columns of bands, as an image; more may come. */
export class Columns {
    constructor(settings) {
        this.settings = settings;
        this.toDb = decibelsOf(settings);
        this.clear();
    }

    clear() {
        this.columnN = 0;
        this.topDb = -Infinity;
        this.levels = new Float32Array(this.settings.nMels * 256);
        this.image = null;
    }

    /** Bands [nMels, frames]. */
    append({ data, shape: [rowN, columnN] }) {
        if (columnN === 0) return;
        if (rowN * (this.columnN + columnN) > this.levels.length) {
            const levels = new Float32Array(2 * rowN * (this.columnN + columnN));
            levels.set(this.levels);
            this.levels = levels;
        }
        for (let t = 0; t < columnN; ++t) {
            for (let row = 0; row < rowN; ++row) {
                const level = this.toDb(data[row * columnN + t]);
                this.levels[(this.columnN + t) * rowN + row] = level;
                if (level > this.topDb) this.topDb = level;
            }
        }
        this.columnN += columnN;
        this.image = null;
    }

    /** One pixel a band and frame, high bands above. */
    canvas() {
        if (this.image) return this.image;
        const rowN = this.settings.nMels;
        this.image = new OffscreenCanvas(Math.max(this.columnN, 1), rowN);
        const context = this.image.getContext("2d");
        const pixels = context.createImageData(Math.max(this.columnN, 1), rowN);
        for (let t = 0; t < this.columnN; ++t) {
            for (let row = 0; row < rowN; ++row) {
                const level = 1 + (this.levels[t * rowN + row] - this.topDb) / rangeDb;
                const colour = palette[Math.round(255 * Math.min(Math.max(level, 0), 1)) || 0];
                const at = 4 * ((rowN - 1 - row) * pixels.width + t);
                [pixels.data[at], pixels.data[at + 1], pixels.data[at + 2], pixels.data[at + 3]] = [...colour, 255];
            }
        }
        context.putImageData(pixels, 0, 0);
        return this.image;
    }
}

/** Draws the columns up to `heardSeconds`, those behind it faintly, and the head where they meet. */
export function draw(canvas, columns, seconds, heardSeconds) {
    const ratio = devicePixelRatio;
    const [width, height] = [canvas.clientWidth, canvas.clientHeight];
    if (canvas.width !== Math.round(width * ratio)) canvas.width = Math.round(width * ratio);
    if (canvas.height !== Math.round(height * ratio)) canvas.height = Math.round(height * ratio);
    const context = canvas.getContext("2d");
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, width, height);
    const [left, top, right, bottom] = [52, 14, 74, 34];
    const plot = { x: left, y: top, width: width - left - right, height: height - top - bottom };
    const style = getComputedStyle(canvas);
    const [ink, line] = [style.getPropertyValue("--quiet"), style.getPropertyValue("--line")];
    context.font = `12px ${style.fontFamily}`;

    context.fillStyle = "#000004";
    context.fillRect(plot.x, plot.y, plot.width, plot.height);
    const heard = heardSeconds === null ? 1 : Math.min(heardSeconds / seconds, 1);
    if (columns.columnN > 0) {
        const image = columns.canvas();
        context.imageSmoothingEnabled = image.width > plot.width * ratio;
        context.globalAlpha = 0.13;
        context.drawImage(image, plot.x, plot.y, plot.width, plot.height);
        context.globalAlpha = 1;
        context.save();
        context.beginPath();
        context.rect(plot.x, plot.y, plot.width * heard, plot.height);
        context.clip();
        context.drawImage(image, plot.x, plot.y, plot.width, plot.height);
        context.restore();
    }
    if (heard < 1) {
        context.fillStyle = "#ffffff";
        context.fillRect(plot.x + plot.width * heard - 1, plot.y, 2, plot.height);
    }
    drawTimes(context, plot, seconds, ink, line);
    drawFrequencies(context, plot, columns.settings, ink, line);
    drawBar(context, { x: plot.x + plot.width + 16, y: plot.y, width: 12, height: plot.height }, columns.topDb, ink);
}

function drawTimes(context, plot, seconds, ink, line) {
    const step = [0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 30, 60, 120, 300, 600].find((size) => seconds / size <= plot.width / 70) ?? 1200;
    context.textAlign = "center";
    context.textBaseline = "top";
    for (let i = 0; i * step <= seconds + 1e-9; ++i) {
        const x = plot.x + plot.width * i * step / seconds;
        context.fillStyle = line;
        context.fillRect(x, plot.y + plot.height, 1, 5);
        context.fillStyle = ink;
        context.fillText(`${Number((i * step).toFixed(1))} s`, x, plot.y + plot.height + 10);
    }
}

function drawFrequencies(context, plot, { nMels, fmax, sr, htk }, ink, line) {
    const highest = toMel(fmax ?? sr / 2, htk);
    context.textAlign = "right";
    context.textBaseline = "middle";
    let lastY = Infinity;
    for (const hz of [100, 250, 500, 1000, 2000, 3000, 4000, 6000, 8000, 11000, 16000, 22000]) {
        // Band m has its centre at (m + 1) / (nMels + 1) of the scale, and is a row of the picture.
        const band = toMel(hz, htk) / highest * (nMels + 1) - 1;
        const y = plot.y + plot.height * (1 - (band + 0.5) / nMels);
        if (y < plot.y || lastY - y < 18) continue;
        lastY = y;
        context.fillStyle = line;
        context.fillRect(plot.x - 5, y, 5, 1);
        context.fillStyle = ink;
        context.fillText(hz < 1000 ? `${hz} Hz` : `${hz / 1000} kHz`, plot.x - 8, y);
    }
}

function drawBar(context, bar, topDb, ink) {
    for (let i = 0; i < bar.height; ++i) {
        context.fillStyle = `rgb(${colourOf(1 - i / bar.height).map(Math.round).join(" ")})`;
        context.fillRect(bar.x, bar.y + i, bar.width, 1.5);
    }
    context.fillStyle = ink;
    context.textAlign = "left";
    context.textBaseline = "middle";
    for (let db = 0; db <= rangeDb; db += 20) {
        const y = bar.y + Math.min(Math.max(bar.height * db / rangeDb, 6), bar.height - 6);
        context.fillText(db === 0 ? "0 dB" : `−${db}`, bar.x + bar.width + 6, y);
    }
}
