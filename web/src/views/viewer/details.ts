// What is known about a capture.
import { html, nothing, type TemplateResult } from "lit";
import { hasCaption, type Capture } from "../../model/capture.js";
import { lengthText, momentText, sizeText, text } from "../../strings/index.js";

function row(name: string, value: string): TemplateResult | typeof nothing {
    return value === ""
        ? nothing
        : html`<dt>${name}</dt>
              <dd dir="auto">${value}</dd>`;
}

export function details(capture: Capture, copied: boolean, copyPath: () => void): TemplateResult {
    const { game, time, durationMs, sizeKB, highlight, highlightName, caption, path } = capture;
    return html`<aside class="details" aria-label=${text.details}>
        <dl>
            ${row(text.game, game)} ${row(text.date, momentText(time))}
            ${row(text.length, durationMs > 0 ? lengthText(durationMs) : "")}
            ${row(text.size, sizeText(sizeKB))}
            ${row(text.kinds.highlight, highlight ? highlightName || text.yes : "")}
            ${hasCaption(capture)
                ? row(text.caption, [caption.top, caption.bottom].filter(Boolean).join(" / "))
                : nothing}
            ${row(text.path, path)}
        </dl>
        <button @click=${copyPath}>${copied ? text.copied : text.copyPath}</button>
    </aside>`;
}
