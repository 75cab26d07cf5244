// The base of the page's dialogs: a native one, which keeps the focus in itself, closes with Esc, and gives the
// focus back.
import { html, type TemplateResult } from "lit/html.js";
import * as text from "../strings/en.js";
import { PageElement } from "./page-element.js";

export abstract class PageDialog extends PageElement {
    /** What follows when it has been closed in any way. */
    onClosed = (): void => {};

    protected abstract readonly heading: string;
    protected abstract content(): TemplateResult;

    close(): void {
        this.querySelector("dialog")?.close();
    }

    /** Closes the dialog because somebody wants to leave it, unless something would be lost that they want to keep. */
    async leave(): Promise<void> {
        this.close();
    }

    protected onKey(event: KeyboardEvent): void {
        if (event.key !== "Escape" || event.defaultPrevented) return;
        // The browser would close the dialog without asking.
        event.preventDefault();
        void this.leave();
    }

    protected override render(): TemplateResult {
        return html`<dialog
            class="page-dialog"
            aria-label=${this.heading}
            @close=${this.#onClose}
            @keydown=${this.onKey}
        >
            <h2>${this.heading}</h2>
            ${this.content()}
        </dialog>`;
    }

    protected override firstUpdated(): void {
        this.querySelector("dialog")?.showModal();
    }

    // The focus goes to what takes the place of the button that was used.
    protected override updated(): void {
        const lost =
            document.activeElement === document.body || document.activeElement === this.firstElementChild;
        if (lost) this.querySelector<HTMLElement>(".buttons button:not(:disabled)")?.focus();
    }

    protected closeButton(label = text.viewer.close): TemplateResult {
        return html`<button type="button" @click=${() => this.leave()}>${label}</button>`;
    }

    readonly #onClose = (event: Event): void => {
        if (event.target !== this.querySelector("dialog")) return;
        this.remove();
        this.onClosed();
    };
}

const dialogs = (): Element | null => document.querySelector("gallery-page > .dialogs");

/** Opens a dialog, and returns after it has been closed. */
export function openDialog(dialog: PageDialog): Promise<void> {
    return new Promise((resolve) => {
        dialog.onClosed = resolve;
        dialogs()?.append(dialog);
    });
}

/** Leaves the dialog that was opened last. Returns false when none is open. */
export function leaveTopDialog(): boolean {
    const top = [...(dialogs()?.querySelectorAll("dialog[open]") ?? [])].at(-1)?.parentElement;
    void (top as PageDialog | null | undefined)?.leave();
    return !!top;
}
