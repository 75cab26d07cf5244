// Files that something did not work with, and why.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Failure } from "../model/deletions.js";
import * as text from "../strings/en.js";

// More are counted.
const SHOWN = 5;

export function failureList(failures: readonly Failure[]): TemplateResult | typeof nothing {
    if (failures.length === 0) return nothing;
    const shown = failures.slice(0, SHOWN);
    const rest = failures.length - shown.length;
    return html`<ul class="failures">
        ${shown.map(({ capture, reason }) => html`<li><bdi>${capture.fileName}</bdi>: ${reason}</li>`)}
        ${rest > 0 ? html`<li>${text.more(rest)}</li>` : nothing}
    </ul>`;
}
