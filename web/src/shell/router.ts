// Which capture is open, in the browser's history, so that its Back leads to the grid.

interface Shown {
    readonly capture?: string;
}

export class Router {
    /** `show` is called with the path of the capture that is open, or null for the grid. */
    constructor(private readonly show: (path: string | null) => void) {
        window.addEventListener("popstate", () => this.show(this.path));
    }

    /** What was open when the page was loaded, as after a reload. */
    get path(): string | null {
        return (history.state as Shown | null)?.capture ?? null;
    }

    open(path: string): void {
        history.pushState({ capture: path } satisfies Shown, "");
        this.show(path);
    }

    /** Another capture takes the place of the open one; Back still leads to the grid. */
    move(path: string): void {
        history.replaceState({ capture: path } satisfies Shown, "");
        this.show(path);
    }

    close(): void {
        if (this.path !== null) history.back();
    }
}
