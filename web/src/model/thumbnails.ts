// Which thumbnails are asked for, and when. Few are under way at a time, those that are seen come first, and what
// has left the view is not asked for any more.
import type { Capture } from "./capture.js";

/** A request for one thumbnail. */
export interface Load {
    /** Resolves with what an image shows and how many bytes the page keeps for it; null when there is none. */
    readonly done: Promise<{ source: string; bytes: number } | null>;
    /** Ends it, if it can be ended. */
    cancel(): boolean;
}

export type Loader = (capture: Capture) => Load;

/** What a cell shows: nothing yet, a picture, or that there is none. */
export type Thumbnail = { readonly source: string } | "broken" | undefined;

const IN_FLIGHT = 3;
const CACHE_BYTES = 48 * 1024 * 1024;

export class Thumbnails {
    private wanted: Capture[] = [];
    private readonly underWay = new Map<string, Load>();
    // In the order of their last use.
    private readonly cache = new Map<string, { source: string; bytes: number }>();
    private readonly broken = new Set<string>();
    private bytes = 0;
    private paused = false;

    /** `onChange` is called after a thumbnail has arrived or has turned out to be missing. */
    constructor(
        private readonly load: Loader,
        private readonly onChange: () => void,
        private readonly limits = { inFlight: IN_FLIGHT, cacheBytes: CACHE_BYTES },
    ) {}

    get inFlight(): number {
        return this.underWay.size;
    }

    get cachedBytes(): number {
        return this.bytes;
    }

    /** What there is for a capture at this moment. */
    get(capture: Capture): Thumbnail {
        const key = keyOf(capture);
        if (this.broken.has(key)) return "broken";
        const found = this.cache.get(key);
        if (!found) return undefined;
        this.cache.delete(key);
        this.cache.set(key, found);
        return found;
    }

    /** Replaces everything that waits. The first ones are asked for first. */
    want(captures: readonly Capture[]): void {
        this.wanted = captures.filter((capture) => !this.isSettled(keyOf(capture)));
        const keys = new Set(this.wanted.map(keyOf));
        for (const [key, load] of this.underWay)
            if (!keys.has(key) && load.cancel()) this.underWay.delete(key);
        this.next();
    }

    retry(capture: Capture): void {
        this.broken.delete(keyOf(capture));
        if (!this.wanted.includes(capture)) this.wanted.unshift(capture);
        this.onChange();
        this.next();
    }

    /** While the connection is lost, failures say nothing about files. */
    pause(paused: boolean): void {
        this.paused = paused;
        this.next();
    }

    private isSettled(key: string): boolean {
        return this.cache.has(key) || this.broken.has(key);
    }

    private next(): void {
        while (!this.paused && this.underWay.size < this.limits.inFlight) {
            const capture = this.wanted.find(
                (one) => !this.underWay.has(keyOf(one)) && !this.isSettled(keyOf(one)),
            );
            if (!capture) return;
            this.start(capture);
        }
    }

    private start(capture: Capture): void {
        const key = keyOf(capture);
        const load = this.load(capture);
        this.underWay.set(key, load);
        load.done.then(
            (found) => this.finish(key, load, found),
            () => this.finish(key, load, undefined),
        );
    }

    // Undefined stands for a failure of the channel, after which the next change of the view asks again.
    private finish(
        key: string,
        load: Load,
        found: { source: string; bytes: number } | null | undefined,
    ): void {
        if (this.underWay.get(key) === load) this.underWay.delete(key);
        else if (!found) return; // canceled
        if (found) this.keep(key, found);
        else if (found === null) this.broken.add(key);
        else this.wanted = this.wanted.filter((capture) => keyOf(capture) !== key);
        if (found !== undefined) this.onChange();
        this.next();
    }

    private keep(key: string, found: { source: string; bytes: number }): void {
        this.bytes += found.bytes - (this.cache.get(key)?.bytes ?? 0);
        this.cache.set(key, found);
        for (const [oldest, { bytes }] of this.cache) {
            if (this.bytes <= this.limits.cacheBytes) return;
            this.cache.delete(oldest);
            this.bytes -= bytes;
        }
    }
}

// A file that has changed has another thumbnail, and a broken one gets another chance.
function keyOf({ path, version }: Capture): string {
    return `${version}\n${path}`;
}
