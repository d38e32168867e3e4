// For Node.js, whose fetch() reads no files.
import { readFile } from "node:fs/promises";
import { loader } from "./load.js";

export * from "./exports.js";

/** Loads the library. */
export const loadSorvoAudio = loader((url) => readFile(url));
