// Loads what is likely to be looked at next. What is not likely any more is dropped, even while it loads.
import type { Capture } from "../../model/capture.js";
import { mediaAddress, unload } from "../media.js";

type Loading = HTMLImageElement | HTMLVideoElement;

function load(capture: Capture): Loading {
    const element = capture.kind === "video" ? document.createElement("video") : new Image();
    // The first picture and the tables of a video; all of it would be too much.
    if (element instanceof HTMLVideoElement) element.preload = "metadata";
    element.src = mediaAddress(capture);
    return element;
}

export class Preloader {
    readonly #loading = new Map<string, Loading>();

    /** Replaces everything that was wanted before. */
    want(captures: readonly Capture[]): void {
        this.keep(captures);
        for (const capture of captures) {
            const address = mediaAddress(capture);
            if (capture.kind !== "other" && !this.#loading.has(address))
                this.#loading.set(address, load(capture));
        }
    }

    /** Drops all but these. */
    keep(captures: readonly Capture[]): void {
        const wanted = new Set(captures.map(mediaAddress));
        for (const [address, element] of this.#loading) {
            if (wanted.has(address)) continue;
            this.#loading.delete(address);
            unload(element);
        }
    }
}
