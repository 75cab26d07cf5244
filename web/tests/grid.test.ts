// The grid in a browser, on a gallery of real captures.
import assert from "node:assert/strict";
import { rmSync } from "node:fs";
import type { Locator, Page, Request } from "playwright-core";
import { cell, expectAccessible, focusOn, pageTest, serving, Site } from "./gallery.js";

const site = new Site();
const empty = new Site();

// Enough that most are out of view; with the samples' own in three games.
const LAPS = 400;
const SAMPLES = 15;
// Captures in a row: as many more move all that come after them.
const ROW = 7;

serving([site, empty], () => {
    site.addSamples();
    for (let lap = 0; lap < LAPS; ++lap) site.add(`Laps/Lap ${lap}.png`, lap);
});

const grid = (page: Page): Locator => page.getByRole("grid", { name: "Captures" });
const cells = (page: Page): Locator => page.getByRole("gridcell");
const loaded = (page: Page, count: number): Promise<void> =>
    page
        .getByRole("heading", { name: `Gallery ${count} capture${count === 1 ? "" : "s"}`, exact: true })
        .waitFor();
const scrollTo = (page: Page, top: number): Promise<void> =>
    grid(page).evaluate((scroller, to) => void (scroller.scrollTop = to), top);

/** The first cell that is seen whole. */
const firstSeen = (page: Page): Promise<string> =>
    grid(page).evaluate((scroller) => {
        const top = scroller.getBoundingClientRect().top;
        const found = [...scroller.querySelectorAll("[role=gridcell]")];
        return found.find((one) => one.getBoundingClientRect().top >= top)!.ariaLabel!.split(",")[0]!;
    });
const topOf = async (page: Page, title: string): Promise<number> =>
    (await cell(page, title).boundingBox())!.y;

pageTest("all captures are shown, newest first, and can be found", site, async (page) => {
    await loaded(page, LAPS + SAMPLES);
    assert.match(
        (await cells(page).first().getAttribute("aria-label"))!,
        /^Lap 399, Image, 15 March 2026 at /,
    );
    await page.locator("[role=gridcell] img").nth(20).waitFor();
    await expectAccessible(page);
    await page.emulateMedia({ colorScheme: "dark", reducedMotion: "reduce" });
    await page.setViewportSize({ width: 360, height: 700 });
    await cells(page).first().click();
    await page.getByRole("toolbar", { name: "Selection" }).getByText("1 selected").waitFor();
    await expectAccessible(page);
    assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), 360);
    await page.getByRole("combobox", { name: "Group" }).selectOption("By game");
    await page.getByRole("combobox", { name: "Sort" }).selectOption("Oldest first");
    await page.getByRole("searchbox", { name: "Search captures" }).fill("PHOTO");
    await loaded(page, 2);
    const names = await cells(page).evaluateAll((found) =>
        found.map((one) => one.ariaLabel!.split(",", 2).join()),
    );
    assert.deepEqual(names, ["Photo finish, Highlight", "Photo finish, Highlight"]);
    await page.getByRole("combobox", { name: "Kind" }).selectOption("Video");
    await loaded(page, 1);
    await page.getByRole("combobox", { name: "Game" }).selectOption("Laps");
    await page.getByRole("heading", { name: "Nothing matches" }).waitFor();
    await expectAccessible(page);
    await page.getByRole("button", { name: "Show all captures" }).click();
    await loaded(page, LAPS + SAMPLES);
});

pageTest("the grid holds few elements and asks for few thumbnails", site, async (page) => {
    // Without those that began before.
    const underWay = new Set<Request>();
    let most = 0;
    page.on("request", (request) => {
        if (request.url().includes("/thumb/")) most = Math.max(most, underWay.add(request).size);
    });
    for (const end of ["requestfinished", "requestfailed"] as const)
        page.on(end as "requestfinished", (request) => void underWay.delete(request));
    await loaded(page, LAPS + SAMPLES);
    const counts = await grid(page).evaluate(async (scroller) => {
        let elements = 0;
        let images = 0;
        for (let top = 0; top < scroller.scrollHeight; top += 150) {
            scroller.scrollTop = top;
            await new Promise(requestAnimationFrame);
            elements = Math.max(elements, scroller.querySelectorAll("*").length);
            images = Math.max(images, scroller.querySelectorAll("img").length);
        }
        return { elements, images };
    });
    assert.ok(counts.elements <= 250 && counts.images <= 64, JSON.stringify(counts));
    // The last row is seen, and has its pictures.
    await cell(page, "Start line").last().locator("img").waitFor();
    assert.ok(most > 0 && most <= 4, `${most} requests at a time`);
    await page.getByRole("slider", { name: "Jump to" }).focus();
    await page.keyboard.press("Home");
    await cell(page, "Lap 399").waitFor();
});

pageTest("what one looks at stays where it is while captures come and go", site, async (page) => {
    await loaded(page, LAPS + SAMPLES);
    await scrollTo(page, 3000);
    await cell(page, "Lap 270").waitFor();
    const seen = await firstSeen(page);
    const top = await topOf(page, seen);
    const added = [...Array(ROW).keys()].map((place) => site.add(`Laps/New ${place}.png`, LAPS + 1 + place));
    const earlier = site.add("Laps/Earlier.png", LAPS - 20);
    await page.getByRole("button", { name: `${ROW + 1} new` }).waitFor();
    assert.equal(await topOf(page, seen), top);
    await expectAccessible(page);
    await page.getByRole("button", { name: "new" }).click();
    await focusOn(page, "New 6");
    await cell(page, "Earlier").waitFor();
    await page.getByRole("button", { name: "new" }).waitFor({ state: "detached" });
    // The focus goes to what takes the place of a capture that goes.
    for (const path of added) rmSync(path);
    await loaded(page, LAPS + SAMPLES + 1);
    await focusOn(page, "Lap 399");
    rmSync(earlier);
    await loaded(page, LAPS + SAMPLES);
});

pageTest("the keyboard reaches and selects every capture", site, async (page) => {
    await loaded(page, LAPS + SAMPLES);
    const press = async (keys: string, to: string): Promise<void> => {
        await page.keyboard.press(keys);
        await focusOn(page, to);
    };
    await page.getByRole("slider", { name: "Size" }).focus();
    await press("Tab", "Lap 399");
    await press("ArrowRight", "Lap 398");
    await press("ArrowDown", "Lap 391");
    await press("Shift+End", "Lap 386");
    const selection = page.getByRole("toolbar", { name: "Selection" });
    await selection.getByText("6 selected").waitFor();
    await press("Control+End", "Start line");
    await scrollTo(page, 0);
    await cell(page, "Lap 399").waitFor();
    await focusOn(page, "Start line");
    await press("Control+Home", "Lap 399");
    await page.keyboard.press("Space");
    await selection.getByText("7 selected").waitFor();
    await page.keyboard.press("Escape");
    await selection.waitFor({ state: "hidden" });
    // One stop for Tab, in and out again.
    await page.keyboard.press("Shift+Tab");
    await press("Tab", "Lap 399");
});

pageTest("a broken file says so in its cell, and can be tried again", site, async (page) => {
    await loaded(page, LAPS + SAMPLES);
    const { path, mend } = site.addBroken("Laps/Broken.png", LAPS + 2);
    const found = page.getByRole("gridcell", { name: /^Broken, .*, cannot be shown$/ });
    await found.getByRole("button", { name: "Open folder" }).waitFor();
    await expectAccessible(page);
    mend();
    await found.getByRole("button", { name: "Retry" }).click();
    await cell(page, "Broken").locator("img").waitFor();
    rmSync(path);
    await loaded(page, LAPS + SAMPLES);
});

pageTest(
    "an empty gallery says how captures come, in the browser's language",
    empty,
    async (page) => {
        await page.getByRole("main", { name: "Galerie" }).getByText("Noch keine Aufnahmen").waitFor();
        await page.getByText(empty.gallery).waitFor();
        await expectAccessible(page);
    },
    { locale: "de-DE" },
);
