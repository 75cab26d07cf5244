// Bundles TypeScript for Node.js, which reads none, and runs something on the result.
import { mkdtemp, rm } from "node:fs/promises";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

export const web = fileURLToPath(new URL("../", import.meta.url));

/** Calls `run` with the bundles of these files, which are gone afterwards. */
export async function withBundles(files, run) {
    // Within the folder, so that bundles find the packages that are left out of them.
    const folder = await mkdtemp(join(web, "node_modules/.bundles-"));
    try {
        const { metafile } = await build({
            entryPoints: files.map((file) => join(web, file)),
            outdir: folder,
            outExtension: { ".js": ".mjs" },
            entryNames: "[name]",
            bundle: true,
            packages: "external",
            platform: "node",
            target: "node18",
            // Browsers have it; Node.js 18 does not.
            banner: { js: 'import { webcrypto } from "node:crypto"; globalThis.crypto ??= webcrypto;' },
            format: "esm",
            sourcemap: "inline",
            metafile: true,
            logLevel: "warning",
            absWorkingDir: web,
        });
        await run(Object.keys(metafile.outputs).map((file) => join(web, file)));
    } finally {
        await rm(folder, { recursive: true });
    }
}
