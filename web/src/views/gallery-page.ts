// The page: the bar on top, the grid, and what is around it.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../model/capture.js";
import { NO_FILTER } from "../model/filter.js";
import type { Change, View } from "../model/gallery.js";
import * as text from "../strings/en.js";
import { Actions } from "./actions.js";
import type { CaptureGrid } from "./capture-grid.js";
import type { Context } from "./context.js";
import "./capture-grid.js";
import { iconButton } from "./fields.js";
import "./filter-bar.js";
import "./jump-scrubber.js";
import { PageElement } from "./page-element.js";
import "./selection-bar.js";
import { showClip } from "./show-clip.js";
import { emptyState, notice } from "./states.js";
import "./toast-list.js";
import type { CaptureViewer } from "./viewer/capture-viewer.js";
import "./viewer/capture-viewer.js";

export class GalleryPage extends PageElement {
    context!: Context;
    /** The least width of the grid's cells, in pixels; `refresh` after a change. */
    cellSize = 0;
    readonly actions = new Actions(this);
    #announced = "";

    /** Null while there is nothing to show in it. */
    get grid(): CaptureGrid | null {
        return this.querySelector("capture-grid");
    }

    override connectedCallback(): void {
        super.connectedCallback();
        this.actions.connect();
        this.context.gallery.onChange((change) => this.#onChange(change));
        this.addEventListener("selection-change", () => this.refresh());
        this.addEventListener("grid-view", () => this.#followGrid());
        this.addEventListener("report-failure", ({ detail }) => this.announce(text.failed(detail)));
        this.addEventListener("open-capture", ({ detail }) =>
            this.querySelector<CaptureViewer>("capture-viewer")?.open(detail),
        );
        this.addEventListener("viewer-closed", ({ detail }) => {
            if (detail) void this.grid?.focusCapture(detail);
        });
        this.addEventListener("show-clip", ({ detail }) => void showClip(this, detail));
        this.addEventListener("announce", ({ detail }) => this.announce(detail));
        this.addEventListener("view-choice", (event) =>
            this.#choose((event as CustomEvent<Partial<View>>).detail),
        );
    }

    announce(message: string): void {
        this.#announced = message;
        this.requestUpdate();
    }

    async goTo({ path }: Capture): Promise<void> {
        const { gallery, selection } = this.context;
        const known = () => gallery.captures.get(path);
        if (known() && !gallery.isShown(known()!)) this.#choose(NO_FILTER);
        // The grid may have to be laid out with it first.
        await gallery.until(() => !known() || gallery.arrangement.indexOf(known()!) >= 0);
        const capture = known();
        if (!capture) return;
        selection.only(capture);
        this.refresh();
        await this.grid?.focusCapture(capture);
    }

    /** Draws everything again that shows what the model holds. */
    refresh(): void {
        this.requestUpdate();
        for (const element of this.querySelectorAll<PageElement>(
            "capture-grid, filter-bar, selection-bar, jump-scrubber",
        ))
            element.requestUpdate();
    }

    protected override render(): TemplateResult {
        const { context } = this;
        const { gallery } = context;
        return html`
            <main aria-label=${text.gallery}>
                <header class="bar">
                    <h1>${text.gallery} <small>${this.#countText()}</small></h1>
                    ${iconButton("settings", text.settings, () => this.actions.openSettings())}
                    <filter-bar .context=${context} .cellSize=${this.cellSize}></filter-bar>
                </header>
                <div class="notices" role="status">${notice(gallery)}${this.actions.warnings()}</div>
                ${gallery.arrangement.length === 0
                    ? emptyState(gallery, () => this.#choose(NO_FILTER))
                    : html`<div class="stage">
                          <capture-grid .context=${context} .cellSize=${this.cellSize}></capture-grid>
                          <jump-scrubber .context=${context}></jump-scrubber>
                          ${this.#newsButton()}
                      </div>`}
                <selection-bar .context=${context} hidden></selection-bar>
                <div class="announcements" role="status">${this.#announced}</div>
                <div class="toasts"><toast-list .context=${context}></toast-list></div>
            </main>
            <capture-viewer .context=${context}></capture-viewer>
            <div class="dialogs"></div>
        `;
    }

    #countText(): string {
        const { gallery } = this.context;
        return gallery.status === "loading" ? "" : text.captureCount(gallery.arrangement.length);
    }

    #newsButton(): TemplateResult | typeof nothing {
        const unseen = this.grid?.unseen ?? [];
        if (unseen.length === 0) return nothing;
        return html`<button class="news" @click=${() => this.#showNews(unseen)}>
            ${text.newCaptures(unseen.length)}
        </button>`;
    }

    #showNews(unseen: readonly Capture[]): void {
        const { grid } = this;
        const { arrangement } = this.context.gallery;
        const first = [...unseen].sort((a, b) => arrangement.indexOf(a) - arrangement.indexOf(b))[0];
        if (!grid || !first) return;
        grid.unseen = [];
        grid.reveal(first, "start");
        void grid.focusCapture(first);
        this.requestUpdate();
    }

    #choose(changes: Partial<View>): void {
        const { gallery, selection } = this.context;
        gallery.setView(changes);
        selection.keepShown(gallery.isShown, gallery.captures);
        this.refresh();
    }

    #onChange({ added }: Change): void {
        const { gallery, selection, thumbnails } = this.context;
        selection.keepShown(gallery.isShown, gallery.captures);
        thumbnails.pause(gallery.connection !== "open" || gallery.status === "missing");
        if (added.length > 0)
            this.#announced =
                added.length === 1 ? text.captured(added[0]!.title) : text.capturedSeveral(added.length);
        this.refresh();
    }

    #followGrid(): void {
        const scrubber = this.querySelector("jump-scrubber") as
            | (PageElement & { grid: CaptureGrid | null })
            | null;
        if (scrubber) scrubber.grid = this.grid;
        scrubber?.requestUpdate();
        const shown = this.querySelector(".news") !== null;
        if (shown !== (this.grid?.unseen.length ?? 0) > 0) this.requestUpdate();
    }
}

customElements.define("gallery-page", GalleryPage);
