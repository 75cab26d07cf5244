// Writes the caption of a capture; both lines are drawn over the picture as one types.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../../model/capture.js";
import * as text from "../../strings/en.js";
import { confirmed } from "../confirm-dialog.js";
import type { Context } from "../context.js";
import { textField } from "../fields.js";
import { mediaAddress, thumbnailAddress } from "../media.js";
import { PageDialog } from "../page-dialog.js";
import { captionOverlay } from "./caption-overlay.js";

export class CaptionDialog extends PageDialog {
    context!: Context;
    capture!: Capture;
    isSaved = false;
    protected readonly heading = text.captionTitle;
    #lines = { top: "", bottom: "" };
    #isAsking = false;
    #isSaving = false;
    #failure = "";

    override connectedCallback(): void {
        super.connectedCallback();
        this.#lines = { ...this.capture.caption };
    }

    override async leave(): Promise<void> {
        if (this.#isAsking) return;
        const { top, bottom } = this.capture.caption;
        const isChanged = this.#lines.top !== top || this.#lines.bottom !== bottom;
        const question = {
            heading: text.captionDiscardQuestion,
            explanation: text.captionUnsaved,
            action: text.captionDiscard,
        };
        this.#isAsking = true;
        if (!isChanged || (await confirmed(question))) this.close();
        this.#isAsking = false;
    }

    protected override firstUpdated(): void {
        super.firstUpdated();
        this.querySelector("input")?.select();
    }

    protected content(): TemplateResult {
        const { top, bottom } = this.#lines;
        return html`<form @submit=${this.#save}>
            <div class="caption-preview">${this.#picture()} ${captionOverlay(top, bottom)}</div>
            ${textField(text.captionTop, top, (written) => this.#write({ top: written }))}
            ${textField(text.captionBottom, bottom, (written) => this.#write({ bottom: written }))}
            <p>${text.captionWhere}</p>
            ${this.#failure ? html`<p class="error" role="alert">${this.#failure}</p>` : nothing}
            <div class="buttons">
                ${this.closeButton(text.cancel)}
                <button class="primary" ?disabled=${this.#isSaving}>
                    ${this.#isSaving ? text.captionSaving : text.save}
                </button>
            </div>
        </form>`;
    }

    #picture(): TemplateResult {
        const { capture } = this;
        const address = mediaAddress(capture);
        if (capture.kind === "image") return html`<img alt="" src=${address} @error=${this.#onNoPicture} />`;
        return html`<video muted src=${address} poster=${this.#thumbnail() ?? nothing}></video>`;
    }

    #thumbnail(): string | undefined {
        return this.capture.handle ? thumbnailAddress(this.capture) : undefined;
    }

    // The browser shows no picture of this kind, but the gallery may.
    readonly #onNoPicture = (event: Event): void => {
        const image = event.target as HTMLImageElement;
        const thumbnail = this.#thumbnail();
        if (thumbnail && !image.src.endsWith(thumbnail)) image.src = thumbnail;
    };

    #write(lines: Partial<Capture["caption"]>): void {
        this.#lines = { ...this.#lines, ...lines };
        this.requestUpdate();
    }

    readonly #save = async (event: Event): Promise<void> => {
        event.preventDefault();
        if (this.#isSaving) return;
        this.#isSaving = true;
        this.requestUpdate();
        try {
            await this.context.captions.write(this.capture.path, this.#lines);
            this.isSaved = true;
            this.close();
        } catch (error) {
            this.#failure = text.failed((error as Error).message);
        }
        this.#isSaving = false;
        this.requestUpdate();
    };
}

customElements.define("caption-dialog", CaptionDialog);
