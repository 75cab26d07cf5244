// Builds the page: node scripts/build.mjs FOLDER. The folder is made anew, and holds what the server serves.
import { build } from "esbuild";
import { minify } from "terser";
import { mkdir, readFile, rm, writeFile } from "node:fs/promises";
import { basename, join } from "node:path";
import { fileURLToPath } from "node:url";

const source = fileURLToPath(new URL("../src/", import.meta.url));
const folder = process.argv[2];
if (!folder) throw new Error("usage: node scripts/build.mjs FOLDER");

const common = {
    bundle: true,
    minify: true,
    target: "chrome123",
    legalComments: "none",
    loader: { ".svg": "dataurl" },
    logLevel: "warning",
};

// What esbuild leaves can be shortened further, by some 3 %.
async function minified(script) {
    return (await minify(script, { module: true, ecma: 2022, compress: { passes: 3 } })).code;
}

await rm(folder, { recursive: true, force: true });
await mkdir(folder, { recursive: true });

// Names with a hash, so that browsers may keep them for ever.
const { metafile, outputFiles } = await build({
    ...common,
    entryPoints: { page: join(source, "shell/main.ts"), styles: join(source, "styles/page.css") },
    entryNames: "[name]-[hash]",
    chunkNames: "[name]-[hash]",
    splitting: true,
    outdir: join(folder, "assets"),
    format: "esm",
    metafile: true,
    write: false,
});
await mkdir(join(folder, "assets"));
for (const { path, text } of outputFiles) {
    // Only templates have lines that begin with spaces; browsers show one space for all of them.
    const short = text.replace(/\n {2,}/g, " ");
    await writeFile(path, path.endsWith(".js") ? await minified(short) : short);
}
const outputOf = (entry) =>
    basename(Object.entries(metafile.outputs).find(([, { entryPoint }]) => entryPoint?.endsWith(entry))[0]);

// The server, and pages that were opened before, know these by name.
await build({
    ...common,
    entryPoints: { cefquery: join(source, "shim/main.ts"), launch: join(source, "shim/launch.ts") },
    outdir: folder,
    format: "iife",
});

const index = await readFile(join(source, "shell/index.html"), "utf8");
await writeFile(
    join(folder, "index.html"),
    index
        .replace("{{page.js}}", outputOf("shell/main.ts"))
        .replace("{{page.css}}", outputOf("styles/page.css")),
);
