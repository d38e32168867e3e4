// Makes one file of the page, with everything inside, so that it works from a folder, without a network:
// build/web/index.html. js/ must have been built.
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { fileURLToPath } from "node:url";

const require = createRequire(new URL("../../js/node_modules/vite/package.json", import.meta.url));
const { build } = require("esbuild");
const here = (path) => fileURLToPath(new URL(path, import.meta.url));

async function bundle(file) {
    const result = await build({
        entryPoints: [here(file)], bundle: true, minify: true, format: "esm", write: false, legalComments: "none",
        loader: { ".wasm": "binary", ".wav": "binary" },
        plugins: [{
            name: "text",
            setup({ onResolve, onLoad }) {
                onResolve({ filter: /\?text$/ }, ({ path }) => ({ path: here(path.slice(0, -5)), namespace: "text" }));
                onLoad({ filter: /.*/, namespace: "text" }, async ({ path }) => ({
                    contents: await bundle(path), loader: "text",
                }));
            },
        }],
    });
    return result.outputFiles[0].text;
}

const script = await bundle("main.js");
const page = readFileSync(here("index.html"), "utf8")
    .replace("/* style.css */", () => `\n${readFileSync(here("style.css"), "utf8")}`)
    .replace("/* main.js */", () => `\n${script}`);
mkdirSync(here("../../build/web"), { recursive: true });
writeFileSync(here("../../build/web/index.html"), page);
