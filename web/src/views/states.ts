// What is shown where there are no captures to show, and above them when something is wrong.
import { html, nothing, type TemplateResult } from "lit/html.js";
import { isFiltering } from "../model/filter.js";
import type { Gallery } from "../model/gallery.js";
import * as text from "../strings/en.js";

function state(name: string, title: string, content: unknown): TemplateResult {
    return html`<section class="state ${name}">
        <span class="symbol" aria-hidden="true"></span>
        <h2>${title}</h2>
        ${content}
    </section>`;
}

function folderText(sentence: string, folder: string): TemplateResult {
    return html`<p>${sentence} <bdi class="path">${folder}</bdi>.</p>`;
}

/** In place of a grid without captures. */
export function emptyState(gallery: Gallery, showAll: () => void): TemplateResult {
    const { status, folder, captures, view } = gallery;
    if (captures.size > 0 && isFiltering(view))
        return state(
            "none",
            text.noMatchTitle,
            html`<p>${text.noMatch}</p>
                <button @click=${showAll}>${text.showAll}</button>`,
        );
    if (status === "loading") return state("loading", text.loading, nothing);
    if (status === "scanning")
        return state(
            "scanning",
            text.scanningTitle,
            html`<progress aria-label=${text.scanningTitle}></progress>`,
        );
    if (status === "missing") return state("missing", text.missingTitle, folderText(text.missing, folder));
    return state(
        "empty",
        text.emptyTitle,
        html`${folderText(text.emptyHow, folder)}
            <p>${text.emptyCopy}</p>`,
    );
}

/** Above the grid. Its element is a status region, which reads out what changes. */
export function notice({ connection, status, captures }: Gallery): TemplateResult | typeof nothing {
    if (connection !== "open")
        return html`<p class="notice warning">${connection === "lost" ? text.lost : text.outdated}</p>`;
    if (status === "scanning" && captures.size > 0)
        return html`<p class="notice">
            <progress aria-label=${text.scanningTitle}></progress>${text.scanning(captures.size)}
        </p>`;
    return nothing;
}
