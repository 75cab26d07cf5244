// What is selected: how many, how large, and what can be done with them.
import { html, type TemplateResult } from "lit";
import { sizeText, text } from "../strings/index.js";
import { send, type Context } from "./context.js";
import { PageElement } from "./page-element.js";

export class SelectionBar extends PageElement {
    context!: Context;

    override connectedCallback(): void {
        super.connectedCallback();
        this.setAttribute("role", "toolbar");
        this.setAttribute("aria-label", text.selection);
    }

    protected override updated(): void {
        this.hidden = this.context.selection.size === 0;
    }

    protected override render(): TemplateResult {
        const { gallery, selection } = this.context;
        const size = selection.of(gallery.captures).reduce((sum, { sizeKB }) => sum + sizeKB, 0);
        return html`
            <span class="count">${text.selected(selection.size, sizeText(size))}</span>
            <button @click=${this.selectAll}>${text.selectAll}</button>
            <button @click=${this.clear}>${text.clearSelection}</button>
        `;
    }

    private readonly selectAll = (): void => {
        const { gallery, selection } = this.context;
        selection.add(gallery.arrangement.between(0, gallery.arrangement.length - 1));
        send(this, "selection-change");
    };

    private readonly clear = (): void => {
        this.context.selection.clear();
        send(this, "selection-change");
    };
}

customElements.define("selection-bar", SelectionBar);
