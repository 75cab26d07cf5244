// Where the page finds a capture's bytes: on the routes of its server, or as files where there is no server.
import type { Capture } from "../model/capture.js";

/** The thumbnails of the grid; larger ones cost the gallery more than they show. */
export const THUMBNAIL = { width: 320, height: 180 };

export function thumbnailAddress({ handle }: Capture): string {
    return `/thumb/${handle}?w=${THUMBNAIL.width}&h=${THUMBNAIL.height}`;
}

/** The whole file. Each attempt to read it has an address of its own, or browsers show what they have kept of it. */
export function mediaAddress({ handle, path }: Capture, attempt = 0): string {
    const file = handle ? `/media/${handle}` : `file://${path.split("/").map(encodeURIComponent).join("/")}`;
    return attempt === 0 ? file : `${file}?attempt=${attempt}`;
}

/** Ends loading, which goes on without its element in the page, and what is heard. */
export function unload(element: HTMLImageElement | HTMLVideoElement | null): void {
    element?.removeAttribute("src");
    if (element instanceof HTMLVideoElement) element.load();
}
