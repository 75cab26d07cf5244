// Where the page finds a capture's bytes: on the routes of its server, or as files where there is no server.
import type { Capture } from "../model/capture.js";

/** The thumbnails of the grid; larger ones cost the gallery more than they show. */
export const THUMBNAIL = { width: 320, height: 180 };

export function thumbnailAddress({ handle }: Capture): string {
    return `/thumb/${handle}?w=${THUMBNAIL.width}&h=${THUMBNAIL.height}`;
}

/** The whole file. */
export function mediaAddress({ handle, path }: Capture): string {
    if (handle) return `/media/${handle}`;
    return `file://${path.split("/").map(encodeURIComponent).join("/")}`;
}
