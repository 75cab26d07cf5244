// What one looks at alone, how it is zoomed, and what is cut from it.
import assert from "node:assert/strict";
import { test } from "node:test";
import { clipPath, parseTime } from "../src/model/clip-name.js";
import { Gallery } from "../src/model/gallery.js";
import { exactFrame, TrimRange } from "../src/model/trim-range.js";
import { Viewing } from "../src/model/viewing.js";
import { fitted, WHOLE, Zooming } from "../src/model/zoom.js";
import { capture, dateAt } from "./captures.js";

const FRAME = 1000 / 30;

test("the viewer goes through what is shown, and on to the next when its capture goes", () => {
    const gallery = new Gallery(undefined, (report) => report());
    const all = [5, 4, 3, 2, 1, 0].map((minute) => capture(`A/${minute}.png`, { date: dateAt(minute) }));
    gallery.replace(all);
    const viewing = new Viewing(gallery);
    const titles = () => viewing.nearby().map(({ title }) => title);
    viewing.open(all[2]!);
    assert.deepEqual(titles(), ["2", "1", "4"]);
    assert.ok(viewing.step(-1));
    assert.deepEqual([viewing.current?.title, titles()], ["4", ["5", "3"]]);
    gallery.remove(all[1]!.path);
    assert.equal(viewing.follow()?.title, "3");
    // New ones before it do not move it.
    gallery.put(capture("A/9.png", { date: dateAt(9) }));
    assert.equal(viewing.follow()?.title, "3");
    assert.ok(viewing.step(1));
    assert.equal(viewing.current?.title, "2");
    viewing.held = all[3]!.path;
    gallery.remove(all[3]!.path);
    assert.equal(viewing.follow()?.title, "2");
    gallery.put(capture("A/2.png", { date: dateAt(2), fileSizeKB: 7 }));
    assert.equal(viewing.follow()?.sizeKB, 7);
    viewing.step(1);
    viewing.step(1);
    assert.equal(viewing.canStep(1), false);
    gallery.remove("/gallery/A/0.png");
    assert.equal(viewing.follow()?.title, "1");
    gallery.replace([]);
    assert.equal(viewing.follow(), null);
});

test("zooming keeps the point below the pointer, and the picture in the view", () => {
    const view = { width: 1000, height: 600 };
    const fit = fitted({ width: 4000, height: 2000 }, view);
    assert.deepEqual(fit, { width: 1000, height: 500 });
    assert.deepEqual(fitted({ width: 100, height: 50 }, view), { width: 100, height: 50 });
    const zooming = new Zooming(fit, view, 4);
    const at = { x: 300, y: -100 };
    const zoomed = zooming.by(3, WHOLE, at);
    const below = (zoom: typeof zoomed) => [(at.x - zoom.x) / zoom.scale, (at.y - zoom.y) / zoom.scale];
    assert.deepEqual(below(zoomed), [300, -100]);
    assert.deepEqual(zooming.pan(zoomed, { x: 9999, y: -9999 }), { scale: 3, x: 1000, y: -450 });
    // Less high than the view, it stays in the middle.
    assert.equal(Math.abs(zooming.by(1.1, WHOLE, at).y), 0);
    assert.equal(zooming.by(1e6, WHOLE, at).scale, 16);
    const { scale, x, y } = zooming.by(1e-6, zoomed, at);
    assert.deepEqual([scale, Math.abs(x), Math.abs(y)], [1, 0, 0]);
});

test("a range keeps to frames and to its ends", () => {
    // An hour of them has to end at the same frame.
    const inAnHour = [16.67, 33.37, 41.71, 13.95, 0].map((frame) => Math.round(3.6e6 / exactFrame(frame)));
    assert.deepEqual(inAnHour, [216_000, 107_892, 86_314, 258_065, 108_000]);
    const range = new TrimRange(10_010, FRAME, [0, 2000, 4000]);
    assert.ok(range.isWhole);
    range.setStart(1010);
    assert.equal(Math.round(range.start), 1000);
    range.setEnd(500);
    assert.equal(Math.round(range.length), Math.round(FRAME));
    range.setEnd(99_999);
    assert.equal(range.end, 10_010);
    range.setStart(99_999);
    assert.ok(range.start < range.end);
    range.setStart(2500);
    range.setLength(1500);
    assert.deepEqual(range.request, { headTrimMs: 2500, lengthMs: 1500 });
    assert.equal(range.keyframeOfStart, 2000);
    range.setStart(2000);
    assert.equal(range.keyframeOfStart, 2000);
    assert.deepEqual([range.nextKeyframe(2000, 1), range.nextKeyframe(2000, -1)], [4000, 0]);
    assert.deepEqual([range.nextKeyframe(4000, 1), range.ticks(2)], [10_010, []]);
    const key = (name: string, altKey = false) =>
        range.keyTarget(3000, { key: name, altKey }, 10, 9000) ?? NaN;
    assert.deepEqual(
        ["ArrowLeft", "ArrowUp", "PageDown", "Home", "End", "x"].map((name) => Math.round(key(name))),
        [2967, 3033, 2667, 10, 9000, NaN],
    );
    assert.deepEqual([key("ArrowLeft", true), key("ArrowRight", true)], [2000, 4000]);
});

test("clips get names that are free, and times are read as people write them", () => {
    const taken = new Set(["/g/Race.mp4", "/g/Race (clip).mp4", "/g/Race (clip 2).mp4"]);
    const name = (path: string) => clipPath(path, (one) => taken.has(one));
    assert.equal(name("/g/Race.mp4"), "/g/Race (clip 3).mp4");
    assert.equal(name("/g/Race (clip 2).mp4"), "/g/Race (clip 3).mp4");
    const times = ["62.5", " 1:02,5 ", "1:00:00", "", "1:-2", "a", "1:2:3:4", "1e3"];
    assert.deepEqual(times.map(parseTime), [62_500, 62_500, 3_600_000, null, null, null, null, null]);
});
