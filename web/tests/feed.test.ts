// The list and its news, over a lossy connection; and which thumbnails are asked for.
import assert from "node:assert/strict";
import { test } from "node:test";
import { Client } from "../src/api/client.js";
import type { Query } from "../src/api/query.js";
import type { Capture, CaptureRecord } from "../src/model/capture.js";
import { Feed } from "../src/model/feed.js";
import { Gallery } from "../src/model/gallery.js";
import { Thumbnails, type Found } from "../src/model/thumbnails.js";
import { capture, dateAt, record } from "./captures.js";

const tick = () => new Promise((resolve) => setImmediate(resolve));

/** A gallery on the other side of the channel, whose answers wait while `held`. */
class Side {
    records: CaptureRecord[] = [];
    status = "TrackerUpdateComplete";
    folder = true;
    refuses = false;
    held: (() => void)[] | null = null;
    asked: string[] = [];
    timers: (() => void)[] = [];
    open = new Map<number, { query: Query; method: string; id: string }>();
    gallery = new Gallery();
    private last = 0;

    start(): void {
        const channel = {
            query: (query: Query) => this.query(query),
            cancel: (id: number) => this.open.delete(id),
        };
        const scheduler = {
            later: (_: number, run: () => void) => void this.timers.push(run),
            idle: (run: () => void) => run(),
        };
        new Feed(new Client(channel, () => null), this.gallery, scheduler).start();
    }

    news(payload: object): void {
        for (const { query, method, id } of this.open.values())
            if (method === "GalleryNotifications")
                query.onSuccess!(JSON.stringify({ reference_uniqueid: id, payload }));
    }

    lose(code = -1): void {
        const lost = [...this.open.values()];
        this.open.clear();
        for (const { query } of lost) query.onFailure!(code, "lost");
    }

    async runTimers(): Promise<void> {
        for (const run of this.timers.splice(0)) run();
        await tick();
    }

    private query(query: Query): number {
        const { method, uniqueid: id, payload } = JSON.parse(query.request);
        const key = ++this.last;
        this.open.set(key, { query, method, id });
        if (query.persistent) return key;
        this.asked.push(method);
        const answered = this.answer(method, payload.count);
        const answer = JSON.stringify({ reference_uniqueid: id, payload: answered });
        const send = () => this.open.delete(key) && query.onSuccess!(answer);
        if (this.held) this.held.push(send);
        else queueMicrotask(send);
        return key;
    }

    private answer(method: string, count: number): object {
        if (this.refuses) return { _return_code: -2147467259 };
        if (method === "GetSettings") return { settings: { path: "/gallery", trackerStatus: this.status } };
        if (method === "GetDriveInfo") return this.folder ? {} : { _return_code: -2147467259 };
        return { recents: this.records.slice(0, count) };
    }

    get titles(): string {
        const titles = [...this.gallery.captures.values()].map(({ title }) => title);
        return titles.sort().join(" ");
    }
}

/** A gallery with captures of these names, at which the feed has begun. */
async function begun(names: string, changes: Partial<Side> = {}): Promise<Side> {
    const side = new Side();
    side.records = [...names].map((name) => record(`G/${name}.png`));
    Object.assign(side, changes).start();
    await tick();
    return side;
}

const saved = (name: string) => ({ captureSaved: { ugc: record(`G/${name}.png`) } });
const deleted = (name: string) => ({ ugcDeleted: { ugc: record(`G/${name}.png`) } });

test("news that come while the list is on its way are newer than the list", async () => {
    const held: (() => void)[] = [];
    const side = await begun("ab", { held });
    side.news(saved("c"));
    side.news(deleted("a"));
    for (const send of held) send();
    await tick();
    assert.equal(side.titles, "b c");
    side.news(saved("d"));
    assert.equal(side.titles, "b c d");
});

test("a large gallery shows its latest captures before the rest is loaded", async () => {
    const dates = Array.from({ length: 1000 }, (_, index) => ({ date: dateAt(-index) }));
    const records = dates.map((date, index) => record(`G/${index}.png`, date));
    const held: (() => void)[] = [];
    const side = await begun("", { held, records });
    for (const send of held.splice(0)) send();
    await tick();
    assert.equal(side.gallery.captures.size, 300);
    for (const send of held.splice(0)) send();
    assert.equal(side.gallery.captures.size, 300);
    await tick();
    assert.equal(side.gallery.captures.size, 1000);
});

test("after a loss the page subscribes again and catches up; after a gap it only catches up", async () => {
    const side = await begun("a");
    side.records = [record("G/b.png")];
    side.lose();
    assert.equal(side.gallery.connection, "lost");
    assert.equal(side.titles, "a");
    await side.runTimers();
    assert.deepEqual([side.gallery.connection, side.titles], ["open", "b"]);
    side.records = [record("G/b.png"), record("G/c.png")];
    for (const { query } of [...side.open.values()]) query.onSuccess!('{"resync":true}');
    await tick();
    assert.equal(side.titles, "b c");
    assert.equal(side.open.size, 2);
    side.lose(4401);
    assert.equal(side.gallery.connection, "outdated");
});

test("a scan and a missing folder are watched until they are over, by one timer", async () => {
    const side = await begun("", { status: "TrackerUpdateInProgress" });
    assert.equal(side.gallery.status, "scanning");
    side.records = [record("G/a.png")];
    // One comes for each file that is looked through.
    const newFile = () => side.news({ galleryPathUpdateStatus: { status: "TrackerUpdateInProgress" } });
    const asked = side.asked.length;
    for (let file = 0; file < 50; ++file) newFile();
    await tick();
    assert.equal(side.asked.length, asked);
    await side.runTimers();
    assert.deepEqual([side.gallery.status, side.titles, side.timers.length], ["scanning", "a", 1]);
    side.status = "TrackerUpdateComplete";
    await side.runTimers();
    assert.deepEqual([side.gallery.status, side.timers.length], ["ready", 0]);
    for (let file = 0; file < 50; ++file) newFile();
    assert.deepEqual([side.gallery.status, side.timers.length], ["scanning", 1]);
    await side.runTimers();
    assert.equal(side.gallery.status, "ready");
    side.records = [];
    side.folder = false;
    side.news(deleted("a"));
    await tick();
    assert.equal(side.gallery.status, "missing");
    side.folder = true;
    await side.runTimers();
    // The captures come back later than the folder, and nothing says so.
    assert.deepEqual([side.gallery.status, side.timers.length], ["ready", 1]);
    side.records = [record("G/a.png")];
    await side.runTimers();
    await side.runTimers();
    assert.deepEqual([side.titles, side.timers.length], ["a", 0]);
});

test("a gallery that refuses for a while is asked again, over the same connection", async () => {
    const side = await begun("", { refuses: true });
    side.refuses = false;
    side.records = [record("G/a.png")];
    await side.runTimers();
    assert.deepEqual([side.gallery.connection, side.titles, side.open.size], ["open", "a", 2]);
});

/** Thumbnails whose loads end when the test says so. */
function thumbnails(cancelable = true, cacheBytes = 1000) {
    const loads = new Map<string, (found: Found | null | undefined) => void>();
    const asked: string[] = [];
    const loader = ({ title }: Capture) => {
        asked.push(title);
        const done = new Promise<Found | null | undefined>((resolve) => loads.set(title, resolve));
        return { done, cancel: () => cancelable && loads.get(title)!(undefined) };
    };
    const found = new Thumbnails(loader, () => {}, { inFlight: 3, cacheBytes });
    const end = async (title: string, ended: Found | null | undefined = { source: title, bytes: 100 }) => {
        loads.get(title)!(ended);
        await tick();
    };
    return { thumbnails: found, asked, end, lose: (title: string) => (loads.get(title)!(undefined), tick()) };
}

const named = (names: string) =>
    [...names].map((name) => capture(`G/${name}.png`, { date: dateAt(name.charCodeAt(0)) }));

test("few thumbnails are under way, the wanted ones, and what left the view is not asked for", async () => {
    const { thumbnails: all, asked, end } = thumbnails();
    all.want(named("abcdefgh"));
    assert.deepEqual([asked.join(""), all.inFlight], ["abc", 3]);
    await end("b");
    all.want(named("cxyz"));
    assert.equal(all.inFlight, 3);
    await tick();
    assert.deepEqual([asked.join(""), all.inFlight], ["abcdxy", 3]);
    for (const name of "cxyz") await end(name);
    assert.deepEqual([asked.join(""), all.inFlight], ["abcdxyz", 0]);
    all.want(named("bcxyz"));
    assert.equal(all.inFlight, 0);
});

test("what cannot be called back still counts as under way, and is kept when it comes", async () => {
    const { thumbnails: all, asked, end } = thumbnails(false);
    all.want(named("abc"));
    all.want(named("xyz"));
    assert.deepEqual([asked.join(""), all.inFlight], ["abc", 3]);
    await end("a");
    assert.equal(asked.join(""), "abcx");
    assert.deepEqual(all.get(named("a")[0]!), { source: "a", bytes: 100 });
});

test("the cache drops what was used longest ago", async () => {
    const { thumbnails: all, end } = thumbnails(true, 250);
    const [a, b, c] = named("abc") as [Capture, Capture, Capture];
    all.want([a, b]);
    await end("a");
    await end("b");
    all.get(a);
    all.want([c]);
    await end("c");
    const kept = [a, b, c].map((one) => all.get(one) !== undefined);
    assert.deepEqual([kept, all.cachedBytes], [[true, false, true], 200]);
});

test("a broken file is asked for once, until it changes or somebody tries again; a lost connection breaks none", async () => {
    const { thumbnails: all, asked, end, lose } = thumbnails();
    const [a] = named("a") as [Capture];
    all.want([a]);
    await end("a", null);
    all.want([a]);
    assert.deepEqual([asked.length, all.get(a)], [1, "broken"]);
    all.want([{ ...a, version: "newer" }]);
    assert.equal(asked.length, 2);
    all.retry(a);
    assert.deepEqual([asked.length, all.get(a)], [3, undefined]);
    all.pause(true);
    await lose("a");
    all.want([a]);
    assert.deepEqual([asked.length, all.get(a)], [3, undefined]);
    all.pause(false);
    assert.equal(asked.length, 4);
});
