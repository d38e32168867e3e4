export { SorvoArgumentError, SorvoAudioError, SorvoMemoryError } from "./errors.js";
export type { BandOptions, FrameOptions, SpectrumNorm } from "./framing.js";
export { instantiateSorvoAudio, type LoadOptions, supportedVariant, type Variant } from "./load.js";
export { type Floats, WasmFloats } from "./memory.js";
export { constants, type Native } from "./native.js";
export { Preset, type PresetName, type PresetSettings } from "./presets.js";
export type {
    Coefficients, ComplexMatrix, IstftOptions, Matrix, MelOptions, PadType, PowerToDbOptions, ResampleOptions, SorvoAudio,
    StftOptions, Tail,
} from "./sorvo_audio.js";
export { MelStream, ResampleStream } from "./streams.js";
