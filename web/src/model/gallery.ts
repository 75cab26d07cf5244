// The captures that the page knows, and those of them that it shows.
import { Arrangement, type Grouping } from "./arrangement.js";
import type { Capture } from "./capture.js";
import { matcher, NO_FILTER, type Filter } from "./filter.js";
import { compareTexts, type Sort } from "./order.js";

export interface View extends Filter {
    readonly grouping: Grouping;
    readonly sort: Sort;
}

export type Status =
    | "loading"
    | "scanning" // the gallery is being looked through; what is known already is shown
    | "ready"
    | "missing"; // the gallery's folder is not there, as when its drive is unplugged

export type Connection = "open" | "lost" | "outdated";

/** What has happened since the last report. */
export interface Change {
    /** Captures that came while the page was open, and are shown. */
    readonly added: readonly Capture[];
}

type Listener = (change: Change) => void;

export class Gallery {
    readonly captures = new Map<string, Capture>();
    /** Changes only with a report: until then views hold places in it. */
    arrangement: Arrangement;
    status: Status = "loading";
    connection: Connection = "open";
    folder = "";
    readonly #listeners = new Set<Listener>();
    #passes: (capture: Capture) => boolean;
    // Paths of what is about to be deleted.
    readonly #hidden = new Set<string>();
    #added: Capture[] = [];
    #rearranged = false;
    #scheduled = false;
    #gameNames: string[] | null = null;
    // For the next report, unless everything is arranged anew.
    #edits: ((arrangement: Arrangement) => void)[] = [];

    /** `schedule` runs a function soon; all changes until then are reported, and drawn, at once. */
    constructor(
        public view: View = { ...NO_FILTER, grouping: "day", sort: "newest" },
        private readonly schedule: (report: () => void) => void = queueMicrotask,
    ) {
        this.#passes = matcher(this.view);
        this.arrangement = new Arrangement([], view.grouping, view.sort);
    }

    /** Returns a function that ends it. */
    onChange(listener: Listener): () => void {
        this.#listeners.add(listener);
        return () => this.#listeners.delete(listener);
    }

    /** Resolves after the next report in which this holds, at once if it holds already. */
    until(holds: () => boolean): Promise<void> {
        if (holds()) return Promise.resolve();
        return new Promise((resolve) => {
            const stop = this.onChange(() => {
                if (!holds()) return;
                stop();
                resolve();
            });
        });
    }

    /** The names of all games, sorted. */
    get games(): readonly string[] {
        this.#gameNames ??= [...new Set([...this.captures.values()].map(({ game }) => game))].sort(
            compareTexts,
        );
        return this.#gameNames;
    }

    isShown = (capture: Capture): boolean => this.#matches(capture);

    isHidden({ path }: Capture): boolean {
        return this.#hidden.has(path);
    }

    /** Shows them no longer, though they are there. */
    hide(captures: readonly Capture[]): void {
        for (const { path } of captures) {
            const known = this.captures.get(path);
            if (known) this.#takeOut(known);
            this.#hidden.add(path);
        }
        this.#report();
    }

    /** Ends `hide`. Those that are gone by now stay away. */
    show(captures: readonly Capture[]): void {
        for (const { path } of captures) {
            const known = this.#hidden.delete(path) ? this.captures.get(path) : undefined;
            if (known && this.#matches(known)) this.#edits.push((arrangement) => arrangement.insert(known));
        }
        this.#report();
    }

    setView(changes: Partial<View>): void {
        this.view = { ...this.view, ...changes };
        this.#passes = matcher(this.view);
        this.#rearrange();
    }

    setStatus(status: Status): void {
        if (this.status === status) return;
        this.status = status;
        this.#report();
    }

    setConnection(connection: Connection): void {
        if (this.connection === connection) return;
        this.connection = connection;
        this.#report();
    }

    /** Takes the place of everything that was known. */
    replace(captures: Iterable<Capture>): void {
        this.captures.clear();
        for (const capture of captures) this.captures.set(capture.path, capture);
        this.#gameNames = null;
        this.#rearrange();
    }

    /** A capture that is new, or has changed. */
    put(capture: Capture): void {
        const known = this.captures.get(capture.path);
        const isNew = !known || this.#added.includes(known);
        if (known) this.#takeOut(known);
        this.captures.set(capture.path, capture);
        this.#gameNames = null;
        if (this.#matches(capture)) {
            this.#edits.push((arrangement) => arrangement.insert(capture));
            if (isNew) this.#added.push(capture);
        }
        this.#report();
    }

    remove(path: string): void {
        const known = this.captures.get(path);
        if (!known) return;
        this.#takeOut(known);
        this.captures.delete(path);
        this.#gameNames = null;
        this.#report();
    }

    #matches = (capture: Capture): boolean => !this.#hidden.has(capture.path) && this.#passes(capture);

    #takeOut(capture: Capture): void {
        if (this.#matches(capture)) this.#edits.push((arrangement) => arrangement.remove(capture));
        this.#added = this.#added.filter(({ path }) => path !== capture.path);
    }

    #rearrange(): void {
        this.#rearranged = true;
        this.#report();
    }

    #bringUpToDate(): void {
        if (this.#rearranged) {
            const shown = [...this.captures.values()].filter(this.#matches);
            this.arrangement = new Arrangement(shown, this.view.grouping, this.view.sort);
        } else {
            for (const edit of this.#edits) edit(this.arrangement);
            this.arrangement.count();
        }
        this.#rearranged = false;
        this.#edits = [];
    }

    #report(): void {
        if (this.#scheduled) return;
        this.#scheduled = true;
        this.schedule(() => {
            const added = this.#added.filter(this.#matches);
            this.#scheduled = false;
            this.#added = [];
            this.#bringUpToDate();
            for (const listener of this.#listeners) listener({ added });
        });
    }
}
