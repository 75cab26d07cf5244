// Runs the tests: node scripts/test.mjs [NAME...]. They are bundled first, since Node.js reads no TypeScript.
import { spawnSync } from "node:child_process";
import { mkdtemp, readdir, rm } from "node:fs/promises";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const web = fileURLToPath(new URL("../", import.meta.url));
const names = process.argv.slice(2);
const files = (await readdir(join(web, "tests"))).filter((file) => file.endsWith(".test.ts"));
const chosen = files.filter((file) => names.length === 0 || names.includes(file.replace(".test.ts", "")));
if (chosen.length === 0) throw new Error(`no such test; there are: ${files.join(", ")}`);

// Within the folder, so that bundles find the packages that are left out of them.
const folder = await mkdtemp(join(web, "node_modules/.tests-"));
try {
    await build({
        entryPoints: chosen.map((file) => join(web, "tests", file)),
        outdir: folder,
        outExtension: { ".js": ".mjs" },
        bundle: true,
        packages: "external",
        platform: "node",
        target: "node18",
        format: "esm",
        sourcemap: "inline",
        logLevel: "warning",
    });
    const bundles = chosen.map((file) => join(folder, file.replace(/ts$/, "mjs")));
    const { status } = spawnSync(process.execPath, ["--enable-source-maps", "--test", ...bundles], {
        stdio: "inherit",
    });
    process.exitCode = status ?? 1;
} finally {
    await rm(folder, { recursive: true });
}
