// The microphone, in the audio thread: blocks of 128 samples become mel bands as they come.
import { instantiateSorvoAudio } from "../../js/dist/index.js";

class Microphone extends AudioWorkletProcessor {
    constructor({ processorOptions: { module, variant, rate, options } }) {
        super();
        const sorvo = instantiateSorvoAudio(module, variant);
        this.resampler = rate === options.sr ? null : sorvo.resampleStream({ origSr: rate, targetSr: options.sr });
        this.mel = sorvo.melStream(options);
    }

    process([[block]]) {
        if (block) {
            const samples = block.slice();
            const bands = this.mel.push(this.resampler ? this.resampler.push(samples) : samples);
            this.port.postMessage({ samples, bands });
        }
        return true;
    }
}

registerProcessor("microphone", Microphone);
