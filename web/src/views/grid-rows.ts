// The rows of the grid: headers of groups, and rows of cells.
import { html, type TemplateResult } from "lit/html.js";
import { repeat } from "lit/directives/repeat.js";
import type { Capture } from "../model/capture.js";
import type { Row } from "../model/layout.js";
import * as text from "../strings/en.js";
import { dayText } from "../strings/formats.js";
import { cell } from "./cell.js";
import type { Context } from "./context.js";

export interface RowState {
    readonly columns: number;
    /** Where the row is drawn. */
    readonly top: number;
    readonly tabStop: Capture | undefined;
}

const styleOf = ({ top }: RowState): string => `transform:translateY(${top}px)`;

function header({ gallery }: Context, row: Row, state: RowState): TemplateResult {
    const { key, captures } = gallery.arrangement.groups[row.group]!;
    const byGame = gallery.view.grouping === "game";
    const title = byGame ? key : dayText(key);
    return html`<div role="row" class="group" aria-rowindex=${row.number} .style=${styleOf(state)}>
        <div role="rowheader" aria-colspan=${state.columns}>
            <span dir="auto">${title}</span> <small>${text.captureCount(captures.length)}</small>
            <button class="select-group" data-action="select-group" data-group=${key} tabindex="-1">
                ${byGame ? text.selectGame : text.selectDay}
            </button>
        </div>
    </div>`;
}

function cells(context: Context, row: Row, state: RowState): TemplateResult {
    const { gallery, selection, thumbnails, client } = context;
    const canOpenFolder = client.offers("OpenFolder");
    const captures = gallery.arrangement.between(row.first, row.first + row.count - 1);
    const cellOf = (capture: Capture, place: number) =>
        cell(capture, {
            column: place + 1,
            thumbnail: thumbnails.get(capture),
            selected: selection.has(capture),
            tabStop: capture === state.tabStop,
            canOpenFolder,
        });
    return html`<div role="row" class="cells" aria-rowindex=${row.number} .style=${styleOf(state)}>
        ${repeat(captures, ({ path }) => path, cellOf)}
    </div>`;
}

export function gridRow(context: Context, row: Row, state: RowState): TemplateResult {
    return row.count === 0 ? header(context, row, state) : cells(context, row, state);
}
