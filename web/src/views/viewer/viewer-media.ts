// What the viewer shows of a capture: a picture, a video, or why there is none.
import { repeat } from "lit/directives/repeat.js";
import { html, type TemplateResult } from "lit/html.js";
import { fileKey, type Capture } from "../../model/capture.js";
import type { Context } from "../context.js";
import "./image-stage.js";
import type { Playback } from "./playback.js";
import "./unshown.js";
import "./video-player.js";

export interface MediaState {
    readonly context: Context;
    readonly playback: Playback;
    /** Whether the browser did not show it. */
    readonly failed: boolean;
    readonly attempt: number;
}

function element(capture: Capture, { context, playback, failed, attempt }: MediaState): TemplateResult {
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

/** Another file, and another attempt, is another element. */
export function media(capture: Capture, state: MediaState): unknown {
    return repeat(
        [capture],
        () => `${state.attempt}\n${fileKey(capture)}`,
        () => element(capture, state),
    );
}
