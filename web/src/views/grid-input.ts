// Keys and pointer of the grid: moving the focus, selecting, opening.
import type { Capture } from "../model/capture.js";
import { target } from "../model/navigation.js";
import type { GridWindow } from "../model/grid-window.js";
import * as text from "../strings/en.js";
import { send, type Context } from "./context.js";
import type { KeyList } from "./key-list.js";
import { openOutside } from "./open-outside.js";

export const GRID_KEYS: KeyList = {
    title: text.captures,
    keys: [
        [["←", "→", "↑", "↓"], text.keyMove],
        [["PageUp", "PageDown", "Home", "End"], text.keyMoveFar],
        [["Enter"], text.keyOpen],
        [["Space"], text.keySelect],
        [["Shift+←", "Shift+→", "Shift+↑", "Shift+↓"], text.keySelectRange],
        [["Ctrl+A"], text.selectAll],
        [["G"], text.selectGame],
        [["Esc"], text.clearSelection],
        [["Delete"], text.remove],
        [["Shift+Delete"], text.keyDeleteForGood],
    ],
};

/** What it needs of the grid. */
interface Grid extends HTMLElement {
    readonly context: Context;
    readonly window: GridWindow;
    focusCapture(capture: Capture): Promise<void>;
    requestUpdate(): void;
}

export class GridInput {
    #path: string | null = null;
    // Where the active capture was last, for when it goes.
    #lastIndex = 0;

    constructor(private readonly grid: Grid) {}

    connect(): void {
        this.grid.addEventListener("keydown", (event) => this.#onKey(event));
        this.grid.addEventListener("click", (event) => this.#onClick(event));
        this.grid.addEventListener("dblclick", (event) => this.#onDoubleClick(event));
        this.grid.addEventListener("contextmenu", (event) => this.#onLongPress(event));
        this.grid.addEventListener("focusin", (event) => this.#onFocus(event));
    }

    /** The capture that has the focus, or had it last. When it has gone, the one that took its place. */
    active(): Capture | undefined {
        if (this.#path === null) return undefined;
        const { arrangement, captures } = this.grid.context.gallery;
        const known = captures.get(this.#path);
        const index = known ? arrangement.indexOf(known) : -1;
        if (index >= 0) {
            this.#lastIndex = index;
            return arrangement.at(index);
        }
        const next = arrangement.at(Math.min(this.#lastIndex, arrangement.length - 1));
        if (next) this.#path = next.path;
        return next;
    }

    activeIndex(): number {
        const active = this.active();
        return active ? this.#lastIndex : -1;
    }

    activate({ path }: Capture): void {
        this.#path = path;
    }

    #captureAt(event: Event): Capture | undefined {
        const path = (event.target as Element).closest<HTMLElement>("[data-path]")?.dataset["path"];
        return path === undefined ? undefined : this.grid.context.gallery.captures.get(path);
    }

    #onFocus(event: Event): void {
        const capture = this.#captureAt(event);
        if (!capture || capture.path === this.#path) return;
        this.activate(capture);
        this.grid.requestUpdate();
    }

    #changeSelection(change: () => void): void {
        change();
        this.grid.requestUpdate();
        send(this.grid, "selection-change");
    }

    #onKey(event: KeyboardEvent): void {
        const capture = this.#captureAt(event);
        const onButton = (event.target as Element).closest("button") !== null;
        if (!capture || onButton || event.altKey) return;
        const ctrl = event.ctrlKey || event.metaKey;
        if (this.#move(event, capture, ctrl) || this.#act(event, capture, ctrl)) event.preventDefault();
    }

    #move(event: KeyboardEvent, from: Capture, ctrl: boolean): boolean {
        const { gallery, selection } = this.grid.context;
        const index = gallery.arrangement.indexOf(from);
        const rightToLeft = getComputedStyle(this.grid).direction === "rtl";
        const { layout, pageRows } = this.grid.window;
        const grid = { arrangement: gallery.arrangement, layout, pageRows };
        const found = index < 0 ? null : target(index, { key: event.key, ctrl, rightToLeft }, grid);
        const to = found === null ? undefined : gallery.arrangement.at(found);
        if (!to) return false;
        if (event.shiftKey)
            this.#changeSelection(() => {
                if (selection.size === 0) selection.only(from);
                selection.extendTo(to, gallery.arrangement, gallery.captures);
            });
        void this.grid.focusCapture(to);
        return true;
    }

    #act(event: KeyboardEvent, capture: Capture, ctrl: boolean): boolean {
        const { selection } = this.grid.context;
        if (event.key === "Enter" && !ctrl) send(this.grid, "open-capture", capture);
        else if (event.key === " ") this.#changeSelection(() => this.#choose(event, capture, true));
        else if (event.key.toLowerCase() === "a" && ctrl)
            this.#changeSelection(() => selection.add(this.#shown()));
        else if (event.key.toLowerCase() === "g" && !ctrl)
            this.#changeSelection(() =>
                selection.add(this.#shown().filter(({ game }) => game === capture.game)),
            );
        else if (event.key === "Delete" && !ctrl) this.#delete(capture, event.shiftKey);
        else if (event.key === "Escape" && selection.size > 0) this.#changeSelection(() => selection.clear());
        else return false;
        return true;
    }

    #shown(): Capture[] {
        const { arrangement } = this.grid.context.gallery;
        return arrangement.between(0, arrangement.length - 1);
    }

    #selectGroup(button: HTMLElement): void {
        const { gallery, selection } = this.grid.context;
        const group = gallery.arrangement.groups.find(({ key }) => key === button.dataset["group"]);
        if (group) this.#changeSelection(() => selection.add(group.captures));
    }

    // What is selected goes; without a selection, what has the focus.
    #delete(focused: Capture, forGood: boolean): void {
        const { selection } = this.grid.context;
        const paths = selection.size > 0 ? selection.list() : [focused.path];
        send(this.grid, forGood ? "delete-for-good" : "delete-captures", paths);
    }

    #choose(event: { shiftKey: boolean }, capture: Capture, several: boolean): void {
        const { gallery, selection } = this.grid.context;
        if (event.shiftKey) selection.extendTo(capture, gallery.arrangement, gallery.captures);
        else if (several) selection.toggle(capture);
        else selection.only(capture);
    }

    #onClick(event: MouseEvent): void {
        const capture = this.#captureAt(event);
        const action = (event.target as Element).closest<HTMLElement>("[data-action]")?.dataset["action"];
        if (capture && action) return this.#actOnBroken(action, capture);
        const { selection } = this.grid.context;
        if (action === "select-group") return this.#selectGroup(event.target as HTMLElement);
        if (!capture) {
            if (selection.size > 0) this.#changeSelection(() => selection.clear());
            return;
        }
        const byTouch = (event as PointerEvent).pointerType === "touch";
        if (byTouch && selection.size === 0) return send(this.grid, "open-capture", capture);
        const several = byTouch || event.ctrlKey || event.metaKey;
        this.#changeSelection(() => this.#choose(event, capture, several));
    }

    #onDoubleClick(event: MouseEvent): void {
        const capture = this.#captureAt(event);
        if (!capture || event.ctrlKey || event.metaKey || event.shiftKey) return;
        if ((event.target as Element).closest("button") === null) send(this.grid, "open-capture", capture);
    }

    // Browsers report a long press as the wish for a menu; with a mouse, the menu comes.
    #onLongPress(event: MouseEvent): void {
        const capture = this.#captureAt(event);
        if (!capture || (event as PointerEvent).pointerType !== "touch") return;
        event.preventDefault();
        this.#changeSelection(() => this.grid.context.selection.toggle(capture));
    }

    #actOnBroken(action: string, capture: Capture): void {
        if (action === "retry") this.grid.context.thumbnails.retry(capture);
        else openOutside(this.grid, "OpenFolder", capture);
    }
}
