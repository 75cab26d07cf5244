// The base of the page's elements. They render into the page itself, so that labels, focus and styles cross their
// borders, and they are drawn once for all changes of a moment.
import { render } from "lit/html.js";

export abstract class PageElement extends HTMLElement {
    /** Resolves after the update that is under way; at once when none is. */
    updateComplete: Promise<void> = Promise.resolve();
    #hasUpdated = false;
    #isPending = false;

    connectedCallback(): void {
        if (!this.#hasUpdated) this.requestUpdate();
    }

    /** Draws the element again, together with all that is asked for until then. */
    requestUpdate(): void {
        if (this.#isPending) return;
        this.#isPending = true;
        this.updateComplete = Promise.resolve().then(() => this.#update());
    }

    protected abstract render(): unknown;
    /** Before each rendering. */
    protected willUpdate(): void {}
    /** After the first rendering. */
    protected firstUpdated(): void {}
    /** After each rendering. */
    protected updated(): void {}

    #update(): void {
        const isFirst = !this.#hasUpdated;
        try {
            this.willUpdate();
            render(this.render(), this, { host: this });
        } finally {
            this.#isPending = false;
        }
        this.#hasUpdated = true;
        if (isFirst) this.firstUpdated();
        this.updated();
    }
}
