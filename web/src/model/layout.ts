// Where everything in the grid is, in CSS pixels. All cells are alike, so that every height is exact and nothing
// moves while one scrolls.
import type { Arrangement } from "./arrangement.js";

export interface Measures {
    /** Of the grid's content. */
    readonly width: number;
    /** The least width of a cell; the columns share what is left. */
    readonly cell: number;
    readonly gap: number;
    /** Of the title below a picture. */
    readonly title: number;
    /** Of a group's header, with the space around it. */
    readonly header: number;
}

export interface Row {
    /** The same while the row stands for the same place of its group. */
    readonly key: string;
    /** Place in `Arrangement.groups`. */
    readonly group: number;
    /** Index of the first capture in the whole order; a header has none and counts 0 captures. */
    readonly first: number;
    readonly count: number;
    readonly top: number;
    /** From 1, over headers and rows of cells. */
    readonly number: number;
}

/** Browsers make nothing higher than this: 2^24 at two device pixels a CSS pixel, with room to spare. */
export const HEIGHT_LIMIT = 16_000_000;

export class Layout {
    readonly columns: number;
    readonly cellWidth: number;
    /** Of a picture, 16:9. */
    readonly cellHeight: number;
    /** With the gap below it. */
    readonly rowHeight: number;
    readonly height: number;
    readonly rowCount: number;
    readonly #tops: number[] = [];
    readonly #firstRows: number[] = [];

    constructor(
        private readonly arrangement: Arrangement,
        private readonly measures: Measures,
    ) {
        const { width, cell, gap, title } = measures;
        this.columns = Math.max(1, Math.floor((width + gap) / (cell + gap)));
        this.cellWidth = Math.max(1, (width - gap * (this.columns - 1)) / this.columns);
        this.cellHeight = Math.round((this.cellWidth * 9) / 16);
        this.rowHeight = this.cellHeight + title + gap;
        let top = 0;
        let rows = 0;
        for (const group of arrangement.groups) {
            this.#tops.push(top);
            this.#firstRows.push(rows);
            const lines = Math.ceil(group.captures.length / this.columns);
            top += measures.header + lines * this.rowHeight;
            rows += 1 + lines;
        }
        this.height = top;
        this.rowCount = rows;
    }

    get width(): number {
        return this.measures.width;
    }

    /** Between the cells of a row, and between rows. */
    get gap(): number {
        return this.measures.gap;
    }

    groupTop(group: number): number {
        return this.#tops[group] ?? this.height;
    }

    /** The top of the row that an index of the whole order is in. */
    topOf(index: number): number {
        const place = this.arrangement.groupAt(index);
        const group = this.arrangement.groups[place];
        if (!group) return 0;
        const line = Math.floor((index - group.start) / this.columns);
        return this.#tops[place]! + this.measures.header + line * this.rowHeight;
    }

    /** The group whose part of the grid holds this height. */
    groupAtTop(top: number): number {
        let low = 0;
        let high = this.#tops.length - 1;
        while (low < high) {
            const middle = (low + high + 1) >> 1;
            if (this.#tops[middle]! <= top) low = middle;
            else high = middle - 1;
        }
        return low;
    }

    /** The row of cells that an index of the whole order is in. */
    rowOf(index: number): Row {
        const place = this.arrangement.groupAt(index);
        const group = this.arrangement.groups[place]!;
        return this.#cells(place, Math.floor((index - group.start) / this.columns));
    }

    /** All rows that lie, if only in part, between two heights. */
    rowsBetween(from: number, to: number): Row[] {
        const rows: Row[] = [];
        const groups = this.arrangement.groups;
        for (let place = this.groupAtTop(from); place < groups.length && this.#tops[place]! < to; ++place) {
            const top = this.#tops[place]!;
            const firstTop = top + this.measures.header;
            if (firstTop > from) rows.push(this.#header(place));
            const lines = Math.ceil(groups[place]!.captures.length / this.columns);
            const last = Math.min(lines, Math.ceil((to - firstTop) / this.rowHeight));
            for (let line = Math.max(0, Math.floor((from - firstTop) / this.rowHeight)); line < last; ++line)
                rows.push(this.#cells(place, line));
        }
        return rows;
    }

    #header(group: number): Row {
        const { key, start } = this.arrangement.groups[group]!;
        const top = this.#tops[group]!;
        return {
            key: `${key}/header`,
            group,
            first: start,
            count: 0,
            top,
            number: this.#firstRows[group]! + 1,
        };
    }

    #cells(place: number, line: number): Row {
        const group = this.arrangement.groups[place]!;
        const done = line * this.columns;
        return {
            key: `${group.key}/${line}`,
            group: place,
            first: group.start + done,
            count: Math.min(this.columns, group.captures.length - done),
            top: this.#tops[place]! + this.measures.header + line * this.rowHeight,
            number: this.#firstRows[place]! + 2 + line,
        };
    }
}

/**
 * Turns the scroller's positions into heights of the layout and back. They are the same until the layout is higher
 * than browsers can scroll; beyond that each pixel of the scroller stands for more than one.
 */
export class Scale {
    /** Of the element that is scrolled. */
    readonly height: number;
    readonly #factor: number;

    constructor(layoutHeight: number, viewport: number, limit = HEIGHT_LIMIT) {
        this.height = Math.min(layoutHeight, limit);
        const way = this.height - viewport;
        this.#factor = layoutHeight <= limit || way <= 0 ? 1 : (layoutHeight - viewport) / way;
    }

    toLayout(scrollTop: number): number {
        return scrollTop * this.#factor;
    }

    toScroller(top: number): number {
        return top / this.#factor;
    }

    /** Where a row of the layout is drawn while the scroller is here. */
    drawnTop(top: number, scrollTop: number): number {
        return this.#factor === 1 ? top : top - this.toLayout(scrollTop) + scrollTop;
    }
}
