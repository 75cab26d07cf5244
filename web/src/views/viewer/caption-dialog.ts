// Writes the caption of a capture; both lines are seen over the picture as one types.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../../model/capture.js";
import { text } from "../../strings/index.js";
import { send, type Context } from "../context.js";
import { mediaAddress, thumbnailAddress } from "../media.js";
import { PageElement } from "../page-element.js";
import { captionOverlay } from "./caption-overlay.js";

type Line = "top" | "bottom";
type State = "writing" | "saving" | { failure: string };

export class CaptionDialog extends PageElement {
    context!: Context;
    capture!: Capture;
    #lines = { top: "", bottom: "" };
    #state: State = "writing";

    override connectedCallback(): void {
        super.connectedCallback();
        this.#lines = { ...this.capture.caption };
    }

    protected override firstUpdated(): void {
        this.#dialog.showModal();
        this.querySelector("input")?.select();
    }

    protected override render(): TemplateResult {
        const state = this.#state;
        const lines = this.#lines;
        const names = text.captionTexts;
        return html`<dialog class="inner" aria-label=${names.title} @close=${this.#onClose}>
            <form @submit=${this.#save}>
                <div class="caption-preview">
                    ${this.#picture()} ${captionOverlay(lines.top, lines.bottom)}
                </div>
                ${this.#box("top", names.top)} ${this.#box("bottom", names.bottom)}
                <p class="hint">${names.where}</p>
                ${typeof state === "object"
                    ? html`<p class="failure" role="alert">${text.failed(state.failure)}</p>`
                    : nothing}
                <p class="actions">
                    <button type="button" @click=${() => this.#dialog.close()}>${text.cancel}</button>
                    <button class="primary" ?disabled=${state === "saving"}>
                        ${state === "saving" ? names.saving : text.save}
                    </button>
                </p>
            </form>
        </dialog>`;
    }

    get #dialog(): HTMLDialogElement {
        return this.querySelector("dialog")!;
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

    #box(line: Line, label: string): TemplateResult {
        const write = (event: Event) => {
            this.#lines[line] = (event.target as HTMLInputElement).value;
            this.requestUpdate();
        };
        return html`<label>
            ${label}<input
                type="text"
                dir="auto"
                autocomplete="off"
                .value=${this.#lines[line]}
                @input=${write}
            />
        </label>`;
    }

    readonly #save = async (event: Event): Promise<void> => {
        event.preventDefault();
        if (this.#state === "saving") return;
        const { client, gallery } = this.context;
        const { path } = this.capture;
        const caption = { ...this.#lines };
        this.#setState("saving");
        try {
            const memeInfo = { topBarText: caption.top, bottomBarText: caption.bottom };
            await client.request("AddMeme", { file: path, memeInfo });
            // The gallery announces no change of a caption.
            const known = gallery.captures.get(path);
            if (known) gallery.put({ ...known, caption });
            send(this, "viewer-message", text.captionTexts.saved);
            this.#dialog.close();
        } catch (error) {
            this.#setState({ failure: (error as Error).message });
        }
    };

    #setState(state: State): void {
        this.#state = state;
        this.requestUpdate();
    }

    readonly #onClose = (): void => send(this, "close-inner");
}

customElements.define("caption-dialog", CaptionDialog);
