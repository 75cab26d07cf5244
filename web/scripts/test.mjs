// Runs the tests: node scripts/test.mjs [NAME...].
import { spawnSync } from "node:child_process";
import { readdir } from "node:fs/promises";
import { join } from "node:path";
import { web, withBundles } from "./bundle.mjs";

const names = process.argv.slice(2);
const files = (await readdir(join(web, "tests"))).filter((file) => file.endsWith(".test.ts"));
const chosen = files.filter((file) => names.length === 0 || names.includes(file.replace(".test.ts", "")));
if (chosen.length === 0) throw new Error(`no such test; there are: ${files.join(", ")}`);

await withBundles(
    chosen.map((file) => join("tests", file)),
    (bundles) => {
        const words = ["--enable-source-maps", "--test", ...bundles];
        const { status } = spawnSync(process.execPath, words, { stdio: "inherit" });
        process.exitCode = status ?? 1;
    },
);
