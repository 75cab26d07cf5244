// What is being deleted, with the way back. It is on top of everything, dialogs too.
import { html, nothing, type TemplateResult } from "lit/html.js";
import { repeat } from "lit/directives/repeat.js";
import type { Batch } from "../model/deletions.js";
import * as text from "../strings/en.js";
import type { Context } from "./context.js";
import { failureList } from "./failure-list.js";
import { PageElement } from "./page-element.js";

// More would hide what one looks at; the older ones can be undone by key.
const SHOWN = 3;

function message({ state, captures, failures }: Batch, hasTrash: boolean): string {
    const count = captures.length;
    if (state === "waiting") return hasTrash ? text.willTrash(count) : text.willDelete(count);
    if (state === "deleting") return text.deleting(count);
    if (state === "restoring") return text.restoring(count);
    if (state === "trashed") return text.trashed(count);
    return text.notDeleted(failures.length);
}

function reasons({ state, failures }: Batch): TemplateResult | typeof nothing {
    if (failures.length === 0) return nothing;
    return html`${state === "trashed" ? html`<p>${text.notDeleted(failures.length)}</p>` : nothing}
    ${failureList(failures)}`;
}

export class ToastList extends PageElement {
    context!: Context;
    #home: HTMLElement | null = null;
    // When they were shown first.
    readonly #since = new Map<number, number>();

    override connectedCallback(): void {
        super.connectedCallback();
        this.#home ??= this.parentElement;
        this.context.deletions.onChange(() => this.requestUpdate());
        // Dialogs open with the focus in them.
        for (const event of ["close", "focusin"]) document.addEventListener(event, this.#goWhereSeen, true);
    }

    // A dialog that is taken away takes along what is in it.
    disconnectedCallback(): void {
        for (const event of ["close", "focusin"])
            document.removeEventListener(event, this.#goWhereSeen, true);
        queueMicrotask(() => !this.isConnected && this.#goWhereSeen());
    }

    protected override render(): TemplateResult {
        const { deletions } = this.context;
        const shown = deletions.batches.filter(({ mentioned }) => mentioned).slice(-SHOWN);
        return html`<div role="status" aria-label=${text.deletions}>
            ${repeat(
                shown,
                ({ id }) => id,
                (batch) => this.#toast(batch),
            )}
        </div>`;
    }

    protected override updated(): void {
        this.#goWhereSeen();
    }

    #toast(batch: Batch): TemplateResult {
        const { deletions } = this.context;
        const { id, state } = batch;
        const canUndo = state === "waiting" || state === "trashed";
        const canDismiss = state === "trashed" || state === "failed";
        return html`<section class="toast ${state}" data-since=${this.#sinceOf(batch)}>
            <p id="toast-${id}">${message(batch, deletions.hasTrash)}</p>
            ${canUndo
                ? html`<button aria-describedby="toast-${id}" @click=${() => deletions.undo(batch)}>
                      ${text.undo}
                  </button>`
                : nothing}
            ${canDismiss
                ? html`<button aria-describedby="toast-${id}" @click=${() => deletions.dismiss(batch)}>
                      ${text.dismiss}
                  </button>`
                : nothing}
            ${reasons(batch)}
        </section>`;
    }

    // What is outside of the topmost dialog cannot be used while that is open.
    readonly #goWhereSeen = (): void => {
        const dialogs = document.querySelectorAll<HTMLElement>("dialog:modal");
        const place = [...dialogs].at(-1) ?? this.#home;
        if (!place || this.parentElement === place) return;
        place.append(this);
        // Their animations begin anew, and their time does not.
        for (const toast of this.querySelectorAll<HTMLElement>(".toast"))
            toast.style.setProperty("--passed", `${Number(toast.dataset["since"]) - performance.now()}ms`);
    };

    #sinceOf({ id }: Batch): number {
        if (!this.#since.has(id)) this.#since.set(id, performance.now());
        return this.#since.get(id)!;
    }
}

customElements.define("toast-list", ToastList);
