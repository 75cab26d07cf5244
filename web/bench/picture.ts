// Takes the picture of the page that README.md shows, on the gallery of the demonstration.
import { writeFileSync } from "node:fs";
import type { Page } from "playwright-core";
import { startBrowser, stopBrowser, Site } from "../tests/gallery.js";
import { smallPng } from "./png.js";

const WIDTH = 1280;

const site = new Site(["--demo"]);

async function pixelsOf(page: Page, png: Buffer): Promise<Buffer> {
    const rgba = await page.evaluate(
        async (source) => {
            const image = new Image();
            image.src = source;
            await image.decode();
            const canvas = document.createElement("canvas");
            canvas.width = image.width;
            canvas.height = image.height;
            const context = canvas.getContext("2d")!;
            context.drawImage(image, 0, 0);
            return Array.from(context.getImageData(0, 0, image.width, image.height).data);
        },
        `data:image/png;base64,${png.toString("base64")}`,
    );
    return Buffer.from(rgba);
}

try {
    await Promise.all([site.start(), startBrowser()]);
    const page = await site.open({ viewport: { width: WIDTH, height: 800 }, colorScheme: "light" });
    // Smaller cells, so that several days are seen; then the focus goes elsewhere.
    const size = page.getByRole("slider", { name: "Size" });
    for (let step = 0; step < 3; ++step) await size.press("ArrowLeft");
    await size.evaluate((input: HTMLElement) => input.blur());
    // All that are seen, after they have appeared.
    await page.waitForFunction(() => {
        const cells = [...document.querySelectorAll("[role=gridcell]")];
        const fading = document.getAnimations().some(({ playState }) => playState === "running");
        return cells.length > 8 && cells.every((cell) => cell.querySelector("img")) && !fading;
    });
    const pixels = await pixelsOf(await site.blankPage(), await page.screenshot());
    writeFileSync("../docs/page.png", smallPng(pixels, WIDTH));
} finally {
    await stopBrowser();
    await site.stop();
}
