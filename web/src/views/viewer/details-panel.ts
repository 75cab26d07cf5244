// What is known about a capture.
import { html, nothing, type TemplateResult } from "lit/html.js";
import { hasCaption, type Capture } from "../../model/capture.js";
import * as text from "../../strings/en.js";
import { lengthText, momentText, sizeText } from "../../strings/formats.js";

function fact(name: string, value: unknown): TemplateResult | typeof nothing {
    if (value === "") return nothing;
    return html`<dt>${name}</dt>
        <dd><bdi>${value}</bdi></dd>`;
}

function captionFact({ caption }: Capture): TemplateResult {
    return html`<dt>${text.detailsCaption}</dt>
        <dd><bdi>${caption.top}</bdi><br /><bdi>${caption.bottom}</bdi></dd>`;
}

export function detailsPanel(capture: Capture, copyPath: () => void): TemplateResult {
    const { highlightTime, durationMs } = capture;
    return html`<section class="facts" aria-label=${text.viewer.details}>
        <dl>
            ${fact(text.detailsGame, capture.game)} ${fact(text.detailsDate, momentText(capture.time))}
            ${fact(text.detailsLength, durationMs > 0 ? lengthText(durationMs) : "")}
            ${fact(text.detailsSize, sizeText(capture.sizeKB))}
            ${capture.highlight
                ? fact(text.detailsHighlight, capture.highlightName || text.kinds.highlight)
                : nothing}
            ${fact(text.detailsMoment, highlightTime > 0 ? momentText(highlightTime) : "")}
            ${fact(text.detailsGroup, capture.highlightGroup)}
            ${hasCaption(capture) ? captionFact(capture) : nothing} ${fact(text.detailsPath, capture.path)}
        </dl>
        <button @click=${copyPath}>${text.detailsCopyPath}</button>
    </section>`;
}

/** Copies a path, and returns what to say about it. */
export async function copied(path: string): Promise<string> {
    try {
        await navigator.clipboard.writeText(path);
        return text.detailsCopied;
    } catch (error) {
        return text.failed((error as Error).message);
    }
}
