// The viewer's one entry in the browser's history, so that Back closes it and a reload opens it again. The address
// stays as it is.
import { leaveTopDialog } from "../page-dialog.js";

interface State {
    readonly viewing?: string;
}

export class ViewerHistory {
    // Going back takes a moment. What is opened meanwhile gets its entry after it.
    #leaving = false;
    #next = "";
    #shown = "";

    constructor(
        private readonly onBack: () => void,
        private readonly onForward: (path: string) => void,
    ) {}

    connect(): void {
        window.addEventListener("popstate", this.#onPopState);
    }

    disconnect(): void {
        window.removeEventListener("popstate", this.#onPopState);
    }

    /** The path that is looked at by the present entry; empty for none. */
    get viewing(): string {
        return (history.state as State | null)?.viewing ?? "";
    }

    show(path: string): void {
        this.#shown = path;
        if (this.#leaving) {
            this.#next = path;
            return;
        }
        const state: State = { ...(history.state as State | null), viewing: path };
        if (this.viewing === "") history.pushState(state, "");
        else if (this.viewing !== path) history.replaceState(state, "");
    }

    /** Goes back to the entry before the viewer's, if the present one is the viewer's. */
    leave(): void {
        this.#next = this.#shown = "";
        if (this.viewing === "" || this.#leaving) return;
        this.#leaving = true;
        history.back();
    }

    /** The present entry shows nothing any more, as when its capture is gone at a start. */
    forget(): void {
        history.replaceState({}, "");
    }

    readonly #onPopState = (): void => {
        const next = this.#next;
        if (this.#leaving) {
            this.#leaving = false;
            if (next !== "") this.show(next);
            return;
        }
        if (this.viewing !== "") this.onForward(this.viewing);
        // The viewer stays, and gets its entry again at once: forward would take a moment, in which another Back
        // leaves the page.
        else if (leaveTopDialog()) this.show(this.#shown);
        else this.onBack();
    };
}
