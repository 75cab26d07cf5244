// Builds the page: node scripts/build.mjs FOLDER. The folder is made anew, and holds what the server serves.
import { build } from "esbuild";
import { createHash } from "node:crypto";
import { mkdir, readFile, rm, writeFile } from "node:fs/promises";
import { extname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { minify } from "terser";

const source = fileURLToPath(new URL("../src/", import.meta.url));
const folder = process.argv[2];
if (!folder) throw new Error("usage: node scripts/build.mjs FOLDER");

const LANGUAGES = ["en", "de"];
const common = {
    bundle: true,
    minify: true,
    target: "chrome123",
    legalComments: "none",
    loader: { ".svg": "dataurl" },
    logLevel: "warning",
    write: false,
};

// The scripts are written for the English texts; those of another language take their place.
const textsOf = (language) => ({
    name: "texts",
    setup: ({ onLoad }) =>
        onLoad({ filter: /strings.en\.ts$/ }, async () => ({
            contents: await readFile(join(source, `strings/${language}.ts`), "utf8"),
            loader: "ts",
        })),
});

async function shortened({ path, text }, format) {
    // Only templates have lines that begin with spaces. Between two elements they mean nothing, elsewhere one space.
    const short = text.replace(/>\n {2,}</g, "><").replace(/\n {2,}/g, " ");
    if (!path.endsWith(".js")) return short;
    // What esbuild leaves can be made shorter by some 3 %.
    return (await minify(short, { module: format === "esm", ecma: 2022, compress: { passes: 3 } })).code;
}

/** Returns what was made of a file, as text. */
async function built(file, options) {
    const { outputFiles } = await build({
        ...common,
        ...options,
        entryPoints: [join(source, file)],
        outdir: folder,
    });
    return shortened(outputFiles[0], options.format);
}

/** Writes an asset, whose name has a hash so that browsers may keep it for ever, and returns its address. */
async function writeAsset(name, file, options = {}) {
    const text = await built(file, options);
    const hash = createHash("sha256").update(text).digest("hex").slice(0, 8);
    const address = `assets/${name}-${hash}${extname(file).replace("ts", "js")}`;
    await writeFile(join(folder, address), text);
    return `./${address}`;
}

await rm(folder, { recursive: true, force: true });
await mkdir(join(folder, "assets"), { recursive: true });
const pages = {};
for (const language of LANGUAGES)
    pages[language] = await writeAsset(`page-${language}`, "shell/main.ts", {
        plugins: [textsOf(language)],
        format: "esm",
    });
const styles = await writeAsset("styles", "styles/page.css");

// The server, and pages that were opened before, know these by name.
const define = { PAGES: JSON.stringify(pages) };
await writeFile(join(folder, "page.js"), await built("shell/language.ts", { format: "esm", define }));
await writeFile(join(folder, "cefquery.js"), await built("shim/main.ts", { format: "iife" }));
await writeFile(join(folder, "launch.js"), await built("shim/launch.ts", { format: "iife" }));

const index = await readFile(join(source, "shell/index.html"), "utf8");
await writeFile(join(folder, "index.html"), index.replace("{{styles}}", styles));
