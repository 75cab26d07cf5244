// The filter of this tab, which a reload keeps.
import { NO_FILTER, type Filter } from "../model/filter.js";

const KEY = "filter";

/** What is kept may come from another version of the page, so that each value is checked. */
export function keptFilter(): Filter {
    const filter = { ...NO_FILTER };
    try {
        const kept = JSON.parse(sessionStorage.getItem(KEY) ?? "{}") as Record<string, unknown>;
        for (const [name, value] of Object.entries(filter))
            if (typeof kept[name] === typeof value) Object.assign(filter, { [name]: kept[name] });
    } catch {
        // A browser without storage keeps none.
    }
    return filter;
}

export function keepFilter({ search, game, kind, highlights, captions }: Filter): void {
    try {
        sessionStorage.setItem(KEY, JSON.stringify({ search, game, kind, highlights, captions }));
    } catch {
        // As above.
    }
}
