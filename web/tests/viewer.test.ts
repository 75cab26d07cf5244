// Looking at one capture, writing its caption, cutting it: in a browser, on real captures.
import assert from "node:assert/strict";
import { rmSync } from "node:fs";
import { isDeepStrictEqual } from "node:util";
import type { Locator, Page } from "playwright-core";
import { button, cell, expectAccessible, focusOn, pageTest, serving, Site } from "./gallery.js";

const site = new Site();
const PICTURES = 60;
const FRAMES = 150;

serving([site], () => {
    site.addSamples();
    for (let number = 0; number < PICTURES; ++number)
        site.add(`Laps/Lap ${number}.png`, number < 30 ? number : 1000 + number);
    site.addVideo("Races/Final.mp4", 500, FRAMES, 30);
});

const viewer = (page: Page, title: string): Locator => page.getByRole("dialog", { name: title, exact: true });
const slider = (page: Page, name: string): Locator => page.getByRole("slider", { name, exact: true });

/** Finds a capture in the grid, wherever it is, and opens it. */
async function open(page: Page, title: string): Promise<Locator> {
    await page.getByRole("searchbox").fill(title);
    await cell(page, title).dblclick();
    await page.getByRole("dialog", { name: title, exact: true }).waitFor();
    return viewer(page, title);
}

const PICTURE = ".frame img:not(.preview)";

const shown = (page: Page, image: string): Promise<unknown> =>
    page.waitForFunction((found) => document.querySelector<HTMLImageElement>(found)?.naturalWidth, image);

/** The number that the frame shows, in binary. */
const shownFrame = (page: Page): Promise<number> =>
    page.evaluate(async () => {
        const video = document.querySelector("video")!;
        if (video.seeking)
            await new Promise((done) => video.addEventListener("seeked", done, { once: true }));
        const canvas = new OffscreenCanvas(12, 1);
        const context = canvas.getContext("2d")!;
        context.drawImage(video, 0, video.videoHeight / 2, video.videoWidth, 1, 0, 0, 12, 1);
        const { data } = context.getImageData(0, 0, 12, 1);
        return [...Array(12).keys()].reduce((bits, place) => 2 * bits + (data[4 * place]! > 128 ? 1 : 0), 0);
    });

/** Waits for what the frames to come will show. */
async function becomes<T>(page: Page, read: () => Promise<T>, wanted: T): Promise<void> {
    for (let frame = 0; frame < 600 && !isDeepStrictEqual(await read(), wanted); ++frame)
        await page.evaluate(() => new Promise(requestAnimationFrame));
    assert.deepEqual(await read(), wanted);
}

const expectFrame = (page: Page, frame: number): Promise<void> =>
    becomes(page, () => shownFrame(page), frame);

pageTest("the viewer leads through the captures and back to the cell of the last one", site, async (page) => {
    await cell(page, "Lap 59").focus();
    const entries = await page.evaluate(() => history.length);
    await page.keyboard.press("Enter");
    const first = viewer(page, "Lap 59");
    await first.waitFor();
    for (const name of ["Trim", "Caption", "Delete"]) await first.getByRole("button", { name }).waitFor();
    assert.equal(await button(page, "Previous").getAttribute("aria-disabled"), "true");
    await page.keyboard.press("ArrowLeft");
    await expectAccessible(page);
    for (let step = 0; step < 25; ++step) await page.keyboard.press("ArrowRight");
    await button(page, "Next").click();
    const shown = (await page.getByRole("dialog").getAttribute("aria-label"))!;
    await page.keyboard.press("Escape");
    await focusOn(page, shown);
    // The grid has scrolled to it, and the history has one entry more, to go forward to.
    await cell(page, shown).waitFor();
    assert.equal(await page.evaluate(() => history.length), entries + 1);
    await page.goForward();
    await viewer(page, shown).waitFor();
    await page.reload();
    await viewer(page, shown).waitFor();
    await button(page, "Previous").click();
    await viewer(page, shown).waitFor({ state: "detached" });
    const other = (await page.getByRole("dialog").getAttribute("aria-label"))!;
    await page.goBack();
    await focusOn(page, other);
    assert.equal(await page.evaluate(() => history.length), entries + 1);
});

pageTest("a picture is zoomed at the pointer, by keys and fingers, and moved", site, async (page) => {
    const dialog = await open(page, "Valley");
    const picture = dialog.getByRole("img", { name: "Valley" });
    await shown(page, PICTURE);
    const box = async () => (await picture.boundingBox())!;
    const whole = await box();
    const at = { x: Math.round(whole.x + whole.width * 0.3), y: Math.round(whole.y + whole.height * 0.6) };
    const part = async () => {
        const { x, y, width, height } = await box();
        return [(at.x - x) / width, (at.y - y) / height].map((value) => value.toFixed(2));
    };
    const zoomed = (isLarger: boolean) =>
        becomes(page, async () => (await box()).width > whole.width * 1.2, isLarger);
    await page.mouse.move(at.x, at.y);
    await page.mouse.wheel(0, -400);
    await zoomed(true);
    await becomes(page, part, ["0.30", "0.60"]);
    const before = await box();
    await page.keyboard.press("ArrowRight");
    await page.mouse.down();
    await page.mouse.move(at.x, at.y + 40);
    await page.mouse.up();
    const moved = async () => {
        const { x, y } = await box();
        return [Math.round(before.x - x), Math.round(y - before.y)];
    };
    await becomes(page, moved, [80, 40]);
    await expectAccessible(page);
    await page.keyboard.press("0");
    await zoomed(false);
    await page.mouse.dblclick(at.x, at.y);
    await zoomed(true);
    await becomes(page, part, ["0.30", "0.60"]);
    await button(page, "Show all of it").click();
    await zoomed(false);
    const touch = async (type: "touchStart" | "touchMove" | "touchEnd", ...places: number[]) =>
        session.send("Input.dispatchTouchEvent", {
            type,
            touchPoints: places.map((place, id) => ({ x: place, y: at.y, id })),
        });
    const session = await page.context().newCDPSession(page);
    await touch("touchStart", at.x - 50, at.x + 50);
    await touch("touchMove", at.x - 100, at.x + 100);
    await touch("touchEnd");
    await zoomed(true);
    const size = async () => ((await box()).width / whole.width).toFixed(1);
    await becomes(page, size, "2.0");
});

pageTest("a video is played, sought and stepped through by keys", site, async (page) => {
    await open(page, "Final");
    await page.waitForFunction(() => document.querySelector("video")!.currentTime > 0.2);
    await page.keyboard.press("k");
    await button(page, "Play").waitFor();
    await page.keyboard.press("j");
    await expectFrame(page, 0);
    for (let step = 1; step <= 3; ++step) {
        await page.keyboard.press(".");
        await expectFrame(page, step);
    }
    await page.keyboard.press(",");
    await expectFrame(page, 2);
    // The slider has the arrows for itself.
    await slider(page, "Seek").focus();
    await page.keyboard.press("End");
    await expectFrame(page, FRAMES - 1);
    await viewer(page, "Final").waitFor();
    await page.keyboard.press("Shift+<");
    await page.keyboard.press("m");
    await page.keyboard.press("r");
    const state = await page.evaluate(() => {
        const { playbackRate, muted, loop } = document.querySelector("video")!;
        return [playbackRate, muted, loop];
    });
    assert.deepEqual(state, [0.5, true, true]);
    await page.keyboard.press("f");
    await page.waitForFunction(() => document.fullscreenElement !== null);
    await expectAccessible(page);
    await page.keyboard.press("f");
    await page.waitForFunction(() => document.fullscreenElement === null);
    await page.emulateMedia({ colorScheme: "dark", reducedMotion: "reduce" });
    await page.setViewportSize({ width: 360, height: 700 });
    await button(page, "Details").click();
    await expectAccessible(page);
    assert.equal(await page.evaluate(() => document.querySelector("dialog")!.scrollWidth), 360);
});

pageTest("the next two and the previous one are loaded, and dropped in fast travel", site, async (page) => {
    const asked: string[] = [];
    let hold = false;
    await page.route("**/media/*", async (route) => {
        asked.push(route.request().url());
        if (hold) return; // never answered, like a slow disk
        await route.continue();
    });
    await page.getByRole("searchbox").fill("Lap");
    await cell(page, "Lap 55").dblclick();
    const loaded = () =>
        performance.getEntriesByType("resource").filter(({ name }) => name.includes("/media/")).length;
    await becomes(page, () => page.evaluate(loaded), 4);
    assert.equal(asked.length, 4);
    hold = true;
    const dropped: string[] = [];
    page.on("requestfailed", (request) => dropped.push(request.url()));
    // Two are there. The one after them is held, and given up when it is passed, as are those that follow.
    for (let step = 0; step < 3; ++step) await page.keyboard.press("ArrowRight");
    while (asked.length < 5) await page.waitForEvent("request");
    for (let step = 0; step < 3; ++step) await page.keyboard.press("ArrowRight");
    await viewer(page, "Lap 49").waitFor();
    const source = await page.locator(PICTURE).evaluate(({ src }: HTMLImageElement) => src);
    const held = () => asked.slice(4).filter((one) => !dropped.includes(one));
    while (held().join() !== source) await page.evaluate(() => new Promise(requestAnimationFrame));
});

pageTest("a capture that goes or is deleted gives way to the next one", site, async (page) => {
    const path = site.add("Laps/Gone.png", 2000);
    await open(page, "Gone");
    await page.keyboard.press("Escape");
    await page.getByRole("searchbox").fill("");
    await cell(page, "Gone").dblclick();
    await viewer(page, "Gone").getByRole("button", { name: "Delete" }).click();
    await viewer(page, "Lap 59").waitFor();
    const gone = page.getByText("What you looked at has gone");
    assert.equal(await gone.count(), 0, "whoever deleted it knows");
    await page.getByRole("button", { name: "Undo" }).click();
    await viewer(page, "Lap 59").getByRole("button", { name: "Previous" }).click();
    await viewer(page, "Gone").waitFor();
    rmSync(path);
    await viewer(page, "Lap 59").waitFor();
    await gone.waitFor();
    await page.keyboard.press("Escape");
    await focusOn(page, "Lap 59");
});

pageTest("what the browser cannot show, and what is broken", site, async (page) => {
    const dialog = await open(page, "Second lap");
    await page.getByText("This browser cannot show this file").waitFor();
    await dialog.getByRole("button", { name: "Open in player" }).waitFor();
    await shown(page, "unshown-capture img");
    await expectAccessible(page);
    await page.keyboard.press("Escape");
    const { path, mend } = site.addBroken("Laps/Broken.png", 2001);
    await open(page, "Broken");
    await page.getByText("This file is damaged").waitFor();
    await page.getByText("Broken.png", { exact: true }).waitFor();
    await viewer(page, "Broken").getByRole("button", { name: "Open folder" }).waitFor();
    mend();
    await viewer(page, "Broken").getByRole("button", { name: "Retry" }).click();
    await shown(page, PICTURE);
    const width = await page.locator(PICTURE).evaluate(({ naturalWidth }: HTMLImageElement) => naturalWidth);
    assert.equal(width, 640);
    rmSync(path);
});

pageTest("a caption is seen as it is typed, and survives a failure", site, async (page) => {
    await open(page, "Lap 58");
    await page.keyboard.press("c");
    await page.getByRole("textbox", { name: "Top text" }).fill("When the tyres ");
    await page.getByRole("textbox", { name: "Bottom text" }).fill("x".repeat(100_000));
    await page.getByText("When the tyres", { exact: true }).waitFor();
    await button(page, "Save").click();
    await page.getByRole("alert").getByText("That did not work").waitFor();
    await expectAccessible(page);
    assert.equal(await page.getByRole("textbox", { name: "Top text" }).inputValue(), "When the tyres ");
    await page.getByRole("textbox", { name: "Bottom text" }).fill("were cold");
    const other = await page.context().newPage();
    await other.goto(page.url());
    await open(other, "Lap 58");
    await page.bringToFront();
    await page.keyboard.press("Enter");
    await page.getByText("The caption was saved").waitFor();
    await viewer(page, "Lap 58").getByText("were cold").waitFor();
    await other.bringToFront();
    await viewer(other, "Lap 58").getByText("were cold").waitFor();
    // The reload keeps the filter, too.
    await other.reload();
    await viewer(other, "Lap 58").waitFor();
    await other.keyboard.press("i");
    await other.getByRole("region", { name: "Details" }).getByText("were cold").waitFor();
    await other.keyboard.press("Escape");
    await other.getByRole("heading", { name: "Gallery 1 capture" }).waitFor();
});

pageTest("Back and Esc close the dialog first, and no caption is lost unasked", site, async (page) => {
    await open(page, "Final");
    await page.keyboard.press("t");
    await slider(page, "Start").waitFor();
    // As a page goes back: the browser's own count of entries lags behind what the page has just added.
    const back = (): Promise<void> => page.evaluate(() => history.back());
    await back();
    await page.locator("trim-dialog").waitFor({ state: "detached" });
    await viewer(page, "Final").waitFor();
    await page.keyboard.press("c");
    const top = page.getByRole("textbox", { name: "Top text" });
    await top.fill("And the winner is");
    const question = page.getByRole("dialog", { name: "Discard the caption?" });
    for (const leave of [back, () => page.keyboard.press("Escape")]) {
        await leave();
        await question.waitFor();
        // Another Back, as one who is in a hurry presses it, answers the question with no.
        await back();
        await page.locator("confirm-dialog").waitFor({ state: "detached" });
        assert.equal(await top.inputValue(), "And the winner is");
    }
    await expectAccessible(page);
    await back();
    await question.getByRole("button", { name: "Discard" }).click();
    await page.locator("caption-dialog").waitFor({ state: "detached" });
    // The viewer is still the entry before which the grid is.
    await back();
    await focusOn(page, "Final");
});

pageTest("a clip is cut at the chosen frames, beside its video and in its place", site, async (page) => {
    await open(page, "Final");
    await page.keyboard.press("t");
    await slider(page, "Start").waitFor();
    await expectAccessible(page);
    assert.ok(await button(page, "Save as copy").isDisabled());
    await slider(page, "Start").focus();
    await page.keyboard.press("Alt+ArrowRight");
    await page.getByText("The clip will start at 0:01.00, on a keyframe").waitFor();
    await page.keyboard.press("PageUp");
    await page.keyboard.press("ArrowRight");
    await expectFrame(page, 41);
    assert.equal(await slider(page, "Start").getAttribute("aria-valuetext"), "0:01.36");
    await page.getByText("the keyframe before, 0:01.00").waitFor();
    await slider(page, "End").focus();
    await page.keyboard.press("Home");
    for (let step = 0; step < 3; ++step) await page.keyboard.press("PageUp");
    await expectFrame(page, 71);
    await expectAccessible(page);
    await button(page, "Loop").click();
    await button(page, "Pause").waitFor();
    await button(page, "Loop").click();
    await page.keyboard.press("k");
    await button(page, "Save as copy").click();
    await focusOn(page, "Final (clip)");
    await page.getByRole("toolbar", { name: "Selection" }).getByText("1 selected").waitFor();
    // The clip holds those frames, and no other.
    await page.keyboard.press("Enter");
    await page.waitForFunction(() => document.querySelector("video")?.readyState === 4);
    await page.keyboard.press("k");
    await page.keyboard.press("j");
    await expectFrame(page, 41);
    await slider(page, "Seek").focus();
    await page.keyboard.press("End");
    await expectFrame(page, 71);
    await page.keyboard.press("Escape");

    await open(page, "Final");
    await page.keyboard.press("t");
    await slider(page, "Position").focus();
    await page.keyboard.press("Home");
    for (const key of ["ArrowRight", "ArrowRight", "i", "PageUp", "o"]) await page.keyboard.press(key);
    // What is shown is the first, and then the last frame of it.
    const times = async () => [
        await slider(page, "Start").getAttribute("aria-valuetext"),
        await slider(page, "End").getAttribute("aria-valuetext"),
    ];
    assert.deepEqual(await times(), ["0:00.06", "0:00.43"]);
    const bar = (await page.locator("trim-bar").boundingBox())!;
    const grip = (await slider(page, "End").boundingBox())!;
    await page.mouse.move(grip.x + 3, grip.y + 20);
    await page.mouse.down();
    // A drag goes on beyond the bar.
    await page.mouse.move(bar.x + bar.width * 2, bar.y - 200, { steps: 3 });
    assert.deepEqual(await times(), ["0:00.06", "0:05.01"]);
    await page.mouse.move(bar.x + bar.width * 0.2, bar.y - 200, { steps: 3 });
    await page.mouse.up();
    assert.deepEqual(await times(), ["0:00.06", "0:01.00"]);
    await page.getByRole("textbox", { name: "Start time" }).fill("0");
    await page.getByRole("textbox", { name: "Length" }).fill("half");
    await page.keyboard.press("Enter");
    await page.getByText("This is not a time").waitFor();
    await page.getByRole("textbox", { name: "End time" }).fill("2");
    await page.keyboard.press("Enter");
    await page.getByText("A copy is saved as Final (clip 2).mp4").waitFor();
    await button(page, "Replace original").click();
    await page.getByText("lost for good").waitFor();
    await expectAccessible(page);
    // Nothing is replaced by a click too many.
    await page.keyboard.press("Enter");
    await button(page, "Replace original").click();
    await button(page, "Replace it now").click();
    // The focus is on the clip, and not on what it takes the place of.
    await page.waitForFunction(() =>
        document.activeElement?.matches('[aria-label^="Final, "][data-badge="0:02"]'),
    );
    await page.getByText("The clip was saved").waitFor({ state: "attached" });
    await page.keyboard.press("Enter");
    await page.waitForFunction(() => Math.abs((document.querySelector("video")?.duration ?? 0) - 2) < 0.05);
});
