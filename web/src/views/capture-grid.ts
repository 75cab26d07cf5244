// The grid of captures. It draws the rows that are seen and keeps what one looks at in its place while captures
// come and go.
import { html, type TemplateResult } from "lit";
import { repeat } from "lit/directives/repeat.js";
import type { Capture } from "../model/capture.js";
import type { Change } from "../model/gallery.js";
import { GridWindow, holds } from "../model/grid-window.js";
import type { Row } from "../model/layout.js";
import { text } from "../strings/index.js";
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

export class CaptureGrid extends PageElement {
    static override properties = { cellSize: { type: Number } };

    context!: Context;
    cellSize = 240;
    window!: GridWindow;
    /** Captures that came while one looked at another part, and have not been looked at since. */
    unseen: readonly Capture[] = [];

    private rows: Row[] = [];
    // Where the update that is under way scrolls; to ask again after it has drawn would lay out once more.
    private drawnAt = 0;
    private readonly place = new KeptPlace();
    private readonly input = new GridInput(this);
    private hadFocus = false;
    private stopListening = (): void => {};
    private readonly resize = new ResizeObserver(() => this.onResize());

    override connectedCallback(): void {
        super.connectedCallback();
        this.setAttribute("role", "grid");
        this.setAttribute("aria-label", text.captures);
        this.setAttribute("aria-multiselectable", "true");
        this.window = this.makeWindow(0, 0);
        this.stopListening = this.context.gallery.onChange((change) => this.onChange(change));
        this.addEventListener("scroll", () => this.requestUpdate(), { passive: true });
        new RubberBand(this).connect();
        this.input.connect();
    }

    override disconnectedCallback(): void {
        super.disconnectedCallback();
        this.stopListening();
        this.resize.disconnect();
    }

    /** Scrolls to a capture, if it is shown. */
    reveal(capture: Capture, block: "start" | "nearest" = "nearest"): void {
        const index = this.context.gallery.arrangement.indexOf(capture);
        if (index >= 0) this.scrollTo({ top: this.window.scrollTopToShow(index, this.scrollTop, block) });
        this.requestUpdate();
    }

    /** Scrolls to a height of the layout. */
    scrollToTop(top: number): void {
        this.scrollTop = this.window.scrollTopFor(top);
        this.requestUpdate();
    }

    /** Moves the focus to a capture, which it scrolls to. */
    async focusCapture(capture: Capture): Promise<void> {
        this.input.activate(capture);
        this.reveal(capture);
        await this.updateComplete;
        this.cellOf(capture)?.focus({ preventScroll: true });
    }

    /** Moves the focus to where it was last in the grid. */
    focusLast(): void {
        const active = this.input.active() ?? this.tabStop();
        if (active) void this.focusCapture(active);
    }

    /** The key of the group that the view begins with. */
    get groupInView(): string {
        const { layout } = this.window;
        const { groups } = this.context.gallery.arrangement;
        return groups[layout.groupAtTop(this.window.topAt(this.scrollTop))]?.key ?? "";
    }

    protected override firstUpdated(): void {
        this.resize.observe(this);
        this.resize.observe(this.space!);
    }

    protected override willUpdate(changed: Map<string, unknown>): void {
        if (changed.has("cellSize") && this.hasUpdated) this.layOut();
        this.hadFocus = this.matches(":focus-within");
        // The row with the focus stays, or the focus would fall out of the grid.
        const pinned = this.hadFocus ? this.input.activeIndex() : -1;
        this.drawnAt = this.scrollTop;
        this.rows = this.window.rowsAt(this.drawnAt, pinned);
    }

    protected override render(): TemplateResult {
        const tabStop = this.tabStop();
        const columns = this.window.layout.columns;
        const top = (row: Row) => this.window.drawnTop(row, this.drawnAt);
        return html`<div class="space" role="presentation" .style=${`height:${this.window.scrollHeight}px`}>
            ${repeat(
                this.rows,
                ({ key }) => key,
                (row) => gridRow(this.context, row, { columns, top: top(row), tabStop }),
            )}
        </div>`;
    }

    protected override updated(): void {
        const { layout } = this.window;
        this.setAttribute("aria-rowcount", String(layout.rowCount));
        this.setAttribute("aria-colcount", String(layout.columns));
        this.style.setProperty("--columns", String(layout.columns));
        this.style.setProperty("--picture", `${layout.cellHeight}px`);
        this.context.thumbnails.want(this.capturesIn(this.window.nearest(this.rows, this.drawnAt)));
        this.place.remember(this.rows, this.context.gallery, layout, this.window.topAt(this.drawnAt));
        this.keepFocus();
        if (this.drawnAt <= HEADER) this.unseen = [];
        send(this, "grid-view");
    }

    private get space(): HTMLElement | null {
        return this.querySelector<HTMLElement>(".space");
    }

    // The capture that Tab reaches: the one that was looked at last, else the first that is seen.
    private tabStop(): Capture | undefined {
        const { arrangement } = this.context.gallery;
        const active = this.input.activeIndex();
        if (active >= 0 && this.rows.some((row) => holds(row, active))) return arrangement.at(active);
        const top = this.window.topAt(this.drawnAt);
        const first = this.rows.find((row) => row.count > 0 && row.top >= top);
        return first && arrangement.at(first.first);
    }

    private capturesIn(rows: readonly Row[]): Capture[] {
        const { arrangement } = this.context.gallery;
        return rows.flatMap(({ first, count }) =>
            count > 0 ? arrangement.between(first, first + count - 1) : [],
        );
    }

    private makeWindow(width: number, height: number): GridWindow {
        const cell = Math.min(this.cellSize, Math.max(LEAST_CELL, (width - GAP) / 2));
        const measures = { width, cell, gap: GAP, title: TITLE, header: HEADER };
        return new GridWindow(this.context.gallery.arrangement, measures, height);
    }

    // Lays out anew around the capture that one looks at. At the top, the top is what one looks at.
    private layOut(): void {
        const { space } = this;
        if (!space) return;
        const atTop = this.scrollTop <= HEADER / 2;
        this.window = this.makeWindow(space.clientWidth, this.clientHeight);
        // The scroller cannot go further than its content is high, and the new height is not drawn yet.
        space.style.height = `${this.window.scrollHeight}px`;
        const top = atTop ? null : this.place.find(this.context.gallery, this.window.layout);
        if (top !== null) this.scrollToTop(top);
        this.requestUpdate();
    }

    private onChange({ added }: Change): void {
        this.layOut();
        const { captures } = this.context.gallery;
        const unseen = this.scrollTop > HEADER ? [...this.unseen, ...added] : [];
        this.unseen = unseen.filter(({ path }) => captures.has(path));
    }

    private onResize(): void {
        const { layout, height } = this.window;
        if (this.space?.clientWidth !== layout.width || this.clientHeight !== height) this.layOut();
    }

    private keepFocus(): void {
        if (!this.hadFocus || this.contains(document.activeElement)) return;
        const active = this.input.active();
        if (active) this.cellOf(active)?.focus({ preventScroll: true });
    }

    private cellOf({ path }: Capture): HTMLElement | null {
        return this.querySelector(`[data-path="${CSS.escape(path)}"]`);
    }
}

customElements.define("capture-grid", CaptureGrid);
