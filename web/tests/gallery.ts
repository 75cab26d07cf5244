// A gallery of real captures, the host that serves it, and a browser that looks at it.
import assert from "node:assert/strict";
import { spawn, spawnSync, type ChildProcess } from "node:child_process";
import { once } from "node:events";
import * as fs from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join, resolve } from "node:path";
import { createInterface } from "node:readline";
import { after, before, test } from "node:test";
import { chromium } from "playwright-core";
import type { Browser, BrowserContext, BrowserContextOptions, Locator, Page } from "playwright-core";

// Made by the debug preset, unless it is said otherwise.
const host =
    process.env["GALLERY_HOST"] ?? resolve("../build/debug/OvirastreamX.app/Contents/MacOS/gallery-host");
const sampleVideo = process.env["SAMPLE_VIDEO"] ?? resolve("../build/debug/tools/sample-media/sample_video");
// Kept after a failure.
const screenshots = "../build/page/failures";
const axe = fs.readFileSync("node_modules/axe-core/axe.min.js", "utf8");

/** A home with a gallery, and the server that shows it. */
export class Site {
    readonly folder = fs.mkdtempSync(join(tmpdir(), "gallery-page-"));
    home = this.folder;
    private host: ChildProcess | null = null;
    launch = "";
    /** KiB; the server cannot write beyond this, as on a full drive. */
    largestFile: number | "unlimited" = "unlimited";
    /** With more arguments for the server. */
    constructor(private readonly more: string[] = []) {}

    private known: { storageState: Awaited<ReturnType<BrowserContext["storageState"]>> } | null = null;

    get gallery(): string {
        return join(this.home, "Videos/ZORVEX/Ovirastream");
    }

    addSamples(): void {
        const { status, stderr } = spawnSync(host, ["demo", "--keep"], {
            env: { ...process.env, TMPDIR: this.folder },
            encoding: "utf8",
        });
        assert.equal(status, 0, stderr);
        const demo = fs.readdirSync(this.folder).find((name) => name.startsWith("gallery-demo"))!;
        this.home = join(this.folder, demo);
    }

    /** Saves another capture, of a minute that counts from the day after the samples'. */
    add(name: string, minute: number): string {
        return this.addBytes(
            name,
            minute,
            fs.readFileSync(join(this.gallery, "Rustwind Rally/Start line.png")),
        );
    }

    /** A capture whose pixels are gone, and what makes it a capture is left; `mend` restores them. */
    addBroken(name: string, minute: number): { path: string; mend: () => void } {
        const good = fs.readFileSync(join(this.gallery, "Rustwind Rally/Start line.png"));
        const broken = Buffer.from(good);
        broken.fill(0x55, broken.indexOf("IDAT") + 4, broken.indexOf("IEND") - 8);
        const path = this.addBytes(name, minute, broken);
        return { path, mend: () => fs.writeFileSync(path, good) };
    }

    /** The file appears whole, with its date. */
    addBytes(name: string, minute: number, bytes: Buffer): string {
        const path = join(this.gallery, name);
        const arriving = join(this.folder, "arriving");
        const time = Date.UTC(2026, 2, 15, 0, minute) / 1000;
        fs.writeFileSync(arriving, bytes);
        fs.utimesSync(arriving, time, time);
        fs.mkdirSync(dirname(path), { recursive: true });
        fs.renameSync(arriving, path);
        return path;
    }

    /** A video that browsers play: each frame shows its number, and every `keyInterval`th is a keyframe. */
    addVideo(name: string, minute: number, frames: number, keyInterval: number): string {
        const made = join(this.folder, "made.mp4");
        const words = [made, String(frames), String(keyInterval)];
        const { status, stderr } = spawnSync(sampleVideo, words, { encoding: "utf8" });
        assert.equal(status, 0, stderr);
        const path = this.addBytes(name, minute, fs.readFileSync(made));
        fs.rmSync(made);
        return path;
    }

    /** How somebody likes to see the gallery. */
    get preferences(): string {
        return join(this.home, ".local/share/ZORVEX/OvirastreamX/Share/PagePreferences.json");
    }

    /** The server writes the file with the first change, some time after the page made it. */
    writtenPreferences(): string {
        return fs.existsSync(this.preferences) ? fs.readFileSync(this.preferences, "utf8") : "";
    }

    /** Starts the server; again on the same port, where browsers are unknown to it. */
    async start(): Promise<void> {
        await this.end();
        this.known = null;
        const port = this.launch === "" ? "0" : new URL(this.launch).port;
        const server = this.run(["page", "--no-open", "--port", port, ...this.more]);
        const [line] = (await once(createInterface(server.stdout!), "line")) as [string];
        this.launch = line.trim();
    }

    /** Loads the library without a server; its messages are lines. */
    serve(onLine: (line: string) => void): ChildProcess {
        const library = this.run(["serve"]);
        createInterface(library.stdout!).on("line", onLine);
        return library;
    }

    private run(words: string[]): ChildProcess {
        const data = join(this.home, ".local/share");
        const path = process.env["PATH"];
        const env = { PATH: path, HOME: this.home, XDG_DATA_HOME: data, TMPDIR: this.folder };
        const limit = `trap "" XFSZ; ulimit -f ${this.largestFile}; exec "$0" "$@"`;
        this.host = spawn("bash", ["-c", limit, host, ...words], { env, stdio: ["pipe", "pipe", "ignore"] });
        return this.host;
    }

    /** A page in a browser of its own that shows nothing yet. */
    async blankPage(options: BrowserContextOptions = {}): Promise<Page> {
        const context = await browser!.newContext({ ...desktop, ...options, ...this.known });
        context.setDefaultTimeout(10_000);
        return context.newPage();
    }

    /** Opens the page in a browser of its own; the address that the server prints works only the first time. */
    async open(options: BrowserContextOptions = {}): Promise<Page> {
        const page = await this.blankPage(options);
        await page.goto(this.known ? new URL("/", this.launch).href : this.launch);
        await page.getByRole("main").waitFor();
        this.known ??= { storageState: await page.context().storageState() };
        return page;
    }

    /** Ends the server, at once and without a word for SIGKILL. */
    async end(signal: "SIGINT" | "SIGKILL" = "SIGINT"): Promise<void> {
        if (this.host === null || this.host.exitCode !== null || this.host.signalCode !== null) return;
        this.host.kill(signal);
        await once(this.host, "exit");
    }

    async stop(): Promise<void> {
        await this.end();
        fs.rmSync(this.folder, { recursive: true, force: true });
    }
}

let browser: Browser | null = null;

export async function startBrowser(): Promise<void> {
    // Chromium refuses its sandbox to root, as in a container.
    const args = process.getuid?.() === 0 ? ["--no-sandbox"] : [];
    const executablePath = process.env["CHROMIUM"] ?? "/usr/bin/chromium";
    browser = await chromium.launch({ executablePath, args });
}

export async function stopBrowser(): Promise<void> {
    await browser?.close();
}

/** Fills the sites, and has them and the browser running for the tests of a file. */
export function serving(sites: Site[], fill: () => void): void {
    before(async () => {
        fill();
        await Promise.all([startBrowser(), ...sites.map((site) => site.start())]);
    });
    after(async () => {
        await stopBrowser();
        await Promise.all(sites.map((site) => site.stop()));
    });
}

export const cell = (page: Page, title: string): Locator =>
    page.getByRole("gridcell", { name: `${title}, ` });
export const button = (page: Page, name: string): Locator => page.getByRole("button", { name, exact: true });
export const focusOn = (page: Page, title: string): Promise<unknown> =>
    page.waitForFunction((name) => document.activeElement?.ariaLabel?.startsWith(`${name}, `), title);

const desktop: BrowserContextOptions = { viewport: { width: 1920, height: 1080 }, locale: "en-GB" };

/** A test with a page of its own. What the page throws, or what its policy blocks, fails it. */
export function pageTest(
    name: string,
    site: Site,
    run: (page: Page) => Promise<void>,
    options: BrowserContextOptions = {},
): void {
    test(name, async () => {
        // What the tests before chose.
        fs.rmSync(site.preferences, { force: true });
        const page = await site.open(options);
        const faults: string[] = [];
        page.on("pageerror", (error) => faults.push(String(error.stack)));
        page.on("console", (message) => {
            if (/Content Security|Trusted/.test(message.text())) faults.push(message.text());
        });
        try {
            await run(page);
            assert.deepEqual(faults, []);
        } catch (error) {
            fs.mkdirSync(screenshots, { recursive: true });
            if (page.isClosed()) throw error;
            await page.screenshot({ path: join(screenshots, `${name.replace(/\W+/g, "-")}.png`) });
            throw error;
        } finally {
            await page.context().close();
        }
    });
}

/** Nothing that the accessibility rules find. */
export async function expectAccessible(page: Page): Promise<void> {
    const session = await page.context().newCDPSession(page);
    // The page's policy would keep a script of ours out.
    await session.send("Runtime.evaluate", { expression: axe });
    const { result } = await session.send("Runtime.evaluate", {
        expression: `axe.run(document, { resultTypes: ["violations"] }).then(({ violations }) =>
            violations.map(({ id, nodes }) => id + ": " + nodes.map(({ html }) => html).join(" | ")))`,
        awaitPromise: true,
        returnByValue: true,
    });
    assert.deepEqual(result.value, []);
}

/** Asks as a program of the client does, over the page's own channel. */
export function request(page: Page, method: string, payload: object): Promise<Record<string, never>> {
    type Query = { request: string; onSuccess(text: string): void };
    return page.evaluate(
        (envelope) =>
            new Promise((resolve) => {
                const { cefQuery } = window as unknown as { cefQuery(query: Query): void };
                const onSuccess = (text: string) => resolve(JSON.parse(text).payload);
                cefQuery({ request: JSON.stringify(envelope), onSuccess });
            }),
        { method, payload, uniqueid: `test-${method}`, type: 3072, module: "Gallery" },
    );
}
