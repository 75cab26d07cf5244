// Which thumbnails are asked for, and when. Few are under way at a time, those that are seen come first, and what
// has left the view is not asked for any more.
import { fileKey, type Capture } from "./capture.js";

/** What an image shows, and how many bytes the page keeps for it. */
export interface Found {
    readonly source: string;
    readonly bytes: number;
}

/** A request for one thumbnail. */
export interface Load {
    /** Null when the file has none; undefined, or a rejection, when nothing is known, as after `cancel`. */
    readonly done: Promise<Found | null | undefined>;
    /** Ends it, if it can be ended. It is under way until `done` is settled. */
    cancel(): void;
}

export type Loader = (capture: Capture) => Load;

/** What a cell shows: nothing yet, a picture, or that there is none. */
export type Thumbnail = { readonly source: string } | "broken" | undefined;

const IN_FLIGHT = 3;
const CACHE_BYTES = 48 * 1024 * 1024;

// A file that has changed has another thumbnail, and a broken one gets another chance.
export class Thumbnails {
    #wanted: Capture[] = [];
    readonly #underWay = new Map<string, { load: Load; canceled: boolean }>();
    // In the order of their last use.
    readonly #cache = new Map<string, Found>();
    readonly #broken = new Set<string>();
    #bytes = 0;
    #paused = false;

    /** `onChange` is called after a thumbnail has arrived or has turned out to be missing. */
    constructor(
        private readonly load: Loader,
        private readonly onChange: () => void,
        private readonly limits = { inFlight: IN_FLIGHT, cacheBytes: CACHE_BYTES },
    ) {}

    get inFlight(): number {
        return this.#underWay.size;
    }

    get cachedBytes(): number {
        return this.#bytes;
    }

    /** What there is for a capture at this moment. */
    get(capture: Capture): Thumbnail {
        const key = fileKey(capture);
        if (this.#broken.has(key)) return "broken";
        const found = this.#cache.get(key);
        if (!found) return undefined;
        this.#cache.delete(key);
        this.#cache.set(key, found);
        return found;
    }

    /** Replaces everything that waits. The first ones are asked for first. */
    want(captures: readonly Capture[]): void {
        this.#wanted = captures.filter((capture) => !this.#isSettled(fileKey(capture)));
        const keys = new Set(this.#wanted.map(fileKey));
        for (const [key, one] of this.#underWay) if (!keys.has(key)) this.#cancel(one);
        this.#next();
    }

    retry(capture: Capture): void {
        this.#broken.delete(fileKey(capture));
        if (!this.#wanted.includes(capture)) this.#wanted.unshift(capture);
        this.onChange();
        this.#next();
    }

    /** While the connection or the drive is lost, failures say nothing about files, nor do those of just before. */
    pause(paused: boolean): void {
        if (this.#paused && !paused) this.#broken.clear();
        this.#paused = paused;
        this.#next();
    }

    #isSettled(key: string): boolean {
        return this.#cache.has(key) || this.#broken.has(key);
    }

    #next(): void {
        while (!this.#paused && this.#underWay.size < this.limits.inFlight) {
            const capture = this.#wanted.find(
                (one) => !this.#underWay.has(fileKey(one)) && !this.#isSettled(fileKey(one)),
            );
            if (!capture) return;
            this.#start(capture);
        }
    }

    #cancel(one: { load: Load; canceled: boolean }): void {
        if (one.canceled) return;
        one.canceled = true;
        one.load.cancel();
    }

    #start(capture: Capture): void {
        const key = fileKey(capture);
        const load = this.load(capture);
        const one = { load, canceled: false };
        this.#underWay.set(key, one);
        const finish = (found?: Found | null) => {
            this.#underWay.delete(key);
            // After a failure of the channel, only the next change of the view asks again.
            if (found === undefined && !one.canceled)
                this.#wanted = this.#wanted.filter((other) => fileKey(other) !== key);
            this.#settle(key, found);
            this.#next();
        };
        load.done.then(finish, () => finish());
    }

    #settle(key: string, found: Found | null | undefined): void {
        if (found === undefined) return;
        if (found) this.#keep(key, found);
        else this.#broken.add(key);
        this.onChange();
    }

    #keep(key: string, found: Found): void {
        this.#bytes += found.bytes - (this.#cache.get(key)?.bytes ?? 0);
        this.#cache.set(key, found);
        for (const [oldest, { bytes }] of this.#cache) {
            if (this.#bytes <= this.limits.cacheBytes) return;
            this.#cache.delete(oldest);
            this.#bytes -= bytes;
        }
    }
}
