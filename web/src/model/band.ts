// Which captures a rectangle over the grid touches.
import type { Arrangement } from "./arrangement.js";
import type { Capture } from "./capture.js";
import type { Layout } from "./layout.js";

/** A place in the layout: from the edge where rows begin, and from its top. */
export interface Point {
    readonly x: number;
    readonly y: number;
}

/** The captures whose cells the rectangle between two corners touches, in their order. */
export function capturesWithin(a: Point, b: Point, layout: Layout, shown: Arrangement): Capture[] {
    const { columns, cellWidth, gap } = layout;
    const step = cellWidth + gap;
    const [left, right] = [Math.min(a.x, b.x), Math.max(a.x, b.x)];
    const [top, bottom] = [Math.min(a.y, b.y), Math.max(a.y, b.y)];
    const first = Math.max(0, Math.floor((left + gap) / step));
    const last = Math.min(columns - 1, Math.floor(right / step));
    const cellHeight = layout.rowHeight - gap;
    return layout
        .rowsBetween(top, bottom)
        .filter((row) => row.count > first && row.top <= bottom && row.top + cellHeight >= top)
        .flatMap((row) => shown.between(row.first + first, row.first + Math.min(last, row.count - 1)))
        .filter(() => first <= last);
}
