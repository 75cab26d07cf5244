// How somebody likes to see the gallery, kept in the browser.
import { GROUPINGS } from "../model/arrangement.js";
import { SORTS } from "../model/order.js";
import type { View } from "../model/gallery.js";
import { CELL_SIZES } from "../views/filter-bar.js";

export interface Preferences extends Pick<View, "grouping" | "sort"> {
    readonly cellSize: number;
}

const KEY = "preferences";
const DEFAULTS: Preferences = { grouping: "day", sort: "newest", cellSize: 240 };

function oneOf<T>(values: readonly T[], value: unknown, otherwise: T): T {
    return values.find((known) => known === value) ?? otherwise;
}

/** What is kept may come from another version of the page, so that each value is checked. */
export function readPreferences(): Preferences {
    try {
        const kept = JSON.parse(localStorage.getItem(KEY) ?? "{}") as Partial<Preferences>;
        const { cellSize = DEFAULTS.cellSize } = kept;
        const fits = cellSize >= CELL_SIZES.min && cellSize <= CELL_SIZES.max;
        return {
            grouping: oneOf(GROUPINGS, kept.grouping, DEFAULTS.grouping),
            sort: oneOf(SORTS, kept.sort, DEFAULTS.sort),
            cellSize: fits ? cellSize : DEFAULTS.cellSize,
        };
    } catch {
        return DEFAULTS;
    }
}

export function keepPreferences(preferences: Preferences): void {
    try {
        localStorage.setItem(KEY, JSON.stringify(preferences));
    } catch {
        // A browser without storage forgets them.
    }
}
