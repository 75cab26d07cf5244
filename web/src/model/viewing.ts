// Which capture is looked at alone, and which ones come before and after it.
import type { Capture } from "./capture.js";
import type { Gallery } from "./gallery.js";

// In the direction of travel, and against it.
const AHEAD = 2;
const BEHIND = 1;

export class Viewing {
    current: Capture | null = null;
    /** Keeps this path although its capture goes, as when a clip takes the place of its video. */
    held: string | null = null;
    #index = -1;
    #direction: 1 | -1 = 1;

    constructor(private readonly gallery: Gallery) {}

    open(capture: Capture): void {
        this.current = capture;
        this.#index = this.gallery.arrangement.indexOf(capture);
        this.#direction = 1;
    }

    close(): void {
        this.current = null;
        this.held = null;
    }

    canStep(by: 1 | -1): boolean {
        return this.current !== null && this.gallery.arrangement.at(this.#index + by) !== undefined;
    }

    step(by: 1 | -1): boolean {
        const next = this.gallery.arrangement.at(this.#index + by);
        if (!this.current || !next) return false;
        this.current = next;
        this.#index += by;
        this.#direction = by;
        return true;
    }

    /** Follows a change of the gallery. What has gone gives way to the one after it; null when none is left. */
    follow(): Capture | null {
        if (!this.current) return null;
        const { arrangement, captures } = this.gallery;
        const known = captures.get(this.current.path);
        const index = known ? arrangement.indexOf(known) : -1;
        if (index >= 0) {
            this.#index = index;
            this.current = known!;
        } else if (this.held !== this.current.path) {
            this.#index = Math.min(this.#index, arrangement.length - 1);
            this.current = arrangement.at(this.#index) ?? null;
        }
        return this.current;
    }

    /** What is likely to be looked at next, the likeliest first. */
    nearby(): Capture[] {
        const { arrangement } = this.gallery;
        const steps = [...Array(AHEAD).keys()].map((step) => step + 1);
        const behind = [...Array(BEHIND).keys()].map((step) => -step - 1);
        return [...steps, ...behind].flatMap(
            (step) => arrangement.at(this.#index + step * this.#direction) ?? [],
        );
    }
}
