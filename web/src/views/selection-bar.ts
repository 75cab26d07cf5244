// What is selected: how many, how large, and what can be done with them.
import { html, type TemplateResult } from "lit/html.js";
import * as text from "../strings/en.js";
import { sizeText } from "../strings/formats.js";
import { send, type Context, type SelectionAction } from "./context.js";
import { PageElement } from "./page-element.js";

const ACTIONS: readonly (readonly [SelectionAction, string])[] = [
    ["copy", text.copyTo],
    ["move", text.moveTo],
    ["delete", text.remove],
    ["montage", text.montage],
];

export class SelectionBar extends PageElement {
    context!: Context;

    override connectedCallback(): void {
        super.connectedCallback();
        this.role = "toolbar";
        this.ariaLabel = text.selection;
        this.addEventListener("keydown", this.#onKey);
    }

    // The arrows lead from button to button, as in any toolbar.
    readonly #onKey = (event: KeyboardEvent): void => {
        const way = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
        const buttons = [...this.querySelectorAll("button")];
        const place = buttons.indexOf(document.activeElement as HTMLButtonElement);
        if (way === undefined || place < 0) return;
        event.preventDefault();
        buttons.at((place + way) % buttons.length)?.focus();
    };

    protected override updated(): void {
        this.hidden = this.context.selection.size === 0;
    }

    protected override render(): TemplateResult {
        const { gallery, selection } = this.context;
        const size = selection.of(gallery.captures).reduce((sum, { sizeKB }) => sum + sizeKB, 0);
        return html`
            <span class="count">${text.selected(selection.size, sizeText(size))}</span>
            ${ACTIONS.map(
                ([action, label]) =>
                    html`<button @click=${() => send(this, "selection-action", action)}>${label}</button>`,
            )}
            <span class="divider"></span>
            <button @click=${this.#selectAll}>${text.selectAll}</button>
            <button @click=${this.#clear}>${text.clearSelection}</button>
        `;
    }

    readonly #selectAll = (): void => {
        const { gallery, selection } = this.context;
        selection.add(gallery.arrangement.between(0, gallery.arrangement.length - 1));
        send(this, "selection-change");
    };

    readonly #clear = (): void => {
        this.context.selection.clear();
        send(this, "selection-change");
    };
}

customElements.define("selection-bar", SelectionBar);
