// The orders in which captures can be shown. Each is total, so that a capture has one place and is found again.
import type { Capture } from "./capture.js";

export const SORTS = ["newest", "oldest", "name", "largest", "longest"] as const;
export type Sort = (typeof SORTS)[number];
export type Compare = (a: Capture, b: Capture) => number;

// One collator for all: it is costly to make.
const collator = new Intl.Collator(undefined, { numeric: true });
export const compareTexts = (a: string, b: string): number =>
    collator.compare(a, b) || (a < b ? -1 : a > b ? 1 : 0);

const byPath: Compare = (a, b) => (a.path < b.path ? -1 : a.path > b.path ? 1 : 0);
const byNewest: Compare = (a, b) => b.time - a.time || byPath(a, b);

const COMPARES: Record<Sort, Compare> = {
    newest: byNewest,
    oldest: (a, b) => a.time - b.time || byPath(a, b),
    name: (a, b) => compareTexts(a.title, b.title) || byPath(a, b),
    largest: (a, b) => b.sizeKB - a.sizeKB || byNewest(a, b),
    longest: (a, b) => b.durationMs - a.durationMs || byNewest(a, b),
};

export function compareOf(sort: Sort): Compare {
    return COMPARES[sort];
}

/** The first place in a sorted list whose capture does not come before this one. */
export function placeOf(list: readonly Capture[], capture: Capture, compare: Compare): number {
    let low = 0;
    let high = list.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (compare(list[middle]!, capture) < 0) low = middle + 1;
        else high = middle;
    }
    return low;
}
