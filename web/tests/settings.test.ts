// The dialog of settings, in a browser.
import assert from "node:assert/strict";
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import type { Locator, Page } from "playwright-core";
import { changesOf, formOf, rebased } from "../src/model/settings.js";
import { expectAccessible, pageTest, serving, Site } from "./gallery.js";

const site = new Site();

serving([site], () => site.addSamples());

test("only what was changed is sent, and what was typed stays", () => {
    const capacity = { enabled: false, capacityPercent: 150 };
    const known = formOf({ userGalleryPath: "/a", tempFolderPath: "/t", capacity });
    assert.equal(changesOf(known, { ...known, galleryFolder: " /a ", tempFolder: " " }), null);
    assert.deepEqual(changesOf(known, { ...known, limited: true }), { capacity: { enabled: true } });
    const form = { ...known, galleryFolder: "/b", percent: 9 };
    assert.deepEqual(changesOf(known, form), { userGalleryPath: "/b", capacity: { capacityPercent: 9 } });
    const now = formOf({ userGalleryPath: "/c", tempFolderPath: "/u", capacity });
    assert.deepEqual(rebased(form, known, now), { ...now, galleryFolder: "/b", percent: 9 });
});

const dialog = (page: Page): Locator => page.getByRole("dialog", { name: "Settings" });

// In a plain chroot, as packages are built in, no drive is to be seen.
const showsRootMount = readFileSync("/proc/self/mountinfo", "utf8")
    .split("\n")
    .some((line) => line.split(" ")[4] === "/");

async function open(page: Page): Promise<Locator> {
    await page.getByRole("button", { name: "Settings" }).click();
    await dialog(page).getByRole("meter", { name: "Storage" }).waitFor();
    return dialog(page).getByRole("textbox", { name: "Gallery folder" });
}

const save = (page: Page): Promise<void> => dialog(page).getByRole("button", { name: "Save" }).click();

pageTest("folders and the limit are changed, and refusals say why", site, async (page) => {
    const folder = await open(page);
    assert.equal(await folder.inputValue(), site.gallery);
    if (showsRootMount) await dialog(page).getByText("built in").first().waitFor();
    await expectAccessible(page);
    await folder.fill("/proc/none");
    await save(page);
    await dialog(page).getByRole("alert").getByText("Invalid path defined").waitFor();
    assert.equal(await folder.inputValue(), "/proc/none");
    await expectAccessible(page);
    await folder.fill(site.gallery);
    const temporary = join(site.folder, "temporary");
    mkdirSync(temporary);
    await dialog(page).getByRole("textbox", { name: "Temporary folder" }).fill(temporary);
    await dialog(page).getByRole("checkbox", { name: "Limit size" }).check();
    const limit = dialog(page).getByRole("slider", { name: "Limit" });
    await limit.focus();
    await page.keyboard.press("ArrowLeft");
    await save(page);
    await dialog(page).getByText("Saved").waitFor();
    await page.keyboard.press("Escape");
    await dialog(page).waitFor({ state: "detached" });
    assert.equal(await page.evaluate(() => document.activeElement?.ariaLabel), "Settings");
    await page.reload();
    await open(page);
    assert.ok(await dialog(page).getByRole("checkbox", { name: "Limit size" }).isChecked());
    assert.match((await limit.getAttribute("aria-valuetext"))!, /^99 % of the drive, /);
    assert.equal(
        await dialog(page).getByRole("textbox", { name: "Temporary folder" }).inputValue(),
        temporary,
    );
});

pageTest("a changed gallery shows what it holds, and leads back meanwhile", site, async (page) => {
    let holds = false;
    await page.routeWebSocket("**/socket", (route) => {
        const server = route.connectToServer();
        // No search ends before somebody ends it.
        const held = (text: string) => text.replace(/"TrackerUpdateComplete"/g, '"TrackerUpdateInProgress"');
        server.onMessage((data) => route.send(holds ? held(String(data)) : data));
        route.onMessage((data) => {
            if (String(data).includes("CancelPathUpdate")) holds = false;
            server.send(data);
        });
    });
    await page.reload();
    const folder = await open(page);
    const other = join(site.folder, "other");
    mkdirSync(other);
    writeFileSync(join(other, "readme.txt"), "no capture");
    holds = true;
    await folder.fill(other);
    await dialog(page).getByText("The captures stay in the old folder").waitFor();
    await save(page);
    const back = dialog(page).getByRole("button", { name: "Back to the old folder" });
    await back.waitFor();
    await expectAccessible(page);
    await back.click();
    await back.waitFor({ state: "detached" });
    await page.waitForFunction(
        (path) => document.querySelector<HTMLInputElement>("dialog input")?.value === path,
        site.gallery,
    );
    await folder.fill(other);
    await save(page);
    await dialog(page).getByText("Saved").waitFor();
    await back.waitFor({ state: "detached" });
    await page.keyboard.press("Escape");
    await page.getByText("No captures yet").waitFor();
    await page.getByText(other).waitFor();
});
