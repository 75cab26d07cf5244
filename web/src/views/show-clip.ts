// Brings a clip that was saved before the user's eyes: selected, with the focus, whatever was filtered.
import { NO_FILTER } from "../model/filter.js";
import { text } from "../strings/index.js";
import { send, type Clip, type Context } from "./context.js";
import type { CaptureGrid } from "./capture-grid.js";

interface Page extends HTMLElement {
    readonly context: Context;
    readonly grid: CaptureGrid | null;
    announce(message: string): void;
}

/** The gallery may announce the clip before or after it answers that it is saved. */
export async function showClip(page: Page, { path, replaced }: Clip): Promise<void> {
    const { gallery, selection } = page.context;
    const clip = () => {
        const known = gallery.captures.get(path);
        return known && known.version !== replaced?.version ? known : null;
    };
    const isShown = () => clip() !== null && gallery.arrangement.indexOf(clip()!) >= 0;
    await gallery.until(() => clip() !== null);
    if (!gallery.isShown(clip()!)) send(page, "view-choice", NO_FILTER);
    await gallery.until(isShown);
    const capture = clip();
    if (!capture) return;
    selection.only(capture);
    send(page, "selection-change");
    page.announce(text.trim.saved);
    await page.grid?.focusCapture(capture);
}
