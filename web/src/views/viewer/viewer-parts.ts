// What the viewer shows: the capture itself, and a dialog that works on it.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../../model/capture.js";
import type { Context } from "../context.js";
import "../trim/trim-dialog.js";
import "./caption-dialog.js";
import "./image-stage.js";
import type { Playback } from "./playback.js";
import "./unshown.js";
import "./video-player.js";

export type Inner = "caption" | "trim" | null;

export interface MediaState {
    readonly context: Context;
    readonly playback: Playback;
    /** Whether the browser did not show it. */
    readonly failed: boolean;
    readonly attempt: number;
}

export function media(capture: Capture, { context, playback, failed, attempt }: MediaState): TemplateResult {
    if (capture.kind === "other" || failed)
        return html`<unshown-capture .context=${context} .capture=${capture}></unshown-capture>`;
    const thumbnail = context.thumbnails.get(capture);
    // Until there is more to see.
    const preview = thumbnail && thumbnail !== "broken" ? thumbnail.source : "";
    if (capture.kind === "image")
        return html`<image-stage .capture=${capture} .preview=${preview} .attempt=${attempt}></image-stage>`;
    return html`<video-player
        .capture=${capture}
        .preview=${preview}
        .attempt=${attempt}
        .playback=${playback}
    ></video-player>`;
}

export function innerDialog(
    inner: Inner,
    context: Context,
    capture: Capture,
    close: (inner: Inner) => void,
): TemplateResult | typeof nothing {
    if (inner === "caption")
        return html`<caption-dialog
            .context=${context}
            .capture=${capture}
            @close-inner=${() => close(inner)}
        ></caption-dialog>`;
    if (inner === "trim")
        return html`<trim-dialog
            .context=${context}
            .capture=${capture}
            @close-inner=${() => close(inner)}
        ></trim-dialog>`;
    return nothing;
}
