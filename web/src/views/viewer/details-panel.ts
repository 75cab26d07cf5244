// What is known about a capture.
import { html, nothing, type TemplateResult } from "lit/html.js";
import { hasCaption, type Capture } from "../../model/capture.js";
import { lengthText, momentText, sizeText, text } from "../../strings/index.js";

function fact(name: string, value: unknown): TemplateResult | typeof nothing {
    if (value === "") return nothing;
    return html`<dt>${name}</dt>
        <dd><bdi>${value}</bdi></dd>`;
}

function captionFact({ caption }: Capture): TemplateResult {
    return html`<dt>${text.details.caption}</dt>
        <dd><bdi>${caption.top}</bdi><br /><bdi>${caption.bottom}</bdi></dd>`;
}

export function detailsPanel(capture: Capture, copyPath: () => void): TemplateResult {
    const names = text.details;
    const { highlightTime, durationMs } = capture;
    return html`<section class="facts" aria-label=${text.viewer.details}>
        <dl>
            ${fact(names.game, capture.game)} ${fact(names.date, momentText(capture.time))}
            ${fact(names.length, durationMs > 0 ? lengthText(durationMs) : "")}
            ${fact(names.size, sizeText(capture.sizeKB))}
            ${capture.highlight
                ? fact(names.highlight, capture.highlightName || text.kinds.highlight)
                : nothing}
            ${fact(names.moment, highlightTime > 0 ? momentText(highlightTime) : "")}
            ${fact(names.group, capture.highlightGroup)}
            ${hasCaption(capture) ? captionFact(capture) : nothing} ${fact(names.path, capture.path)}
        </dl>
        <button @click=${copyPath}>${names.copyPath}</button>
    </section>`;
}
