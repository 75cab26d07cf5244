// Takes the picture of the page; see bench/picture.ts.
import { pathToFileURL } from "node:url";
import { withBundles } from "./bundle.mjs";

// The released product, unless it is said otherwise.
process.env.GALLERY_HOST ??= "../build/release/OvirastreamX.app/Contents/MacOS/gallery-host";
await withBundles(["bench/picture.ts"], ([bundle]) => import(pathToFileURL(bundle)));
