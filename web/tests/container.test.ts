// The page in a container: the same files, with query functions of the container's own and no server behind them.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { Site, startBrowser, stopBrowser } from "./gallery.js";

const files = "../build/page/site";
const types: Record<string, string> = { html: "text/html", js: "text/javascript", css: "text/css" };
const origin = "https://client.test";
const site = new Site();

before(async () => {
    site.addSamples();
    await startBrowser();
});

after(async () => {
    await stopBrowser();
    await site.stop();
});

// Runs in the page, before its scripts: `send` is the way to the library, `receive` the way back.
function container(): void {
    type Asked = { request: string; persistent?: boolean; onSuccess(text: string): void };
    const open = new Map<string, Asked>();
    const native = window as unknown as { send(text: string): void; cefQueryCancel(id: number): boolean };
    const query = (asked: Asked) => {
        open.set((JSON.parse(asked.request) as { uniqueid: string }).uniqueid, asked);
        native.send(asked.request);
        return open.size;
    };
    const receive = (text: string) => {
        const id = (JSON.parse(text) as { reference_uniqueid: string }).reference_uniqueid;
        const asked = open.get(id);
        if (!asked?.persistent) open.delete(id);
        asked?.onSuccess(text);
    };
    Object.defineProperty(window, "cefQuery", { value: query });
    Object.defineProperty(window, "cefQueryCancel", { value: () => true });
    Object.defineProperty(window, "receive", { value: receive });
}

test("the page runs in a container, where thumbnails come from the gallery itself", async () => {
    const page = await site.blankPage();
    const receive = (text: string) => (window as unknown as { receive(text: string): void }).receive(text);
    const library = site.serve((line) => void page.evaluate(receive, line));
    await page.exposeFunction("send", (text: string) => void library.stdin!.write(`${text}\n`));
    await page.addInitScript(container);
    const sockets: string[] = [];
    page.on("websocket", (socket) => sockets.push(socket.url()));
    await page.route(`${origin}/**`, (route) => {
        const path = new URL(route.request().url()).pathname;
        const name = path === "/" ? "index.html" : path;
        const contentType = types[name.split(".").at(-1)!]!;
        return route.fulfill({ body: readFileSync(join(files, name)), contentType });
    });
    await page.goto(origin);
    const cell = page.getByRole("gridcell", { name: "Photo finish, Highlight, " }).first();
    assert.match((await cell.locator("img").getAttribute("src"))!, /^data:image\/png;base64,/);
    site.add("Rustwind Rally/Live.png", 1);
    await page.getByRole("gridcell", { name: "Live, Image, " }).locator("img").waitFor();
    // A page of the web may not show the client's files: there is the thumbnail, and the path.
    await page.getByRole("gridcell", { name: "Live, Image, " }).dblclick();
    const viewer = page.getByRole("dialog", { name: "Live" });
    assert.match((await viewer.locator("unshown-capture img").getAttribute("src"))!, /^data:image/);
    await viewer.getByText(join(site.gallery, "Rustwind Rally/Live.png")).waitFor();
    assert.deepEqual(sockets, []);
});
