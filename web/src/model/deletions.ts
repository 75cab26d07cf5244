// Captures that are to be deleted. They are hidden at once, and nothing happens to them for as long as one can change
// one's mind. What cannot be deleted is shown again.
import type { Capture } from "./capture.js";
import type { Gallery } from "./gallery.js";

export interface Clock {
    /** Returns a function that calls it off. */
    later(ms: number, run: () => void): () => void;
}

/** What became of one file; `error` is empty when all went well. */
export interface Answer {
    readonly file: string;
    readonly error: string;
}

export interface Remover {
    /** Whether there is a trash, from which files come back. */
    readonly hasTrash: boolean;
    trash(files: readonly string[]): Promise<readonly Answer[]>;
    restore(files: readonly string[]): Promise<readonly Answer[]>;
    /** Deletes a file for good; rejects with the reason when it does not. */
    remove(file: string): Promise<void>;
}

export interface Failure {
    readonly capture: Capture;
    readonly reason: string;
}

/** Captures that go together. */
export interface Batch {
    readonly id: number;
    captures: readonly Capture[];
    state:
        | "waiting" // hidden; nothing has been deleted
        | "deleting"
        | "trashed" // can be restored
        | "restoring"
        | "failed"; // the failures say why
    failures: readonly Failure[];
    /** Trashed ones are mentioned for a while, and can be restored beyond that. */
    mentioned: boolean;
}

/** How long one can change one's mind. */
export const UNDO_MS = 8000;
const MENTIONED_MS = 20_000;
// How many trashed batches can be restored.
const HISTORY = 20;
const NO_ANSWER = "There was no answer for this file";

export class Deletions {
    /** The latest is the last. */
    batches: readonly Batch[] = [];
    readonly #timers = new Map<number, () => void>();
    #listener = (): void => {};
    #lastId = 0;

    constructor(
        private readonly gallery: Gallery,
        private readonly remover: Remover,
        private readonly clock: Clock,
    ) {}

    get hasTrash(): boolean {
        return this.remover.hasTrash;
    }

    onChange(listener: () => void): void {
        this.#listener = listener;
    }

    /** Deletes them unless somebody undoes it in time. */
    delete(captures: readonly Capture[]): void {
        const batch = this.#begin(captures);
        if (!batch) return;
        this.#in(UNDO_MS, batch, () => void this.#carryOut(batch, this.remover.hasTrash));
        this.#changed();
    }

    /** Deletes them now; they do not come back. */
    async deleteForGood(captures: readonly Capture[]): Promise<void> {
        const batch = this.#begin(captures);
        if (batch) await this.#carryOut(batch, false);
    }

    /** The batch that `undo` would take back. */
    get undoable(): Batch | undefined {
        return this.batches.findLast(({ state }) => state === "waiting" || state === "trashed");
    }

    /** Takes back a batch, or the latest that can be. Returns it, or undefined when there is none. */
    async undo(batch = this.undoable): Promise<Batch | undefined> {
        if (batch?.state === "waiting") {
            this.gallery.show(batch.captures);
            this.#drop(batch);
            return batch;
        }
        if (batch?.state !== "trashed") return undefined;
        batch.state = "restoring";
        batch.mentioned = true;
        this.#changed();
        const failures = await this.#failuresOf(batch, (files) => this.remover.restore(files));
        const lost = new Set(failures.map(({ capture }) => capture));
        // A gallery that has not noticed that they were gone does not report that they are back.
        for (const capture of batch.captures)
            if (!lost.has(capture) && !this.gallery.captures.has(capture.path)) this.gallery.put(capture);
        this.#end(batch, failures);
        return batch;
    }

    /** Takes back everything that waits, as when the page is left. */
    callOff(): void {
        for (const batch of this.batches) if (batch.state === "waiting") void this.undo(batch);
    }

    /** Somebody has read what there is to say about a batch. */
    dismiss(batch: Batch): void {
        if (batch.state === "failed") return this.#drop(batch);
        batch.mentioned = false;
        this.#changed();
    }

    #begin(all: readonly Capture[]): Batch | null {
        const captures = all.filter((capture) => !this.gallery.isHidden(capture));
        if (captures.length === 0) return null;
        this.gallery.hide(captures);
        const id = ++this.#lastId;
        const batch: Batch = { id, captures, state: "waiting", failures: [], mentioned: true };
        this.batches = [...this.batches, batch];
        return batch;
    }

    async #carryOut(batch: Batch, toTrash: boolean): Promise<void> {
        this.#timers.delete(batch.id);
        batch.state = "deleting";
        this.#changed();
        const failures = toTrash
            ? await this.#failuresOf(batch, (files) => this.remover.trash(files))
            : await this.#removeEach(batch);
        const kept = new Set(failures.map(({ capture }) => capture));
        const gone = batch.captures.filter((capture) => !kept.has(capture));
        for (const { path } of gone) this.gallery.remove(path);
        this.gallery.show(batch.captures);
        if (!toTrash || gone.length === 0) return this.#end(batch, failures);
        this.#keepInHistory(batch, gone, failures);
    }

    #keepInHistory(batch: Batch, gone: readonly Capture[], failures: readonly Failure[]): void {
        batch.captures = gone;
        batch.failures = failures;
        batch.state = "trashed";
        const trashed = this.batches.filter(({ state }) => state === "trashed");
        if (trashed.length > HISTORY) this.#drop(trashed[0]!);
        // Failures stay until somebody has read them.
        if (failures.length === 0) this.#in(MENTIONED_MS, batch, () => this.dismiss(batch));
        this.#changed();
    }

    async #removeEach({ captures }: Batch): Promise<Failure[]> {
        const failures: Failure[] = [];
        for (const capture of captures)
            await this.remover.remove(capture.path).catch((error: Error) => {
                failures.push({ capture, reason: error.message });
            });
        return failures;
    }

    async #failuresOf(
        { captures }: Batch,
        ask: (files: readonly string[]) => Promise<readonly Answer[]>,
    ): Promise<Failure[]> {
        const answers = await ask(captures.map(({ path }) => path)).catch((error: Error) =>
            captures.map(({ path }) => ({ file: path, error: error.message || NO_ANSWER })),
        );
        const byFile = new Map(answers.map(({ file, error }) => [file, error]));
        return captures.flatMap((capture) => {
            const reason = byFile.get(capture.path) ?? NO_ANSWER;
            return reason === "" ? [] : [{ capture, reason }];
        });
    }

    #end(batch: Batch, failures: readonly Failure[]): void {
        if (failures.length === 0) return this.#drop(batch);
        batch.failures = failures;
        batch.state = "failed";
        this.#changed();
    }

    #drop(batch: Batch): void {
        this.#timers.get(batch.id)?.();
        this.#timers.delete(batch.id);
        this.batches = this.batches.filter((one) => one !== batch);
        this.#changed();
    }

    #in(ms: number, batch: Batch, run: () => void): void {
        this.#timers.get(batch.id)?.();
        this.#timers.set(batch.id, this.clock.later(ms, run));
    }

    #changed(): void {
        this.batches = [...this.batches];
        this.#listener();
    }
}
