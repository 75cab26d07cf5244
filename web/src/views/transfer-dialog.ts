// Copies or moves captures to a folder: another game's, one on a drive, or any that is typed.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../model/capture.js";
import { listDrives, roomAt, roomIn, type Drive, type Room } from "../model/drives.js";
import { FileJob, folderFrom } from "../model/file-job.js";
import * as text from "../strings/en.js";
import { sizeText } from "../strings/formats.js";
import { confirmed } from "./confirm-dialog.js";
import { MANY, type Context } from "./context.js";
import { failureList } from "./failure-list.js";
import { option, selectField, textField } from "./fields.js";
import { PageDialog } from "./page-dialog.js";

/** What is known of the folder that is typed. */
interface Place {
    readonly folder: string;
    readonly room: Room | null;
    readonly isThere: boolean;
    readonly isWritable: boolean;
}

export class TransferDialog extends PageDialog {
    context!: Context;
    captures: readonly Capture[] = [];
    moves = false;
    #folder = "";
    #place: Place | null = null;
    #looking = false;
    #drives: readonly Drive[] = [];
    #job: FileJob | null = null;
    #failure = "";

    protected get heading(): string {
        return this.moves ? text.moveTo : text.copyTo;
    }

    override connectedCallback(): void {
        super.connectedCallback();
        listDrives(this.context.client).then((drives) => {
            this.#drives = drives;
            this.requestUpdate();
        }, this.#fail);
    }

    // Whoever closes the dialog wants no more of it.
    disconnectedCallback(): void {
        this.#job?.stop();
    }

    protected content(): TemplateResult {
        const job = this.#job;
        const size = this.captures.reduce((sum, { sizeKB }) => sum + sizeKB, 0);
        return html`
            <p>${text.selected(this.captures.length, sizeText(size))}</p>
            ${this.#failure ? html`<p class="error" role="alert">${this.#failure}</p>` : nothing}
            ${job ? this.#progress(job) : this.#choice(size)}
        `;
    }

    #choice(sizeKB: number): TemplateResult {
        const obstacle = this.#obstacle(sizeKB);
        return html`<form novalidate @submit=${this.#start}>
            ${selectField(text.destination, this.#destinations(), this.#choose)}
            ${textField(text.folder, this.#folder, this.#choose)}
            <p role="status">${this.#roomText()} ${obstacle}</p>
            <div class="buttons">
                ${this.closeButton(text.cancel)}
                <button class="primary" ?disabled=${!this.#place || obstacle !== ""}>
                    ${this.moves ? text.move : text.copy}
                </button>
            </div>
        </form>`;
    }

    #destinations(): TemplateResult {
        const { folder, games } = this.context.gallery;
        const at = (place: string, title: string) => option(place, title, place === this.#folder);
        return html`${at("", text.otherFolder)}
            <optgroup label=${text.games}>
                ${games.map((game) => at(`${folderFrom(folder)}/${game}`, game))}
            </optgroup>
            <optgroup label=${text.drives}>${this.#drives.map(({ name }) => at(name, name))}</optgroup>`;
    }

    #progress(job: FileJob): TemplateResult {
        const { state, tried, captures, current, failures } = job;
        const isOver = state !== "running" && !current;
        const done = this.moves ? text.movedCount(job.succeeded) : text.copiedCount(job.succeeded);
        const left = captures.length - tried;
        return html`
            <progress aria-label=${this.heading} max=${captures.length} .value=${tried}></progress>
            <p role="status">
                ${isOver
                    ? `${done} ${left > 0 ? text.notTried(left) : ""}`
                    : text.ofCount(tried, captures.length)}
                ${current ? html`<bdi>${current.fileName}</bdi>` : nothing}
            </p>
            ${failureList(failures)}
            <div class="buttons">
                ${isOver
                    ? this.closeButton()
                    : html`<button type="button" ?disabled=${state === "stopped"} @click=${() => job.stop()}>
                          ${text.cancel}
                      </button>`}
            </div>
        `;
    }

    #roomText(): string {
        const { room } = this.#place ?? {};
        return room ? `${text.room(sizeText(room.freeMB * 1000), sizeText(room.totalMB * 1000))}.` : "";
    }

    // Why it cannot be started; empty when it can, or nothing is known yet.
    #obstacle(sizeKB: number): string {
        const place = this.#place;
        if (!place) return "";
        if (!place.room) return text.noFolder;
        // The gallery makes a folder for what is moved, not for copies.
        if (!place.isThere) return this.moves ? "" : text.noFolder;
        if (!place.isWritable) return text.notWritable;
        return !this.moves && place.room.freeMB * 1000 < sizeKB ? text.tooFull : "";
    }

    readonly #choose = (folder: string): void => {
        this.#folder = folder;
        this.#place = null;
        this.requestUpdate();
        void this.#look();
    };

    // One look at a time, and the last one at what is typed then.
    async #look(): Promise<void> {
        if (this.#looking) return;
        this.#looking = true;
        const folder = folderFrom(this.#folder);
        try {
            const place = await this.#lookAt(folder);
            if (folder === folderFrom(this.#folder) && folder !== "") this.#place = place;
        } catch (error) {
            this.#fail(error as Error);
        }
        this.#looking = false;
        this.requestUpdate();
        if (folder !== folderFrom(this.#folder)) void this.#look();
    }

    async #lookAt(folder: string): Promise<Place> {
        const { client } = this.context;
        const [room, there] = await Promise.all([roomAt(client, folder), roomIn(client, folder)]);
        const isThere = there !== null;
        const { writable } = isThere
            ? await client.request("IsDirectoryWriteable", { directory: folder })
            : { writable: false };
        return { folder, room, isThere, isWritable: writable };
    }

    readonly #start = async (event: Event): Promise<void> => {
        event.preventDefault();
        const { captures, moves } = this;
        const place = this.#place;
        if (!place) return;
        const question = {
            heading: moves ? text.moveQuestion(captures.length) : text.copyQuestion(captures.length),
            explanation: place.folder,
            action: moves ? text.move : text.copy,
        };
        if (captures.length > MANY && !(await confirmed(question))) return;
        const { client } = this.context;
        const transfer = (source: string, destination: string) =>
            client.request(moves ? "MoveFile" : "CopyFile", { source, destination });
        this.#job = new FileJob(captures, place.folder, transfer, () => this.requestUpdate());
        await this.#job.run();
    };

    readonly #fail = (error: Error): void => {
        this.#failure = text.failed(error.message);
        this.requestUpdate();
    };
}

customElements.define("transfer-dialog", TransferDialog);
