// The marks along the scrubber: which groups have a label there, and where.
import type { Arrangement } from "./arrangement.js";
import type { Layout } from "./layout.js";

export interface Mark {
    /** Place in `Arrangement.groups`. */
    readonly group: number;
    readonly label: string;
    /** Pixels from the top of the scrubber. */
    readonly top: number;
}

/** Labels nearer than this would overlap. */
export const MARK_DISTANCE = 20;

/** One mark for each run of groups with the same label, as far as there is room. */
export function marksOf(
    arrangement: Arrangement,
    layout: Layout,
    height: number,
    labelOf: (groupKey: string) => string,
): Mark[] {
    const marks: Mark[] = [];
    let label = "";
    let next = 0;
    arrangement.groups.forEach(({ key }, group) => {
        const found = labelOf(key);
        if (found === label) return;
        label = found;
        const top = (layout.groupTop(group) / layout.height) * height;
        if (top < next || top > height - MARK_DISTANCE) return;
        marks.push({ group, label, top });
        next = top + MARK_DISTANCE;
    });
    return marks;
}
