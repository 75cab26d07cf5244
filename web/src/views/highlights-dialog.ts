// The highlights of a session, of which one chooses what to keep.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../model/capture.js";
import { Thumbnails } from "../model/thumbnails.js";
import * as text from "../strings/en.js";
import { lengthText } from "../strings/formats.js";
import { deletionConfirmed } from "./confirm-dialog.js";
import type { Context } from "./context.js";
import { PageDialog } from "./page-dialog.js";
import { loaderFor } from "./thumbnail-loader.js";

export class HighlightsDialog extends PageDialog {
    context!: Context;
    captures: readonly Capture[] = [];
    protected readonly heading = text.highlights;
    readonly #rejected = new Set<Capture>();
    #thumbnails!: Thumbnails;

    override connectedCallback(): void {
        super.connectedCallback();
        const limits = { inFlight: 1, cacheBytes: Infinity }; // the grid asks for others meanwhile
        const loader = loaderFor(this.context.client);
        this.#thumbnails = new Thumbnails(loader, () => this.requestUpdate(), limits);
        this.#thumbnails.want(this.captures);
    }

    disconnectedCallback(): void {
        this.#thumbnails.want([]);
    }

    protected content(): TemplateResult {
        const { size } = this.#rejected;
        return html`<p>${text.chooseHighlights}</p>
            <ul class="highlights">
                ${this.captures.map((capture) => html`<li>${this.#card(capture)}</li>`)}
            </ul>
            <div class="buttons">
                <button type="button" ?disabled=${size === 0} @click=${this.#delete}>
                    ${size === 0 ? text.remove : text.deleteCount(size)}
                </button>
                <button type="button" class="primary" autofocus @click=${() => this.close()}>
                    ${text.keepAll}
                </button>
            </div>`;
    }

    #card(capture: Capture): TemplateResult {
        const thumbnail = this.#thumbnails.get(capture);
        const name = capture.highlightName || capture.title;
        const length = capture.durationMs > 0 ? lengthText(capture.durationMs) : text.kinds[capture.kind];
        return html`<label class=${this.#rejected.has(capture) ? "rejected" : ""}>
            <span class="picture">
                ${typeof thumbnail === "object" ? html`<img alt="" src=${thumbnail.source} />` : nothing}
            </span>
            <input
                type="checkbox"
                .checked=${!this.#rejected.has(capture)}
                @change=${(event: Event) => this.#keep(capture, (event.target as HTMLInputElement).checked)}
            />
            <span
                ><bdi>${name}</bdi> <small><bdi>${capture.game}</bdi>, ${length}</small></span
            >
        </label>`;
    }

    #keep(capture: Capture, keeps: boolean): void {
        if (keeps) this.#rejected.delete(capture);
        else this.#rejected.add(capture);
        this.requestUpdate();
    }

    // Each by itself, and not as a group at once: so they can be brought back.
    readonly #delete = async (): Promise<void> => {
        const { deletions } = this.context;
        if (!(await deletionConfirmed(this.#rejected.size, deletions.hasTrash))) return;
        deletions.delete([...this.#rejected]);
        this.close();
    };
}

customElements.define("highlights-dialog", HighlightsDialog);
