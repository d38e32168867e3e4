// Makes dist/ of src/, of the table of presets, and of the two modules that the presets wasm and wasm-plain build.
import { execFileSync } from "node:child_process";
import { copyFileSync, mkdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { fileURLToPath } from "node:url";

const here = (path) => fileURLToPath(new URL(`../${path}`, import.meta.url));
const camel = (key) => key.replace(/_(.)/g, (_, letter) => letter.toUpperCase());

// The presets of the Python package and the command line; frames reach as far there as here.
const rows = JSON.parse(readFileSync(here("../python/sorvo_audio/presets.json"), "utf8"));
const table = rows.map((row) => Object.fromEntries(Object.entries(row).map(([key, value]) => [camel(key), value])));
writeFileSync(here("src/presets_table.ts"),
    `// Made from python/sorvo_audio/presets.json.\nexport const presetTable = ${JSON.stringify(table, null, 4)} as const;\n`);

rmSync(here("dist"), { recursive: true, force: true });
mkdirSync(here("dist"));
execFileSync(process.execPath, [here("node_modules/typescript/bin/tsc"), "--project", here("tsconfig.json")],
    { stdio: "inherit" });
for (const [preset, variant] of [["wasm", "simd128"], ["wasm-plain", "plain"]]) {
    const file = `sorvo_audio_${variant}.wasm`;
    copyFileSync(here(`../build/${preset}/js/${file}`), here(`dist/${file}`));
}
copyFileSync(here("../LICENSE"), here("LICENSE"));
