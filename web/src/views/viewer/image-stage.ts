// A picture that can be magnified and moved.
import { html, type PropertyValues, type TemplateResult } from "lit";
import type { Capture } from "../../model/capture.js";
import { FIT, fullScale, pan, zoomTo, type Size, type Zoom } from "../../model/zoom.js";
import { send } from "../context.js";
import { mediaAddress } from "../media.js";
import { PageElement } from "../page-element.js";

const STEP = 1.4;
const PAN = 80;

export class ImageStage extends PageElement {
    static override properties = { capture: { attribute: false } };

    capture!: Capture;
    private zoom: Zoom = FIT;
    private dragged: { x: number; y: number } | null = null;

    override connectedCallback(): void {
        super.connectedCallback();
        this.addEventListener("wheel", this.onWheel, { passive: false });
        this.addEventListener("dblclick", this.onDoubleClick);
        this.addEventListener("pointerdown", this.onDown);
        this.addEventListener("pointermove", this.onMove);
        for (const end of ["pointerup", "pointercancel"])
            this.addEventListener(end, () => (this.dragged = null));
    }

    /** True when the key was one of a picture. */
    onKey({ key }: KeyboardEvent): boolean {
        const middle = { x: 0, y: 0 };
        if (key === "+" || key === "=") this.zoomTo(this.zoom.scale * STEP, middle);
        else if (key === "-") this.zoomTo(this.zoom.scale / STEP, middle);
        else if (key === "0") this.zoomTo(1, middle);
        else if (key === "1") this.zoomTo(fullScale(this.picture, this.frame), middle);
        else return this.zoom.scale > 1 && this.panByKey(key);
        return true;
    }

    protected override willUpdate(changed: PropertyValues): void {
        const before = changed.get("capture") as Capture | undefined;
        if (before && before.path !== this.capture.path) this.zoom = FIT;
    }

    protected override render(): TemplateResult {
        const { scale, x, y } = this.zoom;
        return html`<img
            alt=${this.capture.title}
            decoding="async"
            draggable="false"
            class=${scale > 1 ? "zoomed" : ""}
            src=${mediaAddress(this.capture)}
            .style=${`transform:translate(${x}px,${y}px) scale(${scale})`}
            @error=${() => send(this, "stage-failed")}
            @load=${() => send(this, "stage-ready")}
        />`;
    }

    private get image(): HTMLImageElement {
        return this.querySelector("img")!;
    }

    private get picture(): Size {
        return { width: this.image.naturalWidth || 1, height: this.image.naturalHeight || 1 };
    }

    private get frame(): Size {
        return { width: this.clientWidth, height: this.clientHeight };
    }

    private set(zoom: Zoom): void {
        this.zoom = zoom;
        this.requestUpdate();
    }

    private zoomTo(scale: number, at: { x: number; y: number }): void {
        this.set(zoomTo(this.zoom, scale, at, this.picture, this.frame));
    }

    private panByKey(key: string): boolean {
        const steps: Record<string, [number, number]> = {
            ArrowLeft: [PAN, 0],
            ArrowRight: [-PAN, 0],
            ArrowUp: [0, PAN],
            ArrowDown: [0, -PAN],
        };
        const step = steps[key];
        if (step) this.set(pan(this.zoom, ...step, this.picture, this.frame));
        return step !== undefined;
    }

    private fromMiddle(event: MouseEvent): { x: number; y: number } {
        const { left, top, width, height } = this.getBoundingClientRect();
        return { x: event.clientX - left - width / 2, y: event.clientY - top - height / 2 };
    }

    private readonly onWheel = (event: WheelEvent): void => {
        event.preventDefault();
        this.zoomTo(this.zoom.scale * Math.exp(-event.deltaY / 400), this.fromMiddle(event));
    };

    private readonly onDoubleClick = (event: MouseEvent): void => {
        const full = Math.max(2, fullScale(this.picture, this.frame));
        this.zoomTo(this.zoom.scale > 1 ? 1 : full, this.fromMiddle(event));
    };

    private readonly onDown = (event: PointerEvent): void => {
        if (event.button !== 0 || this.zoom.scale === 1) return;
        this.setPointerCapture(event.pointerId);
        this.dragged = { x: event.clientX, y: event.clientY };
    };

    private readonly onMove = (event: PointerEvent): void => {
        if (!this.dragged) return;
        const { x, y } = this.dragged;
        this.dragged = { x: event.clientX, y: event.clientY };
        this.set(pan(this.zoom, event.clientX - x, event.clientY - y, this.picture, this.frame));
    };
}

customElements.define("image-stage", ImageStage);
