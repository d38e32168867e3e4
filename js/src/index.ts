// For browsers and workers.
import { SorvoAudioError } from "./errors.js";
import { loader } from "./load.js";

export * from "./exports.js";

/** Loads the library. */
export const loadSorvoAudio = loader(async (url) => {
    const response = await fetch(url);
    if (!response.ok) throw new SorvoAudioError(`${url} cannot be read: ${response.status} ${response.statusText}`);
    return response.arrayBuffer();
});
