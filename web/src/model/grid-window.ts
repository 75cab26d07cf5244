// The part of a layout that a scroller shows: which rows are drawn, where, and how far to scroll for one of them.
import type { Arrangement } from "./arrangement.js";
import { Layout, Scale, type Measures, type Row } from "./layout.js";

export class GridWindow {
    readonly layout: Layout;
    readonly #scale: Scale;

    /** `height` is the scroller's own. */
    constructor(
        private readonly arrangement: Arrangement,
        private readonly measures: Measures,
        readonly height: number,
    ) {
        this.layout = new Layout(arrangement, measures);
        this.#scale = new Scale(this.layout.height, height);
    }

    /** Of the element that is scrolled. */
    get scrollHeight(): number {
        return this.#scale.height;
    }

    get overflows(): boolean {
        return this.#scale.height > 2 * this.height;
    }

    /** Rows of cells that fit. */
    get pageRows(): number {
        return Math.max(1, Math.floor(this.height / this.layout.rowHeight));
    }

    /** The height of the layout at which the view begins. */
    topAt(scrollTop: number): number {
        return this.#scale.toLayout(scrollTop);
    }

    scrollTopFor(top: number): number {
        return this.#scale.toScroller(top);
    }

    /** How much of the whole is above the view, from 0 to 1. */
    progressAt(scrollTop: number): number {
        const way = this.#scale.height - this.height;
        return way > 0 ? Math.min(1, Math.max(0, scrollTop / way)) : 0;
    }

    drawnTop(row: Pick<Row, "top">, scrollTop: number): number {
        return this.#scale.drawnTop(row.top, scrollTop);
    }

    /** The rows that are seen and half a row around them; also that of the pinned index, unless it is -1. */
    rowsAt(scrollTop: number, pinned: number): Row[] {
        if (this.height === 0 || this.arrangement.length === 0) return [];
        const top = this.topAt(scrollTop);
        const more = this.layout.rowHeight / 2;
        const rows = this.layout.rowsBetween(top - more, top + this.height + more);
        if (pinned < 0 || rows.some((row) => holds(row, pinned))) return rows;
        return [...rows, this.layout.rowOf(pinned)].sort((a, b) => a.number - b.number);
    }

    /** The captures of these rows, those first that are seen; without those of a pinned row far away. */
    nearest(rows: readonly Row[], scrollTop: number): Row[] {
        const top = this.topAt(scrollTop);
        const isSeen = (row: Row) => row.top + this.layout.rowHeight > top && row.top < top + this.height;
        const near = rows.filter((row) => !isSeen(row) && Math.abs(row.top - top) < 2 * this.height);
        return [...rows.filter(isSeen), ...near];
    }

    /** Where to scroll so that the row of an index is seen, with the header above a group's first row. */
    scrollTopToShow(index: number, scrollTop: number, block: "start" | "nearest"): number {
        const top = this.layout.topOf(index);
        const seen = this.topAt(scrollTop);
        const start = Math.max(0, top - this.measures.header);
        const end = top + this.layout.rowHeight - this.height;
        if (block === "start" || start < seen) return this.scrollTopFor(start);
        return end > seen ? this.scrollTopFor(end) : scrollTop;
    }
}

/** Whether the capture at an index of the whole order is in this row. */
export function holds(row: Row, index: number): boolean {
    return index >= row.first && index < row.first + row.count;
}
