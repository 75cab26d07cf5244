// Deleting with a way back, and what a rectangle over the grid selects.
import assert from "node:assert/strict";
import { test } from "node:test";
import { ApiError, CANCELED } from "../src/api/envelope.js";
import { Arrangement } from "../src/model/arrangement.js";
import { capturesWithin } from "../src/model/band.js";
import { Deletions, UNDO_MS, type Answer } from "../src/model/deletions.js";
import { FileJob, folderFrom } from "../src/model/file-job.js";
import { Gallery } from "../src/model/gallery.js";
import { Layout } from "../src/model/layout.js";
import { capture, dateAt } from "./captures.js";

class Setup {
    readonly gallery = new Gallery(undefined, (report) => report());
    readonly asked: string[] = [];
    hasTrash = false;
    /** Files that neither go nor come back. */
    stuck = new Set<string>();
    timers: { at: number; run: () => void }[] = [];
    now = 0;
    readonly deletions = new Deletions(this.gallery, this, this);

    constructor(readonly captures = ["a", "b", "c", "d"].map((name) => capture(`G/${name}.png`))) {
        this.gallery.replace(captures);
    }

    get shown(): string {
        const { arrangement } = this.gallery;
        const titles = arrangement.between(0, arrangement.length - 1).map(({ title }) => title);
        return titles.sort().join("");
    }

    later(ms: number, run: () => void): () => void {
        const timer = { at: this.now + ms, run };
        this.timers.push(timer);
        return () => void (this.timers = this.timers.filter((one) => one !== timer));
    }

    async pass(ms: number): Promise<void> {
        this.now += ms;
        const due = this.timers.filter(({ at }) => at <= this.now);
        this.timers = this.timers.filter(({ at }) => at > this.now);
        for (const { run } of due) run();
        for (let turn = 0; turn < 20; ++turn) await null;
    }

    private async answer(method: string, files: readonly string[]): Promise<Answer[]> {
        this.asked.push(`${method} ${files.map((file) => file.at(-5)).join("")}`);
        return files.map((file) => ({ file, error: this.stuck.has(file) ? "stuck" : "" }));
    }

    trash = (files: readonly string[]) => this.answer("trash", files);
    restore = (files: readonly string[]) => this.answer("restore", files);
    async remove(file: string): Promise<void> {
        const [{ error }] = (await this.answer("remove", [file])) as [Answer];
        if (error) throw new Error(error);
    }
}

test("what is deleted is hidden at once, and deleted when nobody has undone it in time", async () => {
    const setup = new Setup();
    const { deletions, gallery } = setup;
    const [a, b, c, d] = setup.captures as [never, never, never, never];
    deletions.delete([a]);
    await setup.pass(UNDO_MS / 2);
    deletions.delete([b, c]);
    assert.equal(setup.shown, "d");
    // A list that is loaded meanwhile does not bring them back, nor does a change of the file.
    gallery.replace(setup.captures);
    gallery.put(capture("G/b.png", { date: dateAt(9) }));
    assert.equal(setup.shown, "d");
    await setup.pass(UNDO_MS / 2 - 1);
    assert.deepEqual(setup.asked, []);
    await setup.pass(1);
    assert.deepEqual(setup.asked, ["remove a"]);
    assert.equal((await deletions.undo())?.captures.length, 2);
    assert.equal(setup.shown, "bcd");
    deletions.delete([d]);
    deletions.callOff();
    await setup.pass(10 * UNDO_MS);
    assert.deepEqual([setup.shown, setup.asked, deletions.undoable], ["bcd", ["remove a"], undefined]);
    await deletions.deleteForGood([d]);
    assert.deepEqual([setup.shown, setup.asked], ["bc", ["remove a", "remove d"]]);
});

test("what cannot be deleted comes back with the reason", async () => {
    const setup = new Setup();
    const { deletions } = setup;
    setup.stuck.add("/gallery/G/b.png");
    deletions.delete(setup.captures.slice(0, 3));
    await setup.pass(UNDO_MS);
    assert.deepEqual(setup.asked, ["remove a", "remove b", "remove c"]);
    assert.equal(setup.shown, "bd");
    const reasons = () => deletions.batches[0]!.failures.map(({ capture, reason }) => capture.title + reason);
    assert.deepEqual(reasons(), ["bstuck"]);
    deletions.dismiss(deletions.batches[0]!);
    // With a trash: the one that went can be restored, the other one is still there.
    setup.hasTrash = true;
    deletions.delete(setup.gallery.arrangement.between(0, 1));
    await setup.pass(UNDO_MS);
    assert.deepEqual([setup.shown, reasons()], ["b", ["bstuck"]]);
    setup.trash = () => Promise.reject(new Error("no trash"));
    deletions.delete(setup.gallery.arrangement.between(0, 0));
    await setup.pass(UNDO_MS);
    assert.deepEqual([setup.shown, deletions.batches[1]!.failures[0]!.reason], ["b", "no trash"]);
    await deletions.undo();
    assert.deepEqual([setup.asked.slice(3), setup.shown], [["trash bd", "restore d"], "bd"]);
});

test("a rectangle selects the cells that it touches, in all groups and whatever their order", () => {
    const captures = Array.from({ length: 11 }, (_, index) =>
        capture(`${index < 5 ? "A" : "B"}/${index}.png`, { date: dateAt(-index) }),
    );
    const shown = new Arrangement(captures, "game", "newest");
    // Three columns of 220 with their gap: A has rows of 3 and 2 below 50, B of 3 and 3.
    const layout = new Layout(shown, { width: 640, cell: 200, gap: 20, title: 30, header: 50 });
    const row = layout.rowHeight;
    const found = (x1: number, y1: number, x2: number, y2: number) =>
        capturesWithin({ x: x1, y: y1 }, { x: x2, y: y2 }, layout, shown)
            .map(({ title }) => title)
            .join(" ");
    assert.equal(found(210, 60, 230, 70), "1");
    assert.equal(found(230, 70, -5, 60), "0 1");
    assert.equal(found(205, 60, 215, 70), "", "between two cells");
    assert.equal(found(0, 50 + row - 15, 600, 50 + row - 5), "", "between two rows");
    assert.equal(found(650, 60, 700, 70), "", "beside the last column");
    assert.equal(found(450, 50 + row + 5, 600, 50 + row + 9), "", "where the last row has no cell");
    assert.equal(found(10, 60, 10, 9000), "0 3 5 8");
});

test("files are copied one after the other until somebody stops it or nobody answers", async () => {
    const captures = ["a", "b", "c"].map((name) => capture(`G/${name}.png`));
    const asked: string[] = [];
    let answer: (error?: Error) => void = () => {};
    const transfer = (source: string, destination: string): Promise<void> => {
        asked.push(`${source} ${destination}`);
        return new Promise((resolve, reject) => (answer = (error) => (error ? reject(error) : resolve())));
    };
    const jobTo = (folder: string) => new FileJob(captures, folderFrom(folder), transfer, () => {});
    const job = jobTo(" /x// ");
    const done = job.run();
    answer(new ApiError(5, "exists"));
    for (let turn = 0; turn < 5; ++turn) await null;
    job.stop();
    answer();
    await done;
    assert.deepEqual(asked, ["/gallery/G/a.png /x/a.png", "/gallery/G/b.png /x/b.png"]);
    assert.deepEqual([job.state, job.tried, job.succeeded], ["stopped", 2, 1]);
    assert.deepEqual(job.failures, [{ capture: captures[0], reason: "exists" }]);
    const lost = jobTo("/");
    const ended = lost.run();
    answer(new ApiError(CANCELED, "lost"));
    await ended;
    assert.deepEqual([asked.at(-1), asked.length, lost.state], ["/gallery/G/a.png /a.png", 3, "stopped"]);
});
