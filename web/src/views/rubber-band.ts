// Selecting with a rectangle that one draws with the mouse, from anywhere between the cells.
import { capturesWithin, type Point } from "../model/band.js";
import type { GridWindow } from "../model/grid-window.js";
import { send, type Context } from "./context.js";

/** What it needs of the grid. */
interface Grid extends HTMLElement {
    readonly context: Context;
    readonly window: GridWindow;
    requestUpdate(): void;
}

interface Drag {
    readonly pointer: number;
    readonly start: Point;
    /** What was selected before, and stays so. */
    readonly before: readonly string[];
}

// Pixels: less is a click; and how near to an edge the grid begins to scroll.
const LEAST_WAY = 5;
const EDGE = 28;

export class RubberBand {
    #drag: Drag | null = null;
    #pointer: PointerEvent | null = null;
    #drawn = false;
    readonly #box = document.createElement("div");

    constructor(private readonly grid: Grid) {
        this.#box.className = "band";
        this.#box.ariaHidden = "true";
    }

    connect(): void {
        this.grid.addEventListener("pointerdown", (event) => this.#onDown(event));
        this.grid.addEventListener("pointermove", (event) => this.#onMove(event));
        this.grid.addEventListener("pointerup", () => this.#end());
        this.grid.addEventListener("lostpointercapture", () => this.#end());
        this.grid.addEventListener("scroll", () => this.#pointer && this.#draw(this.#pointer));
        this.grid.addEventListener("click", (event) => this.#onClick(event), true);
    }

    // The click that ends a rectangle is none; those of the keyboard, which count 0, are.
    #onClick(event: MouseEvent): void {
        if (this.#drawn && event.detail > 0) event.stopImmediatePropagation();
        this.#drawn = false;
    }

    #onDown(event: PointerEvent): void {
        this.#drawn = false;
        const { grid } = this;
        const between = (event.target as Element).closest("[data-path], button") === null;
        const onScrollBar = event.clientX >= grid.getBoundingClientRect().left + grid.clientWidth;
        if (!between || onScrollBar || event.button !== 0 || event.pointerType === "touch") return;
        const adds = event.ctrlKey || event.metaKey || event.shiftKey;
        const before = adds ? grid.context.selection.list() : [];
        this.#drag = { pointer: event.pointerId, start: this.#pointAt(event), before };
        grid.setPointerCapture(event.pointerId);
    }

    #onMove(event: PointerEvent): void {
        if (this.#drag?.pointer !== event.pointerId) return;
        const { start } = this.#drag;
        const { x, y } = this.#pointAt(event);
        if (!this.#drawn && Math.hypot(x - start.x, y - start.y) < LEAST_WAY) return;
        if (!this.#drawn) this.#begin();
        const moved = this.#pointer === null;
        this.#pointer = event;
        this.#draw(event);
        if (moved) requestAnimationFrame(this.#scroll);
    }

    #begin(): void {
        this.#drawn = true;
        this.grid.querySelector(".space")?.append(this.#box);
        document.addEventListener("keydown", this.#onKey, true);
    }

    #end(): void {
        this.#drag = this.#pointer = null;
        this.#box.remove();
        document.removeEventListener("keydown", this.#onKey, true);
    }

    readonly #onKey = (event: KeyboardEvent): void => {
        if (event.key !== "Escape" || !this.#drag) return;
        event.preventDefault();
        event.stopPropagation();
        this.#select(this.#drag.before);
        this.#end();
    };

    // Near an edge, the grid goes on by itself for as long as the pointer stays there.
    readonly #scroll = (): void => {
        if (!this.#pointer) return;
        const { top, bottom } = this.grid.getBoundingClientRect();
        const over = Math.min(0, this.#pointer.clientY - top - EDGE);
        const under = Math.max(0, this.#pointer.clientY - bottom + EDGE);
        if (over + under !== 0) this.grid.scrollTop += (over + under) / 2;
        requestAnimationFrame(this.#scroll);
    };

    #pointAt({ clientX, clientY }: PointerEvent): Point {
        const { grid } = this;
        const space = grid.querySelector(".space")!.getBoundingClientRect();
        const x = this.#rightToLeft ? space.right - clientX : clientX - space.left;
        const y = clientY - grid.getBoundingClientRect().top + grid.window.topAt(grid.scrollTop);
        return { x, y };
    }

    get #rightToLeft(): boolean {
        return getComputedStyle(this.grid).direction === "rtl";
    }

    #draw(event: PointerEvent): void {
        if (!this.#drag) return;
        const { window, scrollTop, context } = this.grid;
        const { start } = this.#drag;
        const end = this.#pointAt(event);
        const top = window.drawnTop({ top: Math.min(start.y, end.y) }, scrollTop);
        const side = this.#rightToLeft ? "right" : "left";
        Object.assign(this.#box.style, {
            top: `${top}px`,
            [side]: `${Math.min(start.x, end.x)}px`,
            width: `${Math.abs(start.x - end.x)}px`,
            height: `${Math.abs(start.y - end.y)}px`,
        });
        const { arrangement } = context.gallery;
        const touched = capturesWithin(start, end, window.layout, arrangement);
        this.#select([...this.#drag.before, ...touched.map(({ path }) => path)]);
    }

    #select(paths: readonly string[]): void {
        this.grid.context.selection.set(paths);
        this.grid.requestUpdate();
        send(this.grid, "selection-change");
    }
}
