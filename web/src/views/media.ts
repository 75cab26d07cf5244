// Where the page finds a capture's bytes: on the routes of its server, or as files where there is no server.
import type { Capture } from "../model/capture.js";

/** The thumbnails of the grid; larger ones cost the gallery more than they show. */
export const THUMBNAIL = { width: 320, height: 180 };

export function thumbnailAddress({ handle }: Capture): string {
    return `/thumb/${handle}?w=${THUMBNAIL.width}&h=${THUMBNAIL.height}`;
}

/** The times of a video's keyframes and the length of its frames, where there is a server that knows them. */
export async function fetchKeyframes({
    handle,
}: Capture): Promise<{ keyframes: number[]; frameMs: number } | null> {
    if (!handle) return null;
    const response = await fetch(`/keyframes/${handle}`).catch(() => null);
    return response?.ok ? response.json() : null;
}

/** The whole file. */
export function mediaAddress({ handle, path }: Capture): string {
    if (handle) return `/media/${handle}`;
    return `file://${path.split("/").map(encodeURIComponent).join("/")}`;
}
