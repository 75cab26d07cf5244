// The grid of captures. It draws the rows that are in view, and keeps the captures in view in their places while others
// come and go. Browsers lay out the page whenever a script asks for a size or a scroll position after a change, so
// the grid remembers both from their events, and scrolls only after everything else has been drawn.
import { html, type TemplateResult } from "lit/html.js";
import { repeat } from "lit/directives/repeat.js";
import type { Capture } from "../model/capture.js";
import type { Change } from "../model/gallery.js";
import { GridWindow, holds } from "../model/grid-window.js";
import type { Row } from "../model/layout.js";
import * as text from "../strings/en.js";
import { send, type Context } from "./context.js";
import { GridInput } from "./grid-input.js";
import { gridRow } from "./grid-rows.js";
import { KeptPlace } from "./kept-place.js";
import { PageElement } from "./page-element.js";
import { RubberBand } from "./rubber-band.js";

// Pixels; the styles use the same through custom properties.
const GAP = 12;
const TITLE = 30;
const HEADER = 56;
// Two columns fit a narrow page.
const LEAST_CELL = 132;

interface Size {
    /** The least width of a cell. */
    readonly cell: number;
    /** Of the grid's content, and of its view. */
    readonly width: number;
    readonly height: number;
}

export class CaptureGrid extends PageElement {
    context!: Context;
    window!: GridWindow;
    /** How far the grid is scrolled, in pixels, or will be after the update that is under way. */
    position = 0;
    /** Captures that arrived out of view, and have not been in view since. */
    unseen: readonly Capture[] = [];

    #size: Size = { cell: 0, width: 0, height: 0 };
    #isLaidOut = false;
    #hasMoved = false;
    #rows: Row[] = [];
    readonly #place = new KeptPlace();
    readonly #input = new GridInput(this);
    #hadFocus = false;
    #stopListening = (): void => {};
    readonly #resize = new ResizeObserver(() => this.#onResize());

    /** The least width of a cell, in pixels. */
    set cellSize(cell: number) {
        this.#setSize({ ...this.#size, cell });
    }

    override connectedCallback(): void {
        super.connectedCallback();
        this.role = "grid";
        this.ariaLabel = text.captures;
        this.ariaMultiSelectable = "true";
        this.#stopListening = this.context.gallery.onChange((change) => this.#onChange(change));
        this.addEventListener("scroll", () => this.#onScroll(), { passive: true });
        new RubberBand(this).connect();
        this.#input.connect();
    }

    disconnectedCallback(): void {
        this.#stopListening();
        this.#resize.disconnect();
    }

    /** Scrolls to a capture, if it is shown. */
    reveal(capture: Capture, block: "start" | "nearest" = "nearest"): void {
        const index = this.context.gallery.arrangement.indexOf(capture);
        if (index >= 0) this.#moveTo(this.window.scrollTopToShow(index, this.position, block));
    }

    /** Scrolls to a height of the layout. */
    scrollToTop(top: number): void {
        this.#moveTo(this.window.scrollTopFor(top));
    }

    /** Moves the focus to a capture, which it scrolls to. */
    async focusCapture(capture: Capture): Promise<void> {
        this.#input.activate(capture);
        this.reveal(capture);
        await this.updateComplete;
        this.#cellOf(capture)?.focus({ preventScroll: true });
    }

    /** Moves the focus to where it was last in the grid. */
    focusLast(): void {
        const active = this.#input.active() ?? this.#tabStop();
        if (active) void this.focusCapture(active);
    }

    /** The key of the group that the view begins with. */
    get groupInView(): string {
        const { layout } = this.window;
        const { groups } = this.context.gallery.arrangement;
        return groups[layout.groupAtTop(this.window.topAt(this.position))]?.key ?? "";
    }

    protected override firstUpdated(): void {
        this.#resize.observe(this);
        this.#resize.observe(this.querySelector(".space")!);
    }

    protected override willUpdate(): void {
        if (!this.#isLaidOut) this.#layOut();
        this.#hadFocus = this.matches(":focus-within");
        // The row with the focus stays, or the focus would fall out of the grid.
        const pinned = this.#hadFocus ? this.#input.activeIndex() : -1;
        this.#rows = this.window.rowsAt(this.position, pinned);
    }

    protected override render(): TemplateResult {
        const tabStop = this.#tabStop();
        const columns = this.window.layout.columns;
        const top = (row: Row) => this.window.drawnTop(row, this.position);
        return html`<div class="space" role="presentation" .style=${`height:${this.window.scrollHeight}px`}>
            ${repeat(
                this.#rows,
                ({ key }) => key,
                (row) => gridRow(this.context, row, { columns, top: top(row), tabStop }),
            )}
        </div>`;
    }

    protected override updated(): void {
        const { layout } = this.window;
        this.ariaRowCount = String(layout.rowCount);
        this.ariaColCount = String(layout.columns);
        this.style.setProperty("--columns", String(layout.columns));
        this.style.setProperty("--picture", `${layout.cellHeight}px`);
        this.context.thumbnails.want(this.#capturesIn(this.window.nearest(this.#rows, this.position)));
        this.#place.remember(this.#rows, this.context.gallery, layout, this.window.topAt(this.position));
        this.#keepFocus();
        if (this.position <= HEADER) this.unseen = [];
        send(this, "grid-view");
        if (this.#hasMoved) queueMicrotask(() => this.#applyPosition());
    }

    // The capture that Tab reaches: the one that was looked at last, else the first that is seen.
    #tabStop(): Capture | undefined {
        const { arrangement } = this.context.gallery;
        const active = this.#input.activeIndex();
        if (active >= 0 && this.#rows.some((row) => holds(row, active))) return arrangement.at(active);
        const top = this.window.topAt(this.position);
        const first = this.#rows.find((row) => row.count > 0 && row.top >= top);
        return first && arrangement.at(first.first);
    }

    #capturesIn(rows: readonly Row[]): Capture[] {
        const { arrangement } = this.context.gallery;
        return rows.flatMap(({ first, count }) =>
            count > 0 ? arrangement.between(first, first + count - 1) : [],
        );
    }

    // Around what is in view. At the top, the top stays in view.
    #layOut(): void {
        this.#isLaidOut = true;
        const { gallery } = this.context;
        const { width, height } = this.#size;
        const cell = Math.min(this.#size.cell, Math.max(LEAST_CELL, (width - GAP) / 2));
        const measures = { width, cell, gap: GAP, title: TITLE, header: HEADER };
        this.window = new GridWindow(gallery.arrangement, measures, height);
        const isAtTop = this.position <= HEADER / 2;
        const top = isAtTop ? null : this.#place.find(gallery, this.window.layout);
        this.#moveTo(top === null ? this.position : this.window.scrollTopFor(top));
    }

    #layOutAgain(): void {
        this.#isLaidOut = false;
        this.requestUpdate();
    }

    #moveTo(position: number): void {
        const within = Math.max(0, Math.min(position, this.window.scrollHeight - this.window.height));
        if (within !== this.position) {
            this.position = within;
            this.#hasMoved = true;
        }
        this.requestUpdate();
    }

    // The browser lays out the page here, once for all that was drawn before.
    #applyPosition(): void {
        if (this.#hasMoved) this.scrollTop = this.position;
        this.#hasMoved = false;
    }

    #onScroll(): void {
        if (!this.#hasMoved) this.position = this.scrollTop;
        this.requestUpdate();
    }

    #onChange({ added }: Change): void {
        this.#layOutAgain();
        const { captures } = this.context.gallery;
        const unseen = this.position > HEADER ? [...this.unseen, ...added] : [];
        this.unseen = unseen.filter(({ path }) => captures.has(path));
    }

    #onResize(): void {
        const width = this.querySelector(".space")?.clientWidth ?? 0;
        this.#setSize({ ...this.#size, width, height: this.clientHeight });
    }

    #setSize(size: Size): void {
        const { cell, width, height } = this.#size;
        if (size.cell === cell && size.width === width && size.height === height) return;
        this.#size = size;
        this.#layOutAgain();
    }

    #keepFocus(): void {
        if (!this.#hadFocus || this.contains(document.activeElement)) return;
        const active = this.#input.active();
        if (active) this.#cellOf(active)?.focus({ preventScroll: true });
    }

    #cellOf({ path }: Capture): HTMLElement | null {
        return this.querySelector(`[data-path="${CSS.escape(path)}"]`);
    }
}

customElements.define("capture-grid", CaptureGrid);
