// Which captures are selected. Everything is kept by path: places change while captures come and go.
import type { Arrangement } from "./arrangement.js";
import type { Capture } from "./capture.js";

export class Selection {
    readonly #paths = new Set<string>();
    #anchor: string | null = null;
    // What the last range added, so that a smaller range takes it away again.
    #range: string[] = [];

    get size(): number {
        return this.#paths.size;
    }

    has(capture: Capture): boolean {
        return this.#paths.has(capture.path);
    }

    list(): readonly string[] {
        return [...this.#paths];
    }

    /** Selects these, and nothing else; ranges begin at the first one. */
    set(paths: readonly string[]): void {
        this.clear();
        for (const path of paths) this.#paths.add(path);
        this.#anchor = paths[0] ?? null;
    }

    /** The selected captures among these. */
    of(captures: ReadonlyMap<string, Capture>): Capture[] {
        return [...this.#paths].flatMap((path) => captures.get(path) ?? []);
    }

    clear(): void {
        this.#paths.clear();
        this.#anchor = null;
        this.#range = [];
    }

    only(capture: Capture): void {
        this.clear();
        this.#paths.add(capture.path);
        this.#anchor = capture.path;
    }

    toggle(capture: Capture): void {
        if (!this.#paths.delete(capture.path)) this.#paths.add(capture.path);
        this.#anchor = capture.path;
        this.#range = [];
    }

    add(captures: Iterable<Capture>): void {
        for (const { path } of captures) this.#paths.add(path);
    }

    /**
     * Selects from the anchor to this capture in the order that is shown. When the anchor is not shown any more, only
     * this one: a range from nowhere could take in thousands that nobody sees.
     */
    extendTo(capture: Capture, shown: Arrangement, captures: ReadonlyMap<string, Capture>): void {
        const anchor = this.#anchor === null ? undefined : captures.get(this.#anchor);
        const from = anchor ? shown.indexOf(anchor) : -1;
        if (from < 0) return this.only(capture);
        for (const path of this.#range) this.#paths.delete(path);
        const covered = shown.between(from, shown.indexOf(capture)).map(({ path }) => path);
        this.#range = covered.filter((path) => !this.#paths.has(path));
        for (const path of covered) this.#paths.add(path);
    }

    /** Captures that are gone are selected no longer. */
    drop(path: string): void {
        this.#paths.delete(path);
        if (this.#anchor === path) this.#anchor = null;
    }

    /** Nothing stays selected that is not shown: an action on the selection must not reach it. */
    keepShown(shown: (capture: Capture) => boolean, captures: ReadonlyMap<string, Capture>): void {
        for (const path of [...this.#paths]) {
            const capture = captures.get(path);
            if (!capture || !shown(capture)) this.drop(path);
        }
    }
}
