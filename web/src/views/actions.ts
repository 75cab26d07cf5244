// What can be done from anywhere on the page: deleting, undoing, and opening the page's dialogs.
import { html, nothing, type TemplateResult } from "lit/html.js";
import { captureOf, type Capture } from "../model/capture.js";
import type { News } from "../model/feed.js";
import { montageCaptures, type MontageJob } from "../model/montage.js";
import * as text from "../strings/en.js";
import { confirmed, deletionConfirmed } from "./confirm-dialog.js";
import type { CaptureGrid } from "./capture-grid.js";
import { MANY, type Context, type SelectionAction } from "./context.js";
import { GRID_KEYS } from "./grid-input.js";
import { HighlightsDialog } from "./highlights-dialog.js";
import { SCRUBBER_KEYS } from "./jump-scrubber.js";
import type { KeyList } from "./key-list.js";
import { KeysDialog } from "./keys-dialog.js";
import { MontageDialog } from "./montage-dialog.js";
import { openDialog } from "./page-dialog.js";
import { SettingsDialog } from "./settings-dialog.js";
import { TransferDialog } from "./transfer-dialog.js";
import { PLAYER_KEYS, TRIM_KEYS, VIEWER_KEYS } from "./viewer/keys.js";

/** What it needs of the page. */
interface Page extends HTMLElement {
    readonly context: Context;
    readonly grid: CaptureGrid | null;
    announce(message: string): void;
    refresh(): void;
    /** Selects a capture and goes to it, whatever is filtered. */
    goTo(capture: Capture): Promise<void>;
}

export const PAGE_KEYS: KeyList = {
    title: text.gallery,
    keys: [
        [["Ctrl+Z"], text.keyUndo],
        [["?"], text.keyList],
    ],
};

/** Of all parts of the page, in the order in which they are listed. */
const KEY_LISTS: readonly KeyList[] = [
    PAGE_KEYS,
    GRID_KEYS,
    SCRUBBER_KEYS,
    VIEWER_KEYS,
    PLAYER_KEYS,
    TRIM_KEYS,
];

function isEditable(target: EventTarget | null): boolean {
    return target instanceof Element && target.matches("input:not([type=range], [type=checkbox]), textarea");
}

export class Actions {
    #isFull = false;
    #isDiskLow = false;
    #montage: MontageJob | null = null;
    #lastSummary = Promise.resolve();

    constructor(private readonly page: Page) {}

    connect(): void {
        const { page } = this;
        page.addEventListener("delete-captures", ({ detail }) => void this.#delete(detail));
        page.addEventListener("delete-for-good", ({ detail }) => void this.#deleteForGood(detail));
        page.addEventListener("selection-action", ({ detail }) => void this.#act(detail));
        document.addEventListener("keydown", (event) => this.#onKey(event));
    }

    /** The gallery has reported something. */
    hear(news: News): void {
        this.page.context.pathChange.hear(news);
        const { galleryIsFull, checkDiskSpace, openSummary } = news;
        const highlights = openSummary?.ugc?.flatMap((record) => captureOf(record) ?? []) ?? [];
        if (highlights.length > 0) this.#showHighlights(highlights);
        if (galleryIsFull === undefined && !checkDiskSpace) return;
        this.#isFull = galleryIsFull ?? this.#isFull;
        this.#isDiskLow = checkDiskSpace?.lowDiskSpace ?? this.#isDiskLow;
        this.page.refresh();
    }

    // One session after the other.
    #showHighlights(captures: readonly Capture[]): void {
        this.#lastSummary = this.#lastSummary.then(() => {
            const { context } = this.page;
            return openDialog(Object.assign(new HighlightsDialog(), { context, captures }));
        });
    }

    /** What the gallery has warned of, and where to do something about it. */
    warnings(): TemplateResult | typeof nothing {
        if (!this.#isFull && !this.#isDiskLow) return nothing;
        return html`<p class="notice warning">
            ${this.#isFull ? text.full : text.lowDiskSpace}
            <button @click=${() => this.openSettings()}>${text.settings}</button>
        </p>`;
    }

    openSettings(): void {
        const { context } = this.page;
        void openDialog(Object.assign(new SettingsDialog(), { context }));
    }

    #onKey(event: KeyboardEvent): void {
        if (isEditable(event.target) || event.altKey || event.defaultPrevented) return;
        if (event.key === "?") return this.#openKeys(event);
        const isUndo = event.key.toLowerCase() === "z" && (event.ctrlKey || event.metaKey) && !event.shiftKey;
        if (!isUndo) return;
        event.preventDefault();
        void this.#undo();
    }

    #openKeys(event: Event): void {
        event.preventDefault();
        if (document.querySelector("keys-dialog")) return;
        void openDialog(Object.assign(new KeysDialog(), { lists: KEY_LISTS }));
    }

    async #undo(): Promise<void> {
        const batch = await this.page.context.deletions.undo();
        if (batch && batch.failures.length === 0) this.page.announce(text.undone(batch.captures.length));
    }

    async #act(action: SelectionAction): Promise<void> {
        const { selection } = this.page.context;
        if (action === "delete") return this.#delete(selection.list());
        if (action === "copy" || action === "move") await this.#transfer(action === "move");
        if (action === "montage") return this.#makeMontage();
        // What was moved away is selected no longer, so that the bar may be gone.
        if (!this.page.contains(document.activeElement)) this.page.grid?.focusLast();
    }

    async #transfer(moves: boolean): Promise<void> {
        const { context } = this.page;
        const captures = this.#capturesOf(context.selection.list());
        await openDialog(Object.assign(new TransferDialog(), { context, moves, captures }));
    }

    // One at a time: a montage that is under way is shown again.
    async #makeMontage(): Promise<void> {
        const { context } = this.page;
        const captures = montageCaptures(this.#capturesOf(context.selection.list()));
        const dialog = Object.assign(new MontageDialog(), { context, captures, job: this.#montage });
        await openDialog(dialog);
        this.#montage = dialog.job?.isOver ? null : dialog.job;
        this.#montage?.onChange(() => this.#reportMontage());
        if (dialog.result) await this.page.goTo(dialog.result);
    }

    // Nobody looks at its dialog.
    #reportMontage(): void {
        if (!this.#montage?.isOver) return;
        const { state, failure } = this.#montage;
        this.#montage = null;
        this.page.announce(state === "failed" ? text.failed(failure) : text.montageOver);
    }

    #capturesOf(paths: readonly string[]): Capture[] {
        const { captures } = this.page.context.gallery;
        return paths.flatMap((path) => captures.get(path) ?? []);
    }

    async #delete(paths: readonly string[]): Promise<void> {
        const { deletions } = this.page.context;
        const captures = this.#capturesOf(paths);
        if (captures.length > MANY && !(await deletionConfirmed(captures.length, deletions.hasTrash))) return;
        deletions.delete(captures);
        this.#leave(paths);
    }

    async #deleteForGood(paths: readonly string[]): Promise<void> {
        const captures = this.#capturesOf(paths);
        const question = {
            heading: text.deleteForGoodQuestion(captures.length),
            explanation: text.deleteForGoodExplanation,
            action: text.keyDeleteForGood,
        };
        if (captures.length === 0 || !(await confirmed(question))) return;
        const done = this.page.context.deletions.deleteForGood(captures);
        this.#leave(paths);
        await done;
    }

    // What is hidden is selected no longer, and the bar that was used may be gone.
    #leave(paths: readonly string[]): void {
        const { selection } = this.page.context;
        for (const path of paths) selection.drop(path);
        this.page.refresh();
        if (document.querySelector("dialog:modal") === null) this.page.grid?.focusLast();
    }
}
