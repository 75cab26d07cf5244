// Search, filters, order and size of the cells.
import { html, type TemplateResult } from "lit/html.js";
import { GROUPINGS } from "../model/arrangement.js";
import type { View } from "../model/gallery.js";
import { SORTS } from "../model/order.js";
import * as text from "../strings/en.js";
import { send, type Context } from "./context.js";
import { valueOf } from "./fields.js";
import { PageElement } from "./page-element.js";

interface Choice {
    readonly label: string;
    readonly member: "game" | "kind" | "grouping" | "sort";
    readonly options: readonly (readonly [value: string, title: string])[];
}

export const CELL_SIZES = { min: 140, max: 420, step: 20 };

export class FilterBar extends PageElement {
    context!: Context;
    /** The least width of the grid's cells, in pixels. */
    cellSize = 0;

    protected override render(): TemplateResult {
        const { gallery } = this.context;
        const games = gallery.games.map((game) => [game, game] as const);
        return html`
            <input
                type="search"
                aria-label=${text.searchCaptures}
                placeholder=${text.searchCaptures}
                .value=${gallery.view.search}
                @input=${(event: Event) => this.#set({ search: valueOf(event) })}
            />
            <div class="choices">
                ${this.#choice({
                    label: text.game,
                    member: "game",
                    options: [["", text.allGames], ...games],
                })}
                ${this.#choice({
                    label: text.kind,
                    member: "kind",
                    options: [
                        ["", text.allKinds],
                        ["image", text.kinds.image],
                        ["video", text.kinds.video],
                    ],
                })}
                ${this.#toggle("highlights", text.highlights)} ${this.#toggle("captions", text.captioned)}
                <span class="divider"></span>
                ${this.#choice({
                    label: text.group,
                    member: "grouping",
                    options: GROUPINGS.map((one) => [one, text.groupings[one]]),
                })}
                ${this.#choice({
                    label: text.sort,
                    member: "sort",
                    options: SORTS.map((one) => [one, text.sorts[one]]),
                })}
                ${this.#size()}
            </div>
        `;
    }

    #choice({ label, member, options }: Choice): TemplateResult {
        const chosen = this.context.gallery.view[member];
        const isFilter = options[0]?.[0] === "";
        const choose = (event: Event) => this.#set({ [member]: valueOf(event) });
        return html`<select
            aria-label=${label}
            class=${isFilter && chosen !== "" ? "chosen" : ""}
            @change=${choose}
        >
            ${options.map(
                ([value, title]) =>
                    html`<option value=${value} ?selected=${value === chosen}>${title}</option>`,
            )}
        </select>`;
    }

    #toggle(member: "highlights" | "captions", label: string): TemplateResult {
        const on = this.context.gallery.view[member];
        return html`<button class="toggle" aria-pressed=${on} @click=${() => this.#set({ [member]: !on })}>
            ${label}
        </button>`;
    }

    #size(): TemplateResult {
        const { min, max, step } = CELL_SIZES;
        return html`<input
            type="range"
            aria-label=${text.cellSize}
            title=${text.cellSize}
            min=${min}
            max=${max}
            step=${step}
            .value=${String(this.cellSize)}
            @input=${(event: Event) => send(this, "cell-size", Number(valueOf(event)))}
        />`;
    }

    #set(changes: Partial<View>): void {
        send(this, "view-choice", changes);
    }
}

customElements.define("filter-bar", FilterBar);
