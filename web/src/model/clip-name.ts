// Names for clips, beside the video that they are cut from.

const CLIP = / \(clip(?: \d+)?\)$/;

/** "Race (clip).mp4" for "Race.mp4", or the next number that is free. `taken` says whether a path has a file. */
export function clipPath(path: string, taken: (path: string) => boolean): string {
    const folder = path.slice(0, path.lastIndexOf("/") + 1);
    const fileName = path.slice(folder.length);
    const dot = fileName.lastIndexOf(".");
    const title = (dot > 0 ? fileName.slice(0, dot) : fileName).replace(CLIP, "");
    const ending = dot > 0 ? fileName.slice(dot) : "";
    for (let number = 1; ; ++number) {
        const name = number === 1 ? `${title} (clip)` : `${title} (clip ${number})`;
        if (!taken(folder + name + ending)) return folder + name + ending;
    }
}

/** A time as people write it: seconds, or minutes and seconds, or hours too. Null for anything else. */
export function parseTime(text: string): number | null {
    const parts = text.trim().replace(",", ".").split(":");
    if (parts.length > 3 || !parts.every((part) => /^\d+(\.\d*)?$/.test(part))) return null;
    return parts.reduce((seconds, part) => seconds * 60 + Number(part), 0) * 1000;
}
