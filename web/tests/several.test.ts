// Doing something with several captures, in a browser.
import assert from "node:assert/strict";
import { existsSync, mkdirSync, readdirSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { setTimeout } from "node:timers/promises";
import type { Locator, Page } from "playwright-core";
import { cell, expectAccessible, focusOn, pageTest, request, serving, Site } from "./gallery.js";

const site = new Site();
const LAPS = 110;

serving([site], () => {
    site.addSamples();
    for (let lap = 0; lap < LAPS; ++lap) site.add(`Laps/Lap ${lap}.png`, lap);
});

const bar = (page: Page): Locator => page.getByRole("toolbar", { name: "Selection" });
const selected = (page: Page, count: number): Promise<void> =>
    bar(page).getByText(`${count} selected`).waitFor();
const status = (page: Page): Locator => page.getByRole("status", { name: "Deleted captures" });
const gone = (locator: Locator): Promise<void> => locator.waitFor({ state: "detached" });
const lap = (number: number): string => join(site.gallery, `Laps/Lap ${number}.png`);
const laps = (): number => readdirSync(join(site.gallery, "Laps")).length;

pageTest("captures are selected by a rectangle, by group and by game", site, async (page) => {
    const from = (await cell(page, "Lap 108").boundingBox())!;
    const to = (await cell(page, "Lap 101").boundingBox())!;
    await page.mouse.move(from.x - 6, from.y + 30);
    await page.mouse.down();
    await page.mouse.move(to.x + 20, to.y + 30, { steps: 3 });
    await selected(page, 2);
    await page.mouse.up();
    await selected(page, 2);
    await cell(page, "Lap 109").click({ modifiers: ["Control"] });
    await selected(page, 3);
    // Another one adds while Ctrl is held, and Esc ends it as if it had not been.
    await page.keyboard.down("Control");
    await page.mouse.move(from.x - 6, from.y + 30);
    await page.mouse.down();
    await page.mouse.move(to.x + 900, to.y + 30, { steps: 3 });
    await selected(page, 9);
    await page.keyboard.press("Escape");
    await selected(page, 3);
    await page.mouse.up();
    await page.keyboard.up("Control");
    await selected(page, 3);
    await page.getByRole("button", { name: "Select this day" }).first().click();
    await selected(page, LAPS);
    await page.keyboard.press("Escape");
    await bar(page).getByRole("button", { name: "Clear selection" }).click();
    // The game with "g", as far as it is shown.
    const search = page.getByRole("searchbox", { name: "Search captures" });
    for (const count of [LAPS, 11]) {
        await search.fill(count === LAPS ? "" : "lap 10");
        await cell(page, "Lap 109").focus();
        await page.keyboard.press("g");
        await selected(page, count);
        await page.keyboard.press("Escape");
    }
});

pageTest("deleted captures come back by Undo, and go when it is too late for it", site, async (page) => {
    await page.clock.install();
    await cell(page, "Lap 109").focus();
    await page.keyboard.press("Delete");
    await gone(cell(page, "Lap 109"));
    await focusOn(page, "Lap 108");
    await cell(page, "Lap 107").click({ modifiers: ["Control"] });
    await cell(page, "Lap 106").click({ modifiers: ["Control"] });
    await bar(page).getByRole("button", { name: "Delete" }).click();
    await gone(cell(page, "Lap 107"));
    assert.equal(await bar(page).isVisible(), false);
    await status(page).getByText("2 captures will go to the trash").waitFor();
    await expectAccessible(page);
    // It can be used in a dialog that opens meanwhile, too, and is there again afterwards.
    await page.keyboard.press("?");
    const keys = page.getByRole("dialog", { name: "Keys" });
    await keys.getByText("2 captures will go to the trash").waitFor();
    await page.keyboard.press("Escape");
    await keys.waitFor({ state: "detached" });
    await status(page).getByText("2 captures will go to the trash").waitFor();
    await page.keyboard.press("Control+z");
    await cell(page, "Lap 107").waitFor();
    assert.ok(existsSync(lap(109)));
    await page.clock.fastForward(8000);
    await status(page).getByText("1 capture in the trash").waitFor();
    assert.equal(existsSync(lap(109)), false);
    await page.clock.fastForward(20_000);
    await gone(status(page).getByText("1 capture"));
    await cell(page, "Lap 106").focus();
    await page.keyboard.press("Delete");
    await status(page).getByRole("button", { name: "Undo" }).click();
    await cell(page, "Lap 106").waitFor();
    // At once, after a question from which Enter leads back.
    await cell(page, "Lap 106").focus();
    await page.keyboard.press("Shift+Delete");
    const question = page.getByRole("dialog", { name: "Delete 1 capture for good?" });
    await question.waitFor();
    await expectAccessible(page);
    await page.keyboard.press("Enter");
    await question.waitFor({ state: "detached" });
    assert.ok(existsSync(lap(106)));
    await page.keyboard.press("Shift+Delete");
    await question.getByRole("button", { name: "Delete for good" }).click();
    await gone(cell(page, "Lap 106"));
    await gone(status(page).getByText("1 capture"));
    assert.equal(existsSync(lap(106)), false);
    // The keys are listed once, but not while one types.
    await cell(page, "Lap 105").focus();
    for (let press = 0; press < 2; ++press) await page.keyboard.press("?");
    await keys.getByRole("term").filter({ hasText: "ShiftDelete" }).waitFor();
    assert.equal(await keys.count(), 1);
    await expectAccessible(page);
    await page.keyboard.press("Escape");
    await focusOn(page, "Lap 105");
    await page.getByRole("searchbox").pressSequentially("Lap?");
    await page.getByRole("heading", { name: "Nothing matches" }).waitFor();
    assert.equal(await keys.count(), 0);
});

pageTest("a page that closes deletes nothing, and many are asked about", site, async (page) => {
    const before = laps();
    await page.clock.install();
    await page.getByRole("button", { name: "Select this day" }).first().click();
    await bar(page).getByRole("button", { name: "Delete" }).click();
    const question = page.getByRole("dialog", { name: `Delete ${before} captures?` });
    await question.getByRole("button", { name: "Cancel" }).click();
    await selected(page, before);
    await bar(page).getByRole("button", { name: "Delete" }).click();
    await question.getByRole("button", { name: "Delete" }).click();
    await status(page).getByRole("button", { name: "Undo" }).waitFor();
    await page.goto("about:blank");
    await page.clock.fastForward(60_000);
    await page.goBack();
    await page.clock.fastForward(60_000);
    await cell(page, "Lap 108").waitFor();
    assert.equal(laps(), before);
});

pageTest("captures come back from the trash with what people wrote about them", site, async (page) => {
    const memeInfo = { topBarText: "Never again", bottomBarText: "" };
    await request(page, "AddMeme", { file: lap(104), memeInfo });
    await page.clock.install();
    for (const number of [104, 103]) await cell(page, `Lap ${number}`).click({ modifiers: ["Control"] });
    await page.keyboard.press("Delete");
    await page.clock.fastForward(8000);
    await status(page).getByText("2 captures in the trash").waitFor();
    await expectAccessible(page);
    assert.deepEqual([existsSync(lap(103)), existsSync(lap(104))], [false, false]);
    await page.keyboard.press("Control+z");
    await cell(page, "Lap 104").waitFor();
    await cell(page, "Lap 103").waitFor();
    assert.deepEqual([existsSync(lap(103)), existsSync(lap(104))], [true, true]);
    // The page shows them at once, and the gallery has them on record when its watcher has seen them.
    const record = () => request(page, "GetFileMetadata", { file: lap(104) });
    while (!(await record())["fileType"]) await setTimeout(50);
    assert.deepEqual((await record())["memeInfo"], memeInfo);
});

pageTest("captures are copied and moved, and nothing is overwritten", site, async (page) => {
    const other = join(site.folder, "copies");
    mkdirSync(other);
    writeFileSync(join(other, "Lap 90.png"), "mine");
    for (const number of [91, 90]) await cell(page, `Lap ${number}`).click({ modifiers: ["Control"] });
    await bar(page).getByRole("button", { name: "Copy to…" }).click();
    const copying = page.getByRole("dialog", { name: "Copy to…" });
    const folder = copying.getByRole("textbox", { name: "Folder" });
    const copy = copying.getByRole("button", { name: "Copy" });
    await folder.fill(`${other}/none`);
    await copying.getByText("There is no such folder").waitFor();
    assert.ok(await copy.isDisabled());
    await folder.fill(other);
    await copying.getByText(/GB free of .* GB/).waitFor();
    await expectAccessible(page);
    await copy.click();
    await copying.getByText("1 capture copied.").waitFor();
    await copying.getByText("Lap 90.png: 'destination' already exists").waitFor();
    await expectAccessible(page);
    assert.equal(readFileSync(join(other, "Lap 90.png"), "utf8"), "mine");
    assert.deepEqual(readFileSync(join(other, "Lap 91.png")), readFileSync(lap(91)));
    await copying.getByRole("button", { name: "Close" }).click();
    await selected(page, 2);
    await bar(page).getByRole("button", { name: "Move to…" }).click();
    const moving = page.getByRole("dialog", { name: "Move to…" });
    await moving.getByRole("combobox", { name: "Destination" }).selectOption("Rustwind Rally");
    await moving.getByRole("button", { name: "Move", exact: true }).click();
    await moving.getByText("2 captures moved.").waitFor();
    await page.keyboard.press("Escape");
    assert.deepEqual([existsSync(lap(90)), existsSync(lap(91))], [false, false]);
    await page.getByRole("combobox", { name: "Game" }).selectOption("Rustwind Rally");
    await cell(page, "Lap 90").waitFor();
});

pageTest("of a session's highlights one keeps what one chooses", site, async (page) => {
    const shown = page.getByRole("gridcell", { name: /^Photo finish, Highlight/ });
    await page.getByRole("searchbox", { name: "Search captures" }).fill("photo finish");
    await shown.first().waitFor();
    const { recents } = (await request(page, "GetRecentUGC", { count: 1000 })) as unknown as {
        recents: { path: string; highlightGroupId: string; DRSProfileName: string }[];
    };
    const one = recents.find(({ path }) => path.endsWith("Photo finish.mp4"))!;
    const app = { profileName: one.DRSProfileName };
    await request(page, "OpenHighlightsGroupSummary", { app, groups: [{ groupId: one.highlightGroupId }] });
    const dialog = page.getByRole("dialog", { name: "Highlights" });
    const kept = dialog.getByRole("checkbox");
    await dialog.locator("img").nth(1).waitFor();
    assert.equal(await dialog.getByRole("button", { name: "Delete" }).isDisabled(), true);
    await expectAccessible(page);
    const { length } = await kept.all();
    await kept.first().uncheck();
    await dialog.getByRole("button", { name: "Delete 1…" }).click();
    const question = page.getByRole("dialog", { name: "Delete 1 capture?" });
    await question.getByRole("button", { name: "Cancel" }).click();
    await dialog.getByRole("button", { name: "Delete 1…" }).click();
    await question.getByRole("button", { name: "Delete" }).click();
    const undo = status(page).getByRole("button", { name: "Undo" });
    await undo.waitFor();
    assert.equal(await shown.count(), length - 1);
    await undo.click();
    await shown.nth(length - 1).waitFor();
});

pageTest("a montage is made, shown and canceled, and overwrites nothing", site, async (page) => {
    const recipes = join(site.home, ".local/share/ZORVEX/OvirastreamX/Montage/v1");
    mkdirSync(recipes, { recursive: true });
    // The montage process of the tests goes by the recipe's name.
    for (const name of ["good.js", "hangs.js"]) writeFileSync(join(recipes, name), "//");
    await page.getByRole("combobox", { name: "Game" }).selectOption("Rustwind Rally");
    await page.getByRole("gridcell").first().focus();
    await page.keyboard.press("Control+a");
    const dialog = page.getByRole("dialog", { name: "Montage" });
    const result = dialog.getByRole("textbox", { name: "Result" });
    const begin = async (recipe: string): Promise<string> => {
        await bar(page).getByRole("button", { name: "Montage…" }).click();
        await dialog.getByRole("textbox", { name: "Recipe" }).fill(recipe);
        await dialog.getByRole("textbox", { name: "Title" }).fill("The race");
        return result.inputValue();
    };
    const make = dialog.getByRole("button", { name: "Make the montage" });
    const proposed = await begin("good.js");
    await expectAccessible(page);
    await result.fill(join(site.gallery, "Rustwind Rally/Start line.png"));
    await make.click();
    await dialog.getByText("There is a file of this name").waitFor();
    await result.fill(proposed);
    await make.click();
    await dialog.getByText("The montage is in the gallery").waitFor();
    await dialog.getByRole("button", { name: "Show" }).click();
    await page.waitForFunction(() => document.activeElement?.ariaLabel?.startsWith("Montage "));
    assert.ok(existsSync(proposed));
    await page.keyboard.press("Control+a");
    const canceled = await begin("hangs.js");
    await make.click();
    await dialog.getByText("Making the montage").waitFor();
    await expectAccessible(page);
    // It goes on while nobody looks at it.
    await dialog.getByRole("button", { name: "Close" }).click();
    await bar(page).getByRole("button", { name: "Montage…" }).click();
    await dialog.getByRole("button", { name: "Cancel" }).click();
    await dialog.getByText("The montage was canceled").waitFor();
    assert.equal(existsSync(canceled), false);
});
