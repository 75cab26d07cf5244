// How somebody likes to see the gallery: kept by the host where it offers that, and in the browser, which forgets
// it at the next launch of a server.
import type { Client } from "../api/client.js";
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
function checked(kept: Readonly<Record<string, unknown>>): Preferences {
    const size = kept["cellSize"];
    const fits = typeof size === "number" && size >= CELL_SIZES.min && size <= CELL_SIZES.max;
    return {
        grouping: oneOf(GROUPINGS, kept["grouping"], DEFAULTS.grouping),
        sort: oneOf(SORTS, kept["sort"], DEFAULTS.sort),
        cellSize: fits ? size : DEFAULTS.cellSize,
    };
}

function readStorage(): Record<string, unknown> {
    try {
        return { ...(JSON.parse(localStorage.getItem(KEY) ?? "{}") as object) };
    } catch {
        return {};
    }
}

export class PreferenceStore {
    // With values that only other versions of the page know.
    #kept = readStorage();
    #changed = false;

    constructor(private readonly client: Client) {}

    get current(): Preferences {
        return checked(this.#kept);
    }

    /** Calls `use` with what the host has kept, unless something was chosen before its answer came. */
    load(use: (preferences: Preferences) => void): void {
        this.client.preferences({}).then((kept) => {
            if (this.#changed) return;
            this.#kept = { ...this.#kept, ...kept };
            use(this.current);
        }, console.warn);
    }

    keep(changes: Partial<Preferences>): void {
        this.#changed = true;
        this.#kept = { ...this.#kept, ...changes };
        try {
            localStorage.setItem(KEY, JSON.stringify(this.#kept));
        } catch {
            // A browser without storage forgets them.
        }
        if (this.client.offers("Preferences"))
            this.client.preferences({ preferences: this.#kept }).catch(console.warn);
    }
}
