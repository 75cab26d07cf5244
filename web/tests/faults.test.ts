// What fails around the page, in a browser: the server, the drive, a cut; and pages that close in the middle of it.
import assert from "node:assert/strict";
import { readdirSync, readFileSync, renameSync, rmSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import type { Page } from "playwright-core";
import { button, cell, expectAccessible, pageTest, request, serving, Site } from "./gallery.js";

const site = new Site();
const full = new Site();
const LAPS = 90;

serving([site, full], () => {
    site.addSamples();
    for (let lap = 0; lap < LAPS; ++lap) site.add(`Laps/Lap ${lap}.png`, lap);
    full.addSamples();
    for (const one of [site, full]) one.addVideo("Races/Final.mp4", 500, 300, 30);
    full.largestFile = 20;
});

const races = (one: Site): string[] => readdirSync(join(one.gallery, "Races")).sort();

/** Chooses the end of the video as the clip. */
async function chooseClip(page: Page): Promise<void> {
    await cell(page, "Final").dblclick();
    await page.keyboard.press("t");
    const start = page.getByRole("slider", { name: "Start", exact: true });
    await start.waitFor();
    await start.press("PageUp");
}

pageTest("a clip that cannot be written says why, and leaves everything as it was", full, async (page) => {
    const original = readFileSync(join(full.gallery, "Races/Final.mp4"));
    await chooseClip(page);
    for (const names of [["Save as copy"], ["Replace original", "Replace it now"]]) {
        for (const name of names) await button(page, name).click();
        await page.getByRole("alert").getByText("That did not work").waitFor();
        assert.deepEqual(races(full), ["Final.mp4"]);
    }
    await expectAccessible(page);
    assert.deepEqual(readFileSync(join(full.gallery, "Races/Final.mp4")), original);
    // What was chosen is still there, to be tried again.
    assert.equal(
        await page.getByRole("slider", { name: "Start", exact: true }).getAttribute("aria-valuetext"),
        "0:00.33",
    );
});

pageTest("a cut goes on when its page is closed", site, async (page) => {
    const asked = new Promise<void>((resolve) => {
        page.on("websocket", (socket) =>
            socket.on("framesent", ({ payload }) => {
                if (String(payload).includes('"Trim"')) resolve();
            }),
        );
    });
    await page.reload();
    await chooseClip(page);
    await button(page, "Save as copy").click();
    await asked;
    // The server has read what came before this.
    await request(page, "GetSettings", {});
    await page.close();
    const next = await site.open();
    await cell(next, "Final (clip)").waitFor();
    assert.deepEqual(races(site), ["Final (clip).mp4", "Final.mp4"]);
    await next.context().close();
});

pageTest("captures come back with the drive that they are on", site, async (page) => {
    await cell(page, "Lap 89").waitFor();
    const drive = join(site.home, "Videos");
    const away = join(site.folder, "away");
    renameSync(drive, away);
    // Nobody can make the folder anew at its place.
    writeFileSync(drive, "");
    await page.getByRole("heading", { name: "The gallery's folder is not there" }).waitFor();
    await page.getByText(site.gallery).waitFor();
    await expectAccessible(page);
    rmSync(drive);
    renameSync(away, drive);
    // The gallery looks for the drive after 5 s, and later after 30 s.
    await cell(page, "Lap 89").locator("img").waitFor({ timeout: 45_000 });
    await page.getByRole("heading", { name: /^Gallery 1\d\d captures$/ }).waitFor();
});

pageTest("a page outlives its server, and goes on in its place after the next launch", site, async (page) => {
    await page.getByRole("searchbox").fill("lap");
    await page.getByRole("grid").evaluate((grid) => void (grid.scrollTop = 600));
    const place = cell(page, "Lap 60");
    await place.waitFor();
    const top = (await place.boundingBox())!.y;
    await site.end("SIGKILL");
    await page.getByText("The connection was lost").waitFor();
    await expectAccessible(page);
    // A row of them, which moves all that come after it.
    for (let number = 1000; number < 1007; ++number) site.add(`Laps/Lap ${number}.png`, number);
    const used = site.launch;
    await site.start();
    // The token of before is of no use any more. The next launch in this browser brings the new one to all tabs.
    await page.getByText("an earlier start of the server").waitFor();
    const next = await page.context().newPage();
    await next.goto(used);
    assert.equal(await next.getByRole("main").count(), 0);
    await next.goto(site.launch);
    await cell(next, "Lap 1000").waitFor();
    await page.bringToFront();
    await page.getByText("an earlier start of the server").waitFor({ state: "detached" });
    await page.getByRole("heading", { name: `${LAPS + 8} captures` }).waitFor();
    assert.equal((await place.boundingBox())!.y, top);
});
