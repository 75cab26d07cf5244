// Records for tests, as the gallery sends them.
import { captureOf, type Capture, type CaptureRecord } from "../src/model/capture.js";

/** "2026-03-14T18:00:00Z" and as many minutes later. */
export function dateAt(minutes: number): string {
    return new Date(Date.UTC(2026, 2, 14, 18, minutes)).toISOString().replace(".000", "");
}

export function record(name: string, changes: CaptureRecord = {}): CaptureRecord {
    return { path: `/gallery/${name}`, fileType: "image", fileSizeKB: 1, date: dateAt(0), ...changes };
}

export function capture(name: string, changes: CaptureRecord = {}): Capture {
    return captureOf(record(name, changes))!;
}
