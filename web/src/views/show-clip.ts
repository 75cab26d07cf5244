// Brings a clip that was saved before the user's eyes.
import type { Capture } from "../model/capture.js";
import * as text from "../strings/en.js";
import type { Clip, Context } from "./context.js";

interface Page {
    readonly context: Context;
    announce(message: string): void;
    goTo(capture: Capture): Promise<void>;
}

/** The gallery may announce the clip before or after it answers that it is saved. */
export async function showClip(page: Page, { path, replaced }: Clip): Promise<void> {
    const { gallery } = page.context;
    const clip = () => {
        const known = gallery.captures.get(path);
        return known && known.version !== replaced?.version ? known : null;
    };
    await gallery.until(() => clip() !== null);
    await page.goTo(clip()!);
    // After the page has reported that there is another capture.
    page.announce(text.trimSaved);
}
