// One capture in the grid: a picture and its title. Cells are many, so they are no elements of their own.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../model/capture.js";
import type { Thumbnail } from "../model/thumbnails.js";
import * as text from "../strings/en.js";
import { lengthText, momentText } from "../strings/formats.js";

export interface CellState {
    readonly column: number;
    readonly thumbnail: Thumbnail;
    readonly selected: boolean;
    /** The one cell that Tab reaches. */
    readonly tabStop: boolean;
    readonly canOpenFolder: boolean;
}

// Names with letters that run from right to left must not turn the rest of the label around.
const RIGHT_TO_LEFT = /\p{Script=Arabic}|\p{Script=Hebrew}|\p{Script=Syriac}|\p{Script=Thaana}/u;
const isolated = (name: string): string => (RIGHT_TO_LEFT.test(name) ? `\u2068${name}\u2069` : name);

function cellName(capture: Capture, thumbnail: Thumbnail): string {
    const kind = capture.highlight ? text.kinds.highlight : text.kinds[capture.kind];
    const parts = [isolated(capture.title), kind, momentText(capture.time)];
    return (thumbnail === "broken" ? [...parts, text.broken] : parts).join(", ");
}

function badge({ kind, durationMs }: Capture): string | typeof nothing {
    return kind === "video" && durationMs > 0 ? lengthText(durationMs) : nothing;
}

// The grid finds out by the data attribute which button was pressed.
function button(action: string, label: string, tabStop: boolean): TemplateResult {
    return html`<button
        class="icon ${action}"
        data-action=${action}
        aria-label=${label}
        title=${label}
        tabindex=${tabStop ? 0 : -1}
    ></button>`;
}

// What is seen here stands in the cell's name, or is a button's own.
function broken({ tabStop, canOpenFolder }: CellState): TemplateResult {
    return html`<span class="broken" data-reason=${text.broken}>
        ${button("retry", text.retry, tabStop)}
        ${canOpenFolder ? button("open-folder", text.openFolder, tabStop) : nothing}
    </span>`;
}

function picture(state: CellState): TemplateResult | typeof nothing {
    const { thumbnail } = state;
    if (thumbnail === undefined) return nothing;
    if (thumbnail === "broken") return broken(state);
    return html`<img alt="" decoding="async" draggable="false" src=${thumbnail.source} />`;
}

export function cell(capture: Capture, state: CellState): TemplateResult {
    return html`<div
        role="gridcell"
        class=${capture.highlight ? "cell highlight" : "cell"}
        tabindex=${state.tabStop ? 0 : -1}
        aria-colindex=${state.column}
        aria-selected=${state.selected}
        aria-label=${cellName(capture, state.thumbnail)}
        data-path=${capture.path}
        data-badge=${badge(capture)}
    >
        ${picture(state)}<span class="title" dir="auto" title=${capture.fileName}>${capture.title}</span>
    </div>`;
}
