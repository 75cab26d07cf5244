// What the server knows of a video's keyframes, and of the length of its frames.
import { fileKey, type Capture } from "../model/capture.js";
import { exactFrame } from "../model/trim-range.js";

export interface Frames {
    /** The length of one, in milliseconds. */
    readonly frame: number;
    /** Their times in milliseconds; null where they are not known. */
    readonly keyframes: readonly number[] | null;
}

async function ask({ handle }: Capture): Promise<Frames> {
    const unknown = { frame: exactFrame(0), keyframes: null };
    if (!handle) return unknown;
    try {
        const response = await fetch(`/keyframes/${handle}`);
        if (!response.ok) return unknown;
        const { keyframes, frameMs } = (await response.json()) as { keyframes: number[]; frameMs: number };
        return { frame: exactFrame(frameMs), keyframes };
    } catch {
        // All that lacks is a help.
        return unknown;
    }
}

let latest: { key: string; frames: Promise<Frames> } | null = null;

export function framesOf(capture: Capture): Promise<Frames> {
    const key = fileKey(capture);
    if (latest?.key !== key) latest = { key, frames: ask(capture) };
    return latest.frames;
}
