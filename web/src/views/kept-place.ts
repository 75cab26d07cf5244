// Remembers what one looks at, so that it stays in its place when the layout around it changes.
import type { Gallery } from "../model/gallery.js";
import type { Layout, Row } from "../model/layout.js";

interface Anchor {
    readonly path: string;
    /** From the top of the view to the row of the capture. */
    readonly offset: number;
}

export class KeptPlace {
    // All rows that are seen, because the first ones can be the next to go.
    #anchors: Anchor[] = [];
    #top = 0;

    /**
     * `top` is the height of the layout at which the view begins. While nobody scrolls, the anchors stay the same: new
     * ones after each change would let what one looks at drift from row to row.
     */
    remember(rows: readonly Row[], { arrangement }: Gallery, layout: Layout, top: number): void {
        if (this.#anchors.length > 0 && Math.abs(top - this.#top) < 1) return;
        this.#top = top;
        const seen = rows.filter((row) => row.count > 0 && row.top + layout.cellHeight > top);
        this.#anchors = seen.map((row) => ({ path: arrangement.at(row.first)!.path, offset: row.top - top }));
    }

    /** Where the view has to begin now; null when nothing is left of what was seen. */
    find({ captures, arrangement }: Gallery, layout: Layout): number | null {
        for (const { path, offset } of this.#anchors) {
            const capture = captures.get(path);
            const index = capture ? arrangement.indexOf(capture) : -1;
            if (index >= 0) return (this.#top = layout.topOf(index) - offset);
        }
        this.#anchors = [];
        return null;
    }
}
