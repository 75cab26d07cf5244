// What is searched for and shown in this tab, which a reload keeps.
import type { View } from "../model/gallery.js";

const KEY = "view";

/** Empty at the first load. */
export function keptView(): Partial<View> {
    try {
        return JSON.parse(sessionStorage.getItem(KEY) ?? "{}") as Partial<View>;
    } catch {
        // A browser without storage keeps none.
        return {};
    }
}

export function keepView(view: View): void {
    try {
        sessionStorage.setItem(KEY, JSON.stringify(view));
    } catch {
        // As above.
    }
}
