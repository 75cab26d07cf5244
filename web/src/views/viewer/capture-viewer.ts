// One capture, as large as the window allows, with what can be done with it.
import { html, nothing, type TemplateResult } from "lit/html.js";
import { fileKey, type Capture } from "../../model/capture.js";
import { Viewing } from "../../model/viewing.js";
import * as text from "../../strings/en.js";
import { send, type Clip, type Context } from "../context.js";
import { openDialog } from "../page-dialog.js";
import { PageElement } from "../page-element.js";
import { TrimDialog } from "../trim/trim-dialog.js";
import { CaptionDialog } from "./caption-dialog.js";
import { copied, detailsPanel } from "./details-panel.js";
import { Preloader } from "./preloader.js";
import type { ImageStage } from "./image-stage.js";
import type { Playback } from "./playback.js";
import type { VideoPlayer } from "./video-player.js";
import { toolbar, type ViewerAction } from "./viewer-bar.js";
import { ViewerHistory } from "./viewer-history.js";
import { media } from "./viewer-media.js";
import { actionOf, isForViewer } from "./viewer-input.js";

export class CaptureViewer extends PageElement {
    context!: Context;
    #viewing!: Viewing;
    #showsDetails = false;
    // What works on the capture: its caption, or its clip.
    #inner: CaptionDialog | TrimDialog | null = null;
    #message = "";
    // Which file the browser could not show, and how often it was asked to try again.
    #failed = "";
    #attempts = 0;
    #restore = "";
    #stopListening = (): void => {};
    readonly #playback: Playback = { volume: 1, muted: false, speed: 1, loop: false, begins: true };
    readonly #preloader = new Preloader();
    #clip: Clip | null = null;
    readonly #history = new ViewerHistory(
        () => this.#dialog.close(),
        (path) => this.#reopen(path),
    );

    override connectedCallback(): void {
        super.connectedCallback();
        this.#viewing = new Viewing(this.context.gallery);
        this.#history.connect();
        this.#restore = this.#history.viewing;
        this.#stopListening = this.context.gallery.onChange(() => this.#follow());
        this.addEventListener("media-failed", ({ detail }) => this.#onFailed(detail));
        this.addEventListener("media-shown", () => this.#preloader.want(this.#viewing.nearby()));
        this.addEventListener("retry-media", () => this.#retry());
        this.addEventListener("copy-path", () => void this.#copyPath());
        // The page's own region is out of reach behind the dialog.
        this.addEventListener("report-failure", (event) => {
            if (!this.#dialog.open) return;
            event.stopPropagation();
            this.#say(text.failed(event.detail));
        });
    }

    disconnectedCallback(): void {
        this.#history.disconnect();
        this.#stopListening();
    }

    open(capture: Capture): void {
        this.#restore = "";
        this.#viewing.open(capture);
        this.#forgetLast();
        this.#present();
        if (!this.#dialog.open) this.#dialog.showModal();
    }

    protected override render(): TemplateResult {
        const capture = this.#viewing.current;
        return html`<dialog
            class="viewer"
            aria-label=${capture?.title ?? nothing}
            autofocus
            @close=${this.#onClose}
            @keydown=${this.#onKey}
        >
            ${capture ? this.#content(capture) : nothing}
        </dialog>`;
    }

    // The capture within may have changed, too.
    protected override updated(): void {
        this.querySelector<ImageStage | VideoPlayer>("image-stage, video-player")?.requestUpdate();
    }

    get #dialog(): HTMLDialogElement {
        return this.querySelector("dialog")!;
    }

    #content(capture: Capture): TemplateResult {
        const { arrangement } = this.context.gallery;
        const place = arrangement.indexOf(capture) + 1;
        return html`
            ${toolbar(capture, {
                place: place > 0 ? text.viewer.position(place, arrangement.length) : "",
                canStep: (by) => this.#viewing.canStep(by),
                showsDetails: this.#showsDetails,
                run: (action) => this.#act(action),
            })}
            <div class="viewer-body">
                <div class="viewer-stage">
                    ${this.#inner instanceof TrimDialog ? nothing : this.#stage(capture)}
                </div>
                ${this.#showsDetails ? detailsPanel(capture, () => void this.#copyPath()) : nothing}
            </div>
            <div class="viewer-message" role="status">${this.#message}</div>
        `;
    }

    #stage(capture: Capture): unknown {
        const { context } = this;
        const playback = this.#playback;
        const failed = this.#failed === fileKey(capture);
        return media(capture, { context, playback, failed, attempt: this.#attempts });
    }

    // Shows the current capture, after it has become another one or has changed.
    #present(): void {
        const capture = this.#viewing.current;
        if (!capture) return this.#dialog.close();
        this.#preloader.keep(this.#viewing.nearby());
        this.#history.show(capture.path);
        this.requestUpdate();
    }

    #follow(): void {
        if (this.#restore !== "") this.#reopen(this.#restore);
        const before = this.#viewing.current;
        if (!before) return;
        const capture = this.#viewing.follow();
        if (capture?.path !== before.path) {
            this.#inner?.close();
            // Whoever deleted it knows.
            if (!this.context.gallery.isHidden(before)) this.#say(text.viewer.gone);
        }
        this.#present();
    }

    // From the browser's history, where nothing is kept but a path.
    #reopen(path: string): void {
        const { captures, status } = this.context.gallery;
        const capture = captures.get(path);
        if (capture) this.open(capture);
        else if (status === "ready") {
            this.#restore = "";
            this.#history.forget();
        }
    }

    #step(by: 1 | -1): void {
        if (!this.#viewing.step(by)) return;
        this.#forgetLast();
        this.#present();
    }

    #forgetLast(): void {
        this.#message = "";
        this.#failed = "";
        this.#attempts = 0;
        this.#playback.begins = true;
    }

    #act(action: ViewerAction): void {
        const capture = this.#viewing.current;
        if (!capture) return;
        if (action === "previous") this.#step(-1);
        else if (action === "next") this.#step(1);
        else if (action === "details") this.#showsDetails = !this.#showsDetails;
        else if (action === "delete") send(this, "delete-captures", [capture.path]);
        else if (action === "close") this.#dialog.close();
        else if (action === "caption") void this.#openInner(new CaptionDialog(), capture);
        else if (capture.kind === "video") void this.#openInner(new TrimDialog(), capture);
        this.requestUpdate();
    }

    // A cut goes on after its dialog has been closed, and reports then, too.
    async #openInner(dialog: CaptionDialog | TrimDialog, capture: Capture): Promise<void> {
        dialog.addEventListener("hold-capture", ({ detail }) => (this.#viewing.held = detail));
        dialog.addEventListener("clip-cut", ({ detail }) => this.#onClip(detail));
        dialog.addEventListener("report-failure", ({ detail }) => send(this, "report-failure", detail));
        this.querySelector("video")?.pause();
        this.#playback.begins = false;
        this.#inner = dialog;
        await openDialog(Object.assign(dialog, { context: this.context, capture }));
        // Another one may have been opened before this one has reported its end.
        if (this.#inner === dialog) this.#inner = null;
        if (dialog instanceof CaptionDialog && dialog.isSaved) this.#message = text.captionSaved;
        this.requestUpdate();
    }

    readonly #onKey = (event: KeyboardEvent): void => {
        if (!isForViewer(event)) return;
        const stage = this.querySelector<ImageStage | VideoPlayer>("image-stage, video-player");
        const isStages = stage?.handleKey(event);
        const action = isStages ? undefined : actionOf(event);
        if (action) this.#act(action);
        if (isStages || action) event.preventDefault();
    };

    readonly #onClose = (event: Event): void => {
        if (event.target !== this.#dialog) return;
        const { current } = this.#viewing;
        this.#viewing.close();
        this.#inner?.close();
        this.#preloader.keep([]);
        this.#history.leave();
        this.requestUpdate();
        // The focus goes to what is new, and else to where it came from.
        if (this.#clip) send(this, "show-clip", this.#clip);
        else send(this, "viewer-closed", current);
        this.#clip = null;
    };

    #onClip(clip: Clip & { show: boolean }): void {
        if (clip.show) {
            this.#clip = clip;
            this.#dialog.close();
        } else if (this.#dialog.open) this.#say(text.trimSaved);
        else send(this, "announce", text.trimSaved);
    }

    #onFailed(capture: Capture): void {
        this.#failed = fileKey(capture);
        this.#preloader.want(this.#viewing.nearby());
        this.requestUpdate();
    }

    #retry(): void {
        this.#failed = "";
        ++this.#attempts;
        this.requestUpdate();
    }

    #say(message: string): void {
        this.#message = message;
        this.requestUpdate();
    }

    async #copyPath(): Promise<void> {
        this.#say(await copied(this.#viewing.current?.path ?? ""));
    }
}

customElements.define("capture-viewer", CaptureViewer);
