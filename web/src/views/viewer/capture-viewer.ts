// One capture over the whole page: a dialog with its picture or video, and the way to its neighbours.
import { html, nothing, type TemplateResult } from "lit";
import type { Capture } from "../../model/capture.js";
import type { HostRequests } from "../../api/client.js";
import { text } from "../../strings/index.js";
import { send, type Context } from "../context.js";
import { mediaAddress, thumbnailAddress } from "../media.js";
import { PageElement } from "../page-element.js";
import { details } from "./details.js";
import type { ImageStage } from "./image-stage.js";
import "./image-stage.js";
import type { VideoStage } from "./video-stage.js";
import "./video-stage.js";

export class CaptureViewer extends PageElement {
    static override properties = {
        capture: { state: true },
        failed: { state: true },
        copied: { state: true },
        showsDetails: { state: true },
    };

    context!: Context;
    capture: Capture | null = null;
    private failed = false;
    private copied = false;
    private showsDetails = false;
    // For when the capture goes while it is looked at.
    private index = 0;
    private direction = 1;
    // Holds the pictures that are likely to be next.
    private preloaded: ReadonlyMap<string, HTMLImageElement> = new Map();

    override connectedCallback(): void {
        super.connectedCallback();
        this.context.gallery.onChange(() => this.followGallery());
        this.addEventListener("stage-failed", () => (this.failed = true));
        this.addEventListener("stage-ready", () => this.preload());
    }

    /** Shows a capture, or nothing. */
    show(capture: Capture | null): void {
        if (capture?.path !== this.capture?.path) this.failed = this.copied = false;
        this.capture = capture;
        if (capture) this.index = this.context.gallery.arrangement.indexOf(capture);
        else this.preloaded = new Map();
    }

    protected override updated(): void {
        const dialog = this.querySelector("dialog")!;
        if (this.capture && !dialog.open) dialog.showModal();
        else if (!this.capture && dialog.open) dialog.close();
    }

    protected override render(): TemplateResult {
        const { capture } = this;
        return html`<dialog
            class="viewer"
            aria-label=${capture?.title ?? ""}
            @cancel=${this.onCancel}
            @keydown=${this.onKey}
        >
            ${capture ? this.content(capture) : nothing}
        </dialog>`;
    }

    private content(capture: Capture): TemplateResult {
        const { length } = this.context.gallery.arrangement;
        return html`<header>
                <h2 dir="auto">${capture.title}</h2>
                <small role="status">${text.place(this.index + 1, length)}</small>
                <span class="space"></span>
                ${this.hostButton("OpenInPlayer", text.openInPlayer, capture)}
                ${this.hostButton("OpenFolder", text.openFolder, capture)}
                <button aria-pressed=${this.showsDetails} @click=${this.toggleDetails}>
                    ${text.details}
                </button>
                <button
                    class="icon close"
                    aria-label=${text.close}
                    title=${text.close}
                    @click=${this.close}
                ></button>
            </header>
            <div class="middle">
                <div class="frame" tabindex="-1" autofocus>
                    ${this.stage(capture)} ${this.turn(-1, text.previous)} ${this.turn(1, text.next)}
                </div>
                ${this.showsDetails ? details(capture, this.copied, () => this.copyPath(capture)) : nothing}
            </div>`;
    }

    private stage(capture: Capture): TemplateResult {
        if (this.failed || capture.kind === "other") return this.substitute(capture);
        return capture.kind === "video"
            ? html`<video-stage .capture=${capture}></video-stage>`
            : html`<image-stage .capture=${capture}></image-stage>`;
    }

    // What the browser cannot show has its thumbnail, and the player of the desktop.
    private substitute(capture: Capture): TemplateResult {
        const known = this.context.thumbnails.get(capture);
        const source =
            typeof known === "object" ? known.source : capture.handle ? thumbnailAddress(capture) : null;
        return html`<div class="substitute">
            ${source ? html`<img alt=${capture.title} src=${source} />` : nothing}
            <p>${text.notShownHere}</p>
        </div>`;
    }

    private hostButton(
        method: keyof HostRequests,
        label: string,
        { path }: Capture,
    ): TemplateResult | typeof nothing {
        const { client } = this.context;
        if (!client.offers(method)) return nothing;
        const ask = () =>
            client
                .askHost(method, { file: path })
                .catch((error: Error) => send(this, "report-failure", error.message));
        return html`<button @click=${ask}>${label}</button>`;
    }

    private turn(by: number, label: string): TemplateResult {
        const to = this.context.gallery.arrangement.at(this.index + by);
        return html`<button
            class="icon turn ${by < 0 ? "previous" : "next"}"
            aria-label=${label}
            title=${label}
            ?disabled=${!to}
            @click=${() => this.move(by)}
        ></button>`;
    }

    private move(by: number): void {
        const to = this.context.gallery.arrangement.at(this.index + by);
        if (!to) return;
        this.direction = Math.sign(by);
        send(this, "viewer-move", to);
    }

    private preload(): void {
        const { arrangement } = this.context.gallery;
        const near = [1, 2, -1].map((step) => arrangement.at(this.index + step * this.direction));
        const images = near.flatMap((one) => (one?.kind === "image" ? [mediaAddress(one)] : []));
        const load = (src: string) => this.preloaded.get(src) ?? Object.assign(new Image(), { src });
        this.preloaded = new Map(images.map((src) => [src, load(src)]));
    }

    private followGallery(): void {
        if (!this.capture) return;
        const { captures, arrangement } = this.context.gallery;
        const known = captures.get(this.capture.path);
        const index = known ? arrangement.indexOf(known) : -1;
        if (known && index >= 0) return this.show(known);
        const next = arrangement.at(Math.min(this.index, arrangement.length - 1));
        if (next) send(this, "viewer-move", next);
        else this.close();
    }

    private copyPath({ path }: Capture): void {
        navigator.clipboard.writeText(path).then(
            () => (this.copied = true),
            (error: Error) => send(this, "report-failure", error.message),
        );
    }

    private readonly toggleDetails = (): void => {
        this.showsDetails = !this.showsDetails;
    };

    private readonly close = (): void => send(this, "viewer-close");

    // The history decides: the dialog is closed when it has gone back.
    private readonly onCancel = (event: Event): void => {
        event.preventDefault();
        this.close();
    };

    private readonly onKey = (event: KeyboardEvent): void => {
        const control = (event.target as Element).matches("input, select");
        if (event.ctrlKey || event.metaKey || event.altKey || control) return;
        if (event.key === " " && (event.target as Element).matches("button")) return;
        if (this.act(event)) event.preventDefault();
    };

    private act(event: KeyboardEvent): boolean {
        const stage = this.querySelector<ImageStage | VideoStage>("image-stage, video-stage");
        if (stage?.onKey(event)) return true;
        if (event.key === "ArrowLeft" || event.key === "PageUp") this.move(-1);
        else if (event.key === "ArrowRight" || event.key === "PageDown") this.move(1);
        else if (event.key === "i") this.toggleDetails();
        else return false;
        return true;
    }
}

customElements.define("capture-viewer", CaptureViewer);
