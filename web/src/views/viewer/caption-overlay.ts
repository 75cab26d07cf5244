// A caption over its picture, which the lines are as wide as.
import { html, nothing, type TemplateResult } from "lit/html.js";

export function captionOverlay(top: string, bottom: string): TemplateResult | typeof nothing {
    if (top === "" && bottom === "") return nothing;
    return html`<div class="caption-lines">
        <span dir="auto">${top}</span><span dir="auto">${bottom}</span>
    </div>`;
}
