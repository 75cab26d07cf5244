// One capture over the whole page, reached and left as people do.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import type { Locator, Page } from "playwright-core";
import { fullScale, FIT, pan, zoomTo } from "../src/model/zoom.js";
import { expectAccessible, pageTest, Site, startBrowser, stopBrowser } from "./gallery.js";

const site = new Site();

before(async () => {
    site.addSamples();
    await Promise.all([site.start(), startBrowser()]);
});

after(async () => {
    await stopBrowser();
    await site.stop();
});

const cell = (page: Page, title: string): Locator =>
    page.getByRole("gridcell", { name: `${title}, ` }).first();
const dialog = (page: Page, title: string): Locator => page.getByRole("dialog", { name: title, exact: true });
const closedOn = (page: Page, title: string): Promise<unknown> =>
    page.waitForFunction((name) => {
        const { activeElement: active } = document;
        return !document.querySelector("dialog[open]") && active?.ariaLabel?.startsWith(`${name}, `);
    }, title);

pageTest(
    "a capture opens over the grid, and the focus comes back to the one that was seen last",
    site,
    async (page) => {
        await cell(page, "Temple").dblclick();
        await dialog(page, "Temple").locator("image-stage img").waitFor();
        await expectAccessible(page);
        await dialog(page, "Temple").getByText("9 of 15").waitFor();
        await page.keyboard.press("ArrowRight");
        await dialog(page, "Bridge").getByRole("button", { name: "Previous" }).click();
        await page.keyboard.press("ArrowRight");
        await page.keyboard.press("Escape");
        await closedOn(page, "Bridge");
        await page.keyboard.press("Enter");
        await dialog(page, "Bridge").getByRole("button", { name: "Details" }).click();
        await dialog(page, "Bridge").getByText(`${site.gallery}/Nine Lanterns/Bridge.png`).waitFor();
        await expectAccessible(page);
        await page.reload();
        await dialog(page, "Bridge").waitFor();
        await page.goBack();
        await closedOn(page, "Bridge");
        // The newest has nothing before it.
        await page.keyboard.press("Control+Home");
        await page.keyboard.press("Enter");
        await page.getByRole("dialog").getByRole("button", { name: "Next" }).waitFor();
        assert.equal(await page.getByRole("dialog").getByRole("button", { name: "Previous" }).count(), 0);
    },
);

// The samples' codec is none of the browser's, so it records a video that it can play.
function recorded(): Promise<number[]> {
    const canvas = document.createElement("canvas");
    const context = canvas.getContext("2d")!;
    const recorder = new MediaRecorder(canvas.captureStream(30), { mimeType: "video/mp4" });
    const start = performance.now();
    const draw = (): void => {
        context.fillRect(0, 0, Math.random() * 300, 150);
        if (performance.now() - start < 2000) requestAnimationFrame(draw);
        else recorder.stop();
    };
    return new Promise((resolve) => {
        recorder.ondataavailable = async ({ data }) => resolve([...new Uint8Array(await data.arrayBuffer())]);
        recorder.start();
        draw();
    });
}

pageTest("a video plays with the page's own controls; what cannot be played says so", site, async (page) => {
    await cell(page, "Second lap").dblclick();
    await dialog(page, "Second lap").getByText("The browser cannot show this file").waitFor();
    await dialog(page, "Second lap").getByRole("button", { name: "Open in player" }).waitFor();
    await expectAccessible(page);
    await page.keyboard.press("Escape");
    const body = Buffer.from(await page.evaluate(recorded));
    await page.route("**/media/**", (route) => {
        const first = Number(/\d+/.exec(route.request().headers()["range"] ?? "0"));
        const headers = { "content-range": `bytes ${first}-${body.length - 1}/${body.length}` };
        return route.fulfill({ status: 206, headers, body: body.subarray(first), contentType: "video/mp4" });
    });
    await cell(page, "Second lap").press("Enter");
    const video = page.locator("video");
    const state = () =>
        video.evaluate(({ paused, muted, loop, playbackRate }: HTMLVideoElement) => ({
            paused,
            muted,
            loop,
            playbackRate,
        }));
    await page.getByRole("button", { name: "Pause" }).waitFor();
    await page.keyboard.press("k");
    await page.getByRole("button", { name: "Play", exact: true }).waitFor();
    await page.getByRole("slider", { name: "Position" }).press("Home");
    assert.equal(await video.evaluate(({ currentTime }: HTMLVideoElement) => currentTime), 0);
    await page.getByRole("combobox", { name: "Speed" }).selectOption("2×");
    await page.getByRole("button", { name: "Loop" }).click();
    await page.keyboard.press("m");
    assert.deepEqual(await state(), { paused: true, muted: true, loop: true, playbackRate: 2 });
    await page.keyboard.press(".");
    await page.waitForFunction(() => document.querySelector("video")!.currentTime > 0);
    await expectAccessible(page);
});

test("a picture is magnified around the pointer, and never leaves its frame", () => {
    const picture = { width: 1600, height: 900 };
    const frame = { width: 800, height: 600 };
    assert.equal(fullScale(picture, frame), 2);
    const zoomed = zoomTo(FIT, 3, { x: 200, y: 0 }, picture, frame);
    // What was 200 right of the middle still is.
    assert.deepEqual(zoomed, { scale: 3, x: -400, y: 0 });
    assert.deepEqual(pan(zoomed, -9999, 9999, picture, frame), { scale: 3, x: -800, y: 375 });
    assert.deepEqual(pan(FIT, 50, 50, picture, frame), FIT);
    assert.deepEqual(zoomTo(zoomed, 0.1, { x: 0, y: 0 }, picture, frame), FIT);
    assert.equal(zoomTo(FIT, 1e9, { x: 0, y: 0 }, picture, frame).scale, 32);
});
