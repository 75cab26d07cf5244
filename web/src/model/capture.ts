// A capture as the page sees it, made from the record that the gallery sends.
import type { UGC } from "../api/types.js";

export type Kind = "image" | "video" | "other";

/** What a record is known by: paths are unique, and ids change when the gallery is scanned anew. */
export interface Capture {
    readonly path: string;
    /** The name by which the server's routes know the file; empty where there is no such server. */
    readonly handle: string;
    /** The file's name without its extension. */
    readonly title: string;
    readonly fileName: string;
    /** The folder that the capture is in, which is its game's. */
    readonly game: string;
    readonly kind: Kind;
    readonly highlight: boolean;
    readonly highlightName: string;
    readonly highlightGroup: string;
    /** When it happened, in milliseconds since 1970; 0 when that is unknown. */
    readonly highlightTime: number;
    readonly caption: { readonly top: string; readonly bottom: string };
    /** Milliseconds since 1970; 0 when the date is unknown. */
    readonly time: number;
    readonly sizeKB: number;
    readonly durationMs: number;
    /** Another value when the file has changed. */
    readonly version: string;
}

/** A record as it arrives; the page's server adds the handle. */
export type CaptureRecord = UGC & { handle?: string };

function nameParts(path: string): { game: string; fileName: string; title: string } {
    const parts = path.split("/");
    const fileName = parts.at(-1) ?? "";
    const dot = fileName.lastIndexOf(".");
    return { game: parts.at(-2) ?? "", fileName, title: dot > 0 ? fileName.slice(0, dot) : fileName };
}

function timeOf(date = ""): number {
    return Date.parse(date) || 0;
}

/** Null for a record without a path, which nothing can be done with. */
export function captureOf(record: CaptureRecord | undefined): Capture | null {
    if (!record || typeof record.path !== "string" || record.path === "") return null;
    const { path, fileType, date = "", fileSizeKB = 0, msDuration = 0, memeInfo, handle = "" } = record;
    return {
        path,
        handle,
        ...nameParts(path),
        kind: fileType === "image" || fileType === "video" ? fileType : "other",
        highlight: record.fileSubType === "Highlight",
        highlightName: record.highlightName ?? "",
        highlightGroup: record.highlightGroupId ?? "",
        highlightTime: timeOf(record.eventTimeStamp),
        caption: { top: memeInfo?.topBarText ?? "", bottom: memeInfo?.bottomBarText ?? "" },
        time: timeOf(date),
        sizeKB: fileSizeKB,
        durationMs: msDuration,
        version: handle || `${date}/${fileSizeKB}`,
    };
}

/** What a file is known by: one that has changed is another one. */
export function fileKey({ path, version }: Capture): string {
    return `${version}\n${path}`;
}

export function hasCaption({ caption }: Capture): boolean {
    return caption.top !== "" || caption.bottom !== "";
}

/** The day of a capture where the viewer is, as YYYY-MM-DD; empty when its date is unknown. */
export function dayOf({ time }: Capture): string {
    if (time === 0) return "";
    const date = new Date(time);
    const twoDigits = (number: number) => String(number).padStart(2, "0");
    return `${date.getFullYear()}-${twoDigits(date.getMonth() + 1)}-${twoDigits(date.getDate())}`;
}
