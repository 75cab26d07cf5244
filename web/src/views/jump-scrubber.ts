// A slider beside the grid that shows what lies where, and jumps there.
import { html, nothing, type TemplateResult } from "lit/html.js";
import { marksOf, type Mark } from "../model/scrubber.js";
import * as text from "../strings/en.js";
import { dayText, monthText } from "../strings/formats.js";
import type { CaptureGrid } from "./capture-grid.js";
import type { Context } from "./context.js";
import type { KeyList } from "./key-list.js";
import { PageElement } from "./page-element.js";

export const SCRUBBER_KEYS: KeyList = {
    title: text.jumpTo,
    keys: [
        [["↑", "↓"], text.keyNextGroup],
        [["PageUp", "PageDown"], text.keyNextMark],
        [["Home", "End"], text.keyFirstOrLast],
    ],
};

export class JumpScrubber extends PageElement {
    context!: Context;
    grid: CaptureGrid | null = null;

    #marks: Mark[] = [];
    #marked: { layout: unknown; height: number } | null = null;
    #dragging = false;
    // The browser reports it; to ask for it after a change would make the browser lay out the page.
    #height = 0;
    readonly #resize = new ResizeObserver(([entry]) => {
        this.#height = entry!.contentRect.height;
        this.requestUpdate();
    });

    override connectedCallback(): void {
        super.connectedCallback();
        this.role = "slider";
        this.ariaLabel = text.jumpTo;
        this.ariaOrientation = "vertical";
        this.ariaValueMin = "0";
        this.ariaValueMax = "100";
        this.tabIndex = 0;
        this.addEventListener("keydown", this.#onKey);
        this.addEventListener("pointerdown", this.#onDown);
        this.addEventListener("pointermove", this.#onMove);
        for (const end of ["pointerup", "pointercancel"]) this.addEventListener(end, this.#onUp);
        this.#resize.observe(this);
    }

    disconnectedCallback(): void {
        this.#resize.disconnect();
    }

    protected override updated(): void {
        const { grid } = this;
        if (!grid) return;
        this.hidden = !grid.window.overflows;
        const progress = grid.window.progressAt(grid.position);
        this.ariaValueNow = String(Math.round(100 * progress));
        this.ariaValueText = this.#groupTitle();
        this.style.setProperty("--progress", String(progress));
    }

    protected override render(): TemplateResult {
        this.#findMarks();
        return html`
            ${this.#marks.map(
                ({ label, top }) =>
                    html`<span class="mark" aria-hidden="true" .style=${`top:${top}px`}>${label}</span>`,
            )}
            <span class="thumb" aria-hidden="true">
                ${this.#dragging
                    ? html`<span class="bubble" dir="auto">${this.#groupTitle()}</span>`
                    : nothing}
            </span>
        `;
    }

    get #isByGame(): boolean {
        return this.context.gallery.view.grouping === "game";
    }

    #groupTitle(): string {
        const key = this.grid?.groupInView ?? "";
        return this.#isByGame ? key : dayText(key);
    }

    // Only when the layout has changed: scrolling must not look at each group again.
    #findMarks(): void {
        const height = this.#height;
        const layout = this.grid?.window.layout;
        if (!layout || (this.#marked?.layout === layout && this.#marked.height === height)) return;
        this.#marked = { layout, height };
        const labelOf = this.#isByGame ? (key: string) => key : monthText;
        this.#marks = marksOf(this.context.gallery.arrangement, layout, height, labelOf);
    }

    #jumpToGroup(group: number): void {
        const { grid } = this;
        const { groups } = this.context.gallery.arrangement;
        if (grid)
            grid.scrollToTop(grid.window.layout.groupTop(Math.min(Math.max(group, 0), groups.length - 1)));
    }

    readonly #onKey = (event: KeyboardEvent): void => {
        const { groups } = this.context.gallery.arrangement;
        const here = groups.findIndex(({ key }) => key === this.grid?.groupInView);
        const nextMark = this.#marks.find(({ group }) => group > here)?.group ?? groups.length - 1;
        const previousMark = this.#marks.findLast(({ group }) => group < here)?.group ?? 0;
        const targets: Record<string, number> = {
            ArrowDown: here + 1,
            ArrowRight: here + 1,
            ArrowUp: here - 1,
            ArrowLeft: here - 1,
            PageDown: nextMark,
            PageUp: previousMark,
            Home: 0,
            End: groups.length - 1,
        };
        const target = targets[event.key];
        if (target === undefined) return;
        event.preventDefault();
        this.#jumpToGroup(target);
    };

    readonly #onDown = (event: PointerEvent): void => {
        if (event.button !== 0) return;
        this.setPointerCapture(event.pointerId);
        this.#dragging = true;
        this.#jumpTo(event);
    };

    readonly #onMove = (event: PointerEvent): void => {
        if (this.#dragging) this.#jumpTo(event);
    };

    readonly #onUp = (): void => {
        this.#dragging = false;
        this.requestUpdate();
    };

    #jumpTo(event: PointerEvent): void {
        const { grid } = this;
        if (!grid) return;
        const box = this.getBoundingClientRect();
        const part = Math.min(1, Math.max(0, (event.clientY - box.top) / box.height));
        grid.scrollToTop(part * Math.max(0, grid.window.layout.height - grid.window.height));
        this.requestUpdate();
    }
}

customElements.define("jump-scrubber", JumpScrubber);
