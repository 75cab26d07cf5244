// What is shown, in which order, where, and what stays selected.
import assert from "node:assert/strict";
import { test } from "node:test";
import { Arrangement, GROUPINGS } from "../src/model/arrangement.js";
import type { Capture } from "../src/model/capture.js";
import { matcher, NO_FILTER } from "../src/model/filter.js";
import { Gallery } from "../src/model/gallery.js";
import { HEIGHT_LIMIT, Layout, Scale } from "../src/model/layout.js";
import { target } from "../src/model/navigation.js";
import { SORTS } from "../src/model/order.js";
import { Selection } from "../src/model/selection.js";
import { capture, dateAt } from "./captures.js";

const measures = { width: 700, cell: 200, gap: 20, title: 30, header: 50 };
const titles = (arrangement: Arrangement) =>
    arrangement.groups.map(({ key, captures }) => [key, captures.map(({ title }) => title).join(" ")]);

// Repeats itself, so that a failure can be repeated.
function random(seed: number): () => number {
    return () => (seed = (seed * 1103515245 + 12345) % 2147483648) / 2147483648;
}

function many(count: number, next = random(7)): Capture[] {
    return Array.from({ length: count }, (_, index) =>
        capture(`Game ${Math.floor(next() * 9)}/c${index}.png`, {
            date: dateAt(Math.floor(next() * 9000)),
            fileSizeKB: Math.floor(next() * 5),
            msDuration: Math.floor(next() * 3),
        }),
    );
}

test("live changes lead to the order that sorting anew leads to", () => {
    const next = random(3);
    for (const grouping of GROUPINGS)
        for (const sort of SORTS) {
            const all = many(300);
            const live = new Arrangement(all.slice(0, 150), grouping, sort);
            const kept = all.filter(() => next() < 0.7);
            for (const one of all.slice(150)) live.insert(one);
            for (const one of all) if (!kept.includes(one)) live.remove(one);
            live.count();
            const anew = new Arrangement(kept, grouping, sort);
            // Groups by game keep the places in which they are looked at.
            const sorted = (arrangement: Arrangement) =>
                grouping === "game" ? titles(arrangement).sort() : titles(arrangement);
            assert.deepEqual(sorted(live), sorted(anew), `${grouping} ${sort}`);
            assert.equal(live.length, kept.length);
            for (let index = 0; index < live.length; ++index)
                assert.equal(live.indexOf(live.at(index)!), index);
            assert.deepEqual(
                [live.at(-1), live.at(live.length), live.indexOf(capture("Elsewhere/x.png"))],
                [undefined, undefined, -1],
            );
        }
});

test("groups by game are ordered by their latest capture, and names by number", () => {
    const found = ["A/c10.png", "A/c9.png", "B/c2.png"].map((name, index) =>
        capture(name, { date: dateAt(index) }),
    );
    assert.deepEqual(titles(new Arrangement(found, "game", "newest")), [
        ["B", "c2"],
        ["A", "c9 c10"],
    ]);
    assert.deepEqual(titles(new Arrangement(found, "game", "name")), [
        ["A", "c9 c10"],
        ["B", "c2"],
    ]);
});

test("filters combine, and the search folds case and accents", () => {
    const plain = capture("Drachenküste/Bucht.png");
    const highlight = capture("Rally/Photo finish.mp4", {
        fileType: "video",
        fileSubType: "Highlight",
        highlightName: "Victory",
    });
    const captioned = capture("Rally/Lap.png", {
        memeInfo: { topBarText: "When it works", bottomBarText: "" },
    });
    const all = [plain, highlight, captioned];
    const cases: [object, Capture[]][] = [
        [{}, all],
        [{ search: " DRACHENKUSTE  buc " }, [plain]],
        [{ search: "victory" }, [highlight]],
        [{ search: "works rally" }, [captioned]],
        [{ search: "works bucht" }, []],
        [{ game: "Rally" }, [highlight, captioned]],
        [{ game: "Rally", kind: "image" }, [captioned]],
        [{ highlights: true }, [highlight]],
        [{ captions: true, highlights: true }, []],
        [{ captions: true }, [captioned]],
    ];
    for (const [filter, expected] of cases)
        assert.deepEqual(all.filter(matcher({ ...NO_FILTER, ...filter })), expected, JSON.stringify(filter));
});

test("rows meet without gaps at any height, and each capture is in the row that is drawn for it", () => {
    const arrangement = new Arrangement(many(500), "game", "newest");
    const layout = new Layout(arrangement, measures);
    assert.deepEqual([layout.columns, layout.cellWidth, layout.cellHeight], [3, 220, 124]);
    const rows = layout.rowsBetween(0, layout.height);
    assert.equal(rows.length, layout.rowCount);
    rows.forEach(({ number }, index) => assert.equal(number, index + 1));
    const heights = rows.map(({ count }) => (count === 0 ? measures.header : layout.rowHeight));
    rows.forEach(({ top }, index) =>
        assert.equal(top, index === 0 ? 0 : rows[index - 1]!.top + heights[index - 1]!),
    );
    assert.equal(rows.at(-1)!.top + heights.at(-1)!, layout.height);
    const captures = rows.reduce((sum, { count }) => sum + count, 0);
    assert.equal(captures, 500);
    for (const row of rows.filter(({ count }) => count > 0))
        for (let index = row.first; index < row.first + row.count; ++index) {
            assert.equal(layout.topOf(index), row.top);
            assert.deepEqual(layout.rowOf(index), row);
        }
    for (let top = 0; top < layout.height; top += 333) {
        const seen = rows.filter((row, index) => row.top < top + 900 && row.top + heights[index]! > top);
        assert.deepEqual(layout.rowsBetween(top, top + 900), seen);
    }
    assert.equal(new Layout(arrangement, { ...measures, width: 10 }).columns, 1);
});

test("a layout higher than a browser can scroll is reached to its ends", () => {
    const height = 3 * HEIGHT_LIMIT;
    const scale = new Scale(height, 1000);
    assert.equal(scale.height, HEIGHT_LIMIT);
    const last = HEIGHT_LIMIT - 1000;
    assert.deepEqual([scale.toLayout(0), scale.toLayout(last)], [0, height - 1000]);
    assert.equal(Math.round(scale.toScroller(scale.toLayout(12345))), 12345);
    // What is at the top of the view is drawn at the top of the view.
    assert.equal(scale.drawnTop(scale.toLayout(last), last), last);
    assert.equal(new Scale(5000, 1000).drawnTop(300, 200), 300);
});

test("keys lead through the rows of all groups and stop at the ends", () => {
    // Rows of 3: A has 4, B has 5.
    const found = [..."abcd"]
        .map((name) => capture(`A/${name}.png`))
        .concat([..."efghi"].map((name) => capture(`B/${name}.png`)));
    const arrangement = new Arrangement(found, "game", "name");
    const grid = { arrangement, layout: new Layout(arrangement, measures), pageRows: 2 };
    const cases: [number, string, number][] = [
    [0, "ArrowRight", 1], [0, "ArrowLeft", 0], [8, "ArrowRight", 8], [1, "ArrowDown", 3], [3, "ArrowDown", 4],
    [6, "ArrowDown", 8], [8, "ArrowDown", 8], [6, "ArrowUp", 3], [1, "ArrowUp", 1], [0, "PageDown", 4],
    [8, "PageUp", 3], [5, "Home", 4], [5, "End", 6], [5, "ctrl Home", 0], [5, "ctrl End", 8],
  ]; // prettier-ignore
    for (const [from, keys, to] of cases) {
        const key = keys.replace("ctrl ", "");
        const next = target(from, { key, ctrl: key !== keys, rightToLeft: false }, grid);
        assert.equal(next, to, `${keys} from ${from}`);
    }
    assert.equal(target(1, { key: "ArrowLeft", ctrl: false, rightToLeft: true }, grid), 2);
    assert.equal(target(1, { key: "x", ctrl: false, rightToLeft: false }, grid), null);
});

test("a range follows the order that is shown, and never runs from where nothing is", () => {
    const gallery = new Gallery({ ...NO_FILTER, grouping: "game", sort: "name" }, (report) => report());
    const found = [..."abcdef"].map((name) =>
        capture(`G/${name}.png`, { fileType: name < "e" ? "image" : "video" }),
    );
    gallery.replace(found);
    const [a, b, c, d] = found as [Capture, Capture, Capture, Capture];
    const selection = new Selection();
    const titlesOf = (captures: Capture[]) => captures.map(({ title }) => title);
    const selected = () => titlesOf(selection.of(gallery.captures)).sort().join("");
    const extend = (to: Capture) => selection.extendTo(to, gallery.arrangement, gallery.captures);
    extend(c);
    assert.equal(selected(), "c");
    extend(a);
    assert.equal(selected(), "abc");
    extend(d);
    assert.equal(selected(), "cd");
    selection.toggle(a);
    extend(b);
    assert.equal(selected(), "abcd");
    selection.drop(a.path);
    extend(d);
    assert.equal(selected(), "d");
    selection.only(found[5]!);
    gallery.setView({ kind: "image" });
    selection.keepShown(gallery.isShown, gallery.captures);
    assert.equal(selected(), "");
    extend(b);
    assert.equal(selected(), "b");
});

test("a burst of changes is one report, and captures that do not match are not announced", () => {
    const reports: (() => void)[] = [];
    const gallery = new Gallery(undefined, (report) => reports.push(report));
    gallery.replace(many(20));
    reports.pop()!();
    const changes: string[][] = [];
    gallery.onChange(({ added }) => changes.push(added.map(({ title }) => title)));
    gallery.setView({ kind: "video" });
    for (const name of ["one", "two", "gone"])
        gallery.put(capture(`Rally/${name}.mp4`, { fileType: "video" }));
    gallery.put(capture("Rally/one.mp4", { fileType: "video", fileSizeKB: 9 }));
    gallery.put(capture("Rally/picture.png"));
    gallery.remove("/gallery/Rally/gone.mp4");
    gallery.remove("/gallery/Rally/unknown.mp4");
    assert.equal(reports.length, 1);
    reports.pop()!();
    assert.deepEqual(changes, [["two", "one"]]);
    assert.deepEqual([gallery.arrangement.length, gallery.captures.size], [2, 23]);
    assert.ok(gallery.games.includes("Rally"));
});
