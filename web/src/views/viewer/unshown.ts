// In place of a capture that the browser does not show: its thumbnail, and ways to see it elsewhere. When the gallery
// has no thumbnail either, the file itself is broken.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../../model/capture.js";
import type { Load } from "../../model/thumbnails.js";
import * as text from "../../strings/en.js";
import { send, type Context } from "../context.js";
import { openOutside } from "../open-outside.js";
import { PageElement } from "../page-element.js";
import { loaderFor } from "../thumbnail-loader.js";

export class UnshownCapture extends PageElement {
    context!: Context;
    capture!: Capture;
    // Null when there is none.
    #thumbnail: string | null | undefined;
    #load: Load | null = null;

    override connectedCallback(): void {
        super.connectedCallback();
        this.#load = loaderFor(this.context.client)(this.capture);
        this.#load.done.then(
            (found) => this.#show(found === null ? null : found?.source),
            () => {}, // a lost connection says nothing about the file
        );
    }

    disconnectedCallback(): void {
        this.#load?.cancel();
    }

    protected override render(): TemplateResult {
        const { capture } = this;
        const thumbnail = this.#thumbnail;
        return html`
            ${thumbnail ? html`<img alt="" src=${thumbnail} />` : nothing}
            <p>
                <strong><bdi>${capture.fileName}</bdi></strong>
            </p>
            <p role="status">${thumbnail === null ? text.viewer.brokenTitle : text.viewer.openFailed}</p>
            <p>
                ${this.#hostButton("OpenInPlayer", text.openInPlayer)}
                <button @click=${() => send(this, "retry-media")}>${text.retry}</button>
                ${this.#hostButton("OpenFolder", text.openFolder)}
            </p>
            ${this.context.client.offers("OpenInPlayer") ? nothing : this.#path()}
        `;
    }

    #path(): TemplateResult {
        return html`<p class="path"><bdi>${this.capture.path}</bdi></p>
            <button @click=${() => send(this, "copy-path")}>${text.detailsCopyPath}</button>`;
    }

    #hostButton(method: "OpenFolder" | "OpenInPlayer", label: string): TemplateResult | typeof nothing {
        if (!this.context.client.offers(method)) return nothing;
        return html`<button @click=${() => openOutside(this, method, this.capture)}>${label}</button>`;
    }

    #show(thumbnail: string | null | undefined): void {
        this.#thumbnail = thumbnail;
        this.requestUpdate();
    }
}

customElements.define("unshown-capture", UnshownCapture);
