// Has the gallery cut a clip.
import type { Capture } from "../../model/capture.js";
import { clipPath } from "../../model/clip-name.js";
import type { TrimRange } from "../../model/trim-range.js";
import type { Context } from "../context.js";

/** A path beside the video that no file has, whether the gallery knows it or not. */
export async function freeClipPath({ client, gallery }: Context, { path }: Capture): Promise<string> {
    const directory = path.slice(0, path.lastIndexOf("/"));
    const { files = [] } = await client.request("GetFolderListing", { directory, shouldShowEXR: true });
    const names = new Set(files.map(({ name = "" }) => name.slice(name.lastIndexOf("/") + 1)));
    const isTaken = (wanted: string) =>
        gallery.captures.has(wanted) || names.has(wanted.slice(wanted.lastIndexOf("/") + 1));
    return clipPath(path, isTaken);
}

/** Resolves when the gallery has taken up the clip. An `output` that is the video's own path replaces it. */
export async function saveClip(
    { client }: Context,
    { path }: Capture,
    output: string,
    range: TrimRange,
): Promise<void> {
    await client.request("Trim", { input: path, output, ...range.request });
}
