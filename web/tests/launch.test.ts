// What a launch of the server brings: the demonstration's gallery, and what was chosen before.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { after, before } from "node:test";
import { setTimeout } from "node:timers/promises";
import type { Page } from "playwright-core";
import { expectAccessible, pageTest, Site, startBrowser, stopBrowser } from "./gallery.js";

const demo = new Site();
const site = new Site();

before(async () => {
    site.addSamples();
    await Promise.all([demo.start("--demo"), site.start(), startBrowser()]);
});

after(async () => {
    await stopBrowser();
    await Promise.all([demo.stop(), site.stop()]);
});

const seconds = (page: Page): Promise<number> =>
    page.locator("video").evaluate(({ currentTime }: HTMLVideoElement) => currentTime);

pageTest("the demonstration has pictures, highlights, captions, and videos that play", demo, async (page) => {
    await page.getByRole("heading", { name: "40 captures" }).waitFor();
    await page.getByRole("gridcell", { name: "Photo finish, Highlight" }).first().locator("img").waitFor();
    await expectAccessible(page);
    const ranges: string[] = [];
    page.on("response", (response) => {
        if (response.status() === 206) ranges.push(response.headers()["content-range"]!);
    });
    await page.getByRole("searchbox").fill("skyline");
    await page.getByRole("gridcell", { name: "Skyline run" }).press("Enter");
    const dialog = page.getByRole("dialog", { name: "Skyline run" });
    await dialog.getByRole("button", { name: "Details" }).click();
    await dialog.getByLabel("Details").getByText("MIND THE GAP").waitFor();
    await page.waitForFunction(() => document.querySelector("video")!.currentTime > 0.2);
    await dialog.getByRole("button", { name: "Pause" }).click();
    const { duration, size } = await page
        .locator("video")
        .evaluate(({ duration, videoWidth, videoHeight }: HTMLVideoElement) => ({
            duration,
            size: [videoWidth, videoHeight],
        }));
    assert.deepEqual(size, [640, 360]);
    assert.ok(Math.abs(duration - 4) < 0.1, String(duration));
    const position = dialog.getByRole("slider", { name: "Seek" });
    await position.press("Home");
    await page.waitForFunction(() => document.querySelector("video")!.currentTime === 0);
    // One frame on, of thirty a second.
    await dialog.getByRole("button", { name: "Play", exact: true }).press(".");
    await page.waitForFunction(() => document.querySelector("video")!.currentTime > 0);
    assert.ok((await seconds(page)) < 2 / 30 + 0.001, String(await seconds(page)));
    await position.press("End");
    await page.waitForFunction(() => document.querySelector("video")!.currentTime > 3.8);
    assert.match(ranges[0]!, /^bytes 0-\d+\/\d+$/);
});

pageTest("how somebody likes to see the gallery outlives a launch", site, async (page) => {
    await page.getByRole("gridcell").first().waitFor();
    await page.getByRole("combobox", { name: "Sort" }).selectOption("largest");
    await page.getByRole("combobox", { name: "Group" }).selectOption("By game");
    await page.getByRole("slider", { name: "Size" }).press("End");
    await page.getByRole("row", { name: "Nine Lanterns" }).waitFor();
    while (!readFileSync(site.preferences, "utf8").includes('"cellSize":420')) await setTimeout(20);
    await site.start();
    const next = await site.open();
    try {
        await next.getByRole("row", { name: "Nine Lanterns" }).waitFor();
        const chosen = (name: string) => next.getByRole("combobox", { name }).inputValue();
        assert.deepEqual([await chosen("Sort"), await chosen("Group")], ["largest", "game"]);
        assert.equal(await next.getByRole("slider", { name: "Size" }).inputValue(), "420");
        assert.equal(await next.evaluate(() => localStorage.getItem("preferences")), null);
    } finally {
        await next.context().close();
    }
});
