// What a launch of the server brings: the demonstration's gallery, and what was chosen before.
import assert from "node:assert/strict";
import { setTimeout } from "node:timers/promises";
import { expectAccessible, pageTest, serving, Site } from "./gallery.js";

const demo = new Site(["--demo"]);
const site = new Site();

serving([demo, site], () => site.addSamples());

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
    const made = await page.evaluate(() => {
        const { duration, videoWidth, videoHeight } = document.querySelector("video")!;
        return [duration.toFixed(1), videoWidth, videoHeight];
    });
    assert.deepEqual(made, ["4.0", 640, 360]);
    assert.match(ranges[0]!, /^bytes 0-\d+\/\d+$/);
});

pageTest("how somebody likes to see the gallery outlives a launch", site, async (page) => {
    await page.getByRole("gridcell").first().waitFor();
    await page.getByRole("combobox", { name: "Sort" }).selectOption("largest");
    await page.getByRole("combobox", { name: "Group" }).selectOption("By game");
    await page.getByRole("slider", { name: "Size" }).press("End");
    await page.getByRole("row", { name: "Nine Lanterns" }).waitFor();
    while (!site.writtenPreferences().includes('"cellSize":420')) await setTimeout(20);
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
