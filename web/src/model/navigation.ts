// Where the keys of the grid pattern lead.
import type { Arrangement } from "./arrangement.js";
import type { Layout } from "./layout.js";

export interface Keys {
    readonly key: string;
    readonly ctrl: boolean;
    /** Right-to-left pages have their first column on the right. */
    readonly rightToLeft: boolean;
}

type Step = (index: number, grid: Grid) => number;

interface Grid {
    readonly arrangement: Arrangement;
    readonly layout: Layout;
    /** Rows that fit the view. */
    readonly pageRows: number;
}

// The first and the last index of the row, or of the row above or below, whatever group it is in.
function rowEnds(index: number, { arrangement, layout }: Grid): { first: number; last: number } {
    const { first, count } = layout.rowOf(Math.min(Math.max(index, 0), arrangement.length - 1));
    return { first, last: first + count - 1 };
}

function down(index: number, grid: Grid): number {
    const { first, last } = rowEnds(index, grid);
    if (last + 1 >= grid.arrangement.length) return index;
    const below = rowEnds(last + 1, grid);
    return Math.min(below.first + (index - first), below.last);
}

function up(index: number, grid: Grid): number {
    const { first } = rowEnds(index, grid);
    if (first === 0) return index;
    const above = rowEnds(first - 1, grid);
    return Math.min(above.first + (index - first), above.last);
}

function repeat(step: Step): Step {
    return (index, grid) => {
        for (let row = 0; row < Math.max(1, grid.pageRows); ++row) index = step(index, grid);
        return index;
    };
}

const STEPS: Record<string, Step> = {
    ArrowRight: (index) => index + 1,
    ArrowLeft: (index) => index - 1,
    ArrowDown: down,
    ArrowUp: up,
    PageDown: repeat(down),
    PageUp: repeat(up),
    Home: (index, grid) => rowEnds(index, grid).first,
    End: (index, grid) => rowEnds(index, grid).last,
};

const WITH_CTRL: Record<string, Step> = {
    Home: () => 0,
    End: (_, { arrangement }) => arrangement.length - 1,
};

const MIRRORED: Record<string, string> = { ArrowLeft: "ArrowRight", ArrowRight: "ArrowLeft" };

/** The index that a key leads to, or null for a key that does not move. */
export function target(index: number, { key, ctrl, rightToLeft }: Keys, grid: Grid): number | null {
    const step = (ctrl ? WITH_CTRL : STEPS)[(rightToLeft && MIRRORED[key]) || key];
    if (!step || grid.arrangement.length === 0) return null;
    return Math.min(Math.max(step(index, grid), 0), grid.arrangement.length - 1);
}
