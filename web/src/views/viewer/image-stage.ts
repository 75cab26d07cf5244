// A picture that can be zoomed and moved: by wheel, pinch, double click, dragging and keys.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../../model/capture.js";
import { fitted, WHOLE, Zooming, type Point, type Size, type Zoom } from "../../model/zoom.js";
import { iconButton } from "../fields.js";
import { mediaAddress, unload } from "../media.js";
import * as text from "../../strings/en.js";
import { PageElement } from "../page-element.js";
import { send } from "../context.js";
import { captionOverlay } from "./caption-overlay.js";

const KEY_ZOOM = 1.4;
const KEY_PAN = 80;
// A notch of most wheels is 100.
const WHEEL_ZOOM = 1.0022;

const PANS: Record<string, Point> = {
    ArrowLeft: { x: KEY_PAN, y: 0 },
    ArrowRight: { x: -KEY_PAN, y: 0 },
    ArrowUp: { x: 0, y: KEY_PAN },
    ArrowDown: { x: 0, y: -KEY_PAN },
};
const KEY_ZOOMS: Record<string, number> = { "+": KEY_ZOOM, "=": KEY_ZOOM, "-": 1 / KEY_ZOOM };
const MIDDLE: Point = { x: 0, y: 0 };

const isOnButton = ({ target }: Event): boolean => (target as Element).closest("button") !== null;

export class ImageStage extends PageElement {
    capture!: Capture;
    /** The address of a smaller picture, for as long as this one is loading; empty for none. */
    preview = "";
    /** How often it was tried before. */
    attempt = 0;
    #picture: Size | null = null;
    #zoom: Zoom = WHOLE;
    // Where fingers, or the mouse's pressed button, are.
    readonly #pointers = new Map<number, Point>();
    readonly #resize = new ResizeObserver(() => this.#change((zooming) => zooming.pan(this.#zoom, MIDDLE)));

    override connectedCallback(): void {
        super.connectedCallback();
        this.addEventListener("wheel", this.#onWheel, { passive: false });
        this.addEventListener("dblclick", this.#onDoubleClick);
        this.addEventListener("pointerdown", this.#onDown);
        this.addEventListener("pointermove", this.#onMove);
        for (const end of ["pointerup", "pointercancel"] as const) this.addEventListener(end, this.#onUp);
        this.#resize.observe(this);
    }

    disconnectedCallback(): void {
        this.#resize.disconnect();
        unload(this.querySelector<HTMLImageElement>("img:not(.preview)"));
    }

    /** True when the key was one of its own. Arrows are, while a part of the picture is seen. */
    handleKey({ key }: KeyboardEvent): boolean {
        const factor = KEY_ZOOMS[key];
        const by = PANS[key];
        if (factor !== undefined) this.zoomBy(factor);
        else if (key === "0") this.#change(() => WHOLE);
        else if (by && this.#zoom.scale > 1) this.#change((zooming) => zooming.pan(this.#zoom, by));
        else return false;
        return true;
    }

    zoomBy(factor: number): void {
        this.#change((zooming) => zooming.by(factor, this.#zoom, MIDDLE));
    }

    protected override updated(): void {
        this.classList.toggle("zoomed", this.#zoom.scale > 1);
    }

    protected override render(): TemplateResult {
        const { capture } = this;
        const zoom = this.#zoom;
        const fit = this.#picture && fitted(this.#picture, this.#view);
        const size = fit ? `width:${fit.width}px;height:${fit.height}px;` : "";
        return html`<div
                class="frame"
                .style=${`${size}transform:translate(${zoom.x}px,${zoom.y}px) scale(${zoom.scale})`}
            >
                ${!fit && this.preview ? html`<img class="preview" alt="" src=${this.preview} />` : nothing}
                <img
                    alt=${capture.title}
                    draggable="false"
                    src=${mediaAddress(capture, this.attempt)}
                    @load=${this.#onLoad}
                    @error=${() => send(this, "media-failed", capture)}
                />
                ${captionOverlay(capture.caption.top, capture.caption.bottom)}
            </div>
            <div class="controls">
                ${iconButton("zoom-out", text.zoomOut, () => this.zoomBy(1 / KEY_ZOOM))}
                ${iconButton("zoom-whole", text.zoomWhole, () => this.#change(() => WHOLE))}
                ${iconButton("zoom-in", text.zoomIn, () => this.zoomBy(KEY_ZOOM))}
            </div>`;
    }

    get #view(): Size {
        return { width: this.clientWidth, height: this.clientHeight };
    }

    // A damaged picture is loaded as well, and shown as far as it goes. Only a copy of a pixel needs all of it.
    readonly #onLoad = async (event: Event): Promise<void> => {
        const image = event.target as HTMLImageElement;
        const { naturalWidth: width, naturalHeight: height } = image;
        this.#picture = { width, height };
        this.requestUpdate();
        try {
            (await createImageBitmap(image, 0, 0, 1, 1)).close();
            send(this, "media-shown");
        } catch {
            send(this, "media-failed", this.capture);
        }
    };

    #change(next: (zooming: Zooming) => Zoom): void {
        if (!this.#picture) return;
        const fit = fitted(this.#picture, this.#view);
        this.#zoom = next(new Zooming(fit, this.#view, this.#picture.width / fit.width));
        this.requestUpdate();
    }

    #at({ clientX, clientY }: MouseEvent): Point {
        const { left, top, width, height } = this.getBoundingClientRect();
        return { x: clientX - left - width / 2, y: clientY - top - height / 2 };
    }

    readonly #onWheel = (event: WheelEvent): void => {
        event.preventDefault();
        const lines = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? 33 : 1;
        const factor = WHEEL_ZOOM ** (-event.deltaY * lines);
        this.#change((zooming) => zooming.by(factor, this.#zoom, this.#at(event)));
    };

    readonly #onDoubleClick = (event: MouseEvent): void => {
        if (isOnButton(event)) return;
        const at = this.#at(event);
        this.#change((zooming) => (this.#zoom.scale > 1 ? WHOLE : zooming.by(zooming.natural, WHOLE, at)));
    };

    readonly #onDown = (event: PointerEvent): void => {
        if (event.button !== 0 || isOnButton(event)) return;
        this.setPointerCapture(event.pointerId);
        this.#pointers.set(event.pointerId, this.#at(event));
    };

    readonly #onMove = (event: PointerEvent): void => {
        const before = this.#pointers.get(event.pointerId);
        if (!before) return;
        const now = this.#at(event);
        const other = [...this.#pointers].find(([id]) => id !== event.pointerId)?.[1];
        this.#pointers.set(event.pointerId, now);
        if (other) this.#pinch(other, before, now);
        else this.#change((zooming) => zooming.pan(this.#zoom, { x: now.x - before.x, y: now.y - before.y }));
    };

    // What lies between the fingers stays between them.
    #pinch(other: Point, before: Point, now: Point): void {
        const distance = (one: Point) => Math.max(1, Math.hypot(one.x - other.x, one.y - other.y));
        const middle = { x: (other.x + before.x) / 2, y: (other.y + before.y) / 2 };
        const moved = { x: (now.x - before.x) / 2, y: (now.y - before.y) / 2 };
        this.#change((zooming) =>
            zooming.pan(zooming.by(distance(now) / distance(before), this.#zoom, middle), moved),
        );
    }

    readonly #onUp = ({ pointerId }: PointerEvent): void => {
        this.#pointers.delete(pointerId);
    };
}

customElements.define("image-stage", ImageStage);
