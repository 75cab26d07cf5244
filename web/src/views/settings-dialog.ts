// The gallery's folders, its limit, and the drives.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { GalleryCapInfo } from "../api/types.js";
import { listDrives, type Drive } from "../model/drives.js";
import { changesOf, formOf, rebased, type SettingsForm } from "../model/settings.js";
import * as text from "../strings/en.js";
import { sizeText } from "../strings/formats.js";
import type { Context } from "./context.js";
import { textField, valueOf } from "./fields.js";
import { PageDialog } from "./page-dialog.js";

const megabytes = (count: number): string => sizeText(count * 1000);

export class SettingsDialog extends PageDialog {
    context!: Context;
    protected readonly heading = text.settings;
    #known: SettingsForm | null = null;
    #form: SettingsForm | null = null;
    #capacity: GalleryCapInfo = {};
    #drives: readonly Drive[] = [];
    #failure = "";
    #message = "";
    #saving = false;
    #stopListening = (): void => {};

    override connectedCallback(): void {
        super.connectedCallback();
        const { client, pathChange } = this.context;
        pathChange.onChange(() => (pathChange.isRunning ? this.requestUpdate() : void this.#load()));
        this.#stopListening = client.follow("GalleryUpdatedNotification", ({ capacity = {} }) =>
            this.#measure(capacity),
        );
        void this.#load();
        listDrives(client).then(
            (drives) => {
                this.#drives = drives;
                this.requestUpdate();
            },
            (error: Error) => this.#fail(error),
        );
    }

    disconnectedCallback(): void {
        this.context.pathChange.onChange(() => {});
        this.#stopListening();
    }

    protected content(): TemplateResult {
        return html`<form novalidate @submit=${this.#save}>
            ${this.#failure ? html`<p class="error" role="alert">${this.#failure}</p>` : nothing}
            ${this.#form ? this.#fields(this.#form) : html`<p>${text.loadingSettings}</p>`}
            <div class="buttons">
                <span role="status" class="done">${this.#message}</span>
                ${this.closeButton()}
                <button class="primary" ?disabled=${!this.#form || this.#saving}>${text.save}</button>
            </div>
        </form>`;
    }

    #fields(form: SettingsForm): TemplateResult {
        return html`
            ${textField(text.galleryFolder, form.galleryFolder, (galleryFolder) =>
                this.#edit({ galleryFolder }),
            )}
            ${this.#progress(form)} ${this.#driveList()}
            ${textField(text.tempFolder, form.tempFolder, (tempFolder) => this.#edit({ tempFolder }))}
            ${this.#storage(form)}
            <label class="check">
                <input
                    type="checkbox"
                    .checked=${form.limited}
                    @change=${(event: Event) =>
                        this.#edit({ limited: (event.target as HTMLInputElement).checked })}
                />
                ${text.limitSize}
            </label>
            <div class="field">
                <span aria-hidden="true">${text.limit}</span>
                <input
                    type="range"
                    aria-label=${text.limit}
                    aria-valuetext=${this.#limitText(form)}
                    min="1"
                    max="100"
                    .value=${String(form.percent)}
                    ?disabled=${!form.limited}
                    @input=${(event: Event) => this.#edit({ percent: Number(valueOf(event)) })}
                />
                <small>${form.limited ? this.#limitText(form) : text.noLimit}</small>
            </div>
        `;
    }

    // What a change of the folder means, or how far it is.
    #progress({ galleryFolder }: SettingsForm): TemplateResult | typeof nothing {
        if (this.context.pathChange.isRunning)
            return html`<div class="field">
                <progress aria-label=${text.scanningTitle}></progress>
                <small>${text.scanning(this.context.gallery.captures.size)}</small>
                <div class="buttons">
                    <button type="button" @click=${this.#cancelChange}>${text.cancelChange}</button>
                </div>
            </div>`;
        return galleryFolder === this.#known?.galleryFolder ? nothing : html`<p>${text.changeMeans}</p>`;
    }

    #driveList(): TemplateResult {
        const use = ({ name }: Drive) => {
            const folder = this.#form?.galleryFolder.split("/").filter(Boolean).at(-1) ?? text.gallery;
            this.#edit({ galleryFolder: `${name === "/" ? "" : name}/${folder}` });
        };
        return html`<ul class="drives" aria-label=${text.drives}>
            ${this.#drives.map(
                (drive) =>
                    html`<li>
                        <span><bdi>${drive.name}</bdi> <small>${text.driveType(drive.type)}</small></span>
                        <small>${text.room(megabytes(drive.freeMB), megabytes(drive.totalMB))}</small>
                        <button
                            type="button"
                            aria-label=${`${text.useDrive} ${drive.name}`}
                            @click=${() => use(drive)}
                        >
                            ${text.useDrive}
                        </button>
                    </li>`,
            )}
        </ul>`;
    }

    #storage(form: SettingsForm): TemplateResult {
        const { usageMB = 0, totalDiskSpaceMB = 0 } = this.#capacity;
        const most = form.limited ? (totalDiskSpaceMB * form.percent) / 100 : totalDiskSpaceMB;
        return html`<div class="field">
            ${text.storage}
            <meter
                aria-label=${text.storage}
                min="0"
                max=${Math.max(totalDiskSpaceMB, 1)}
                high=${most}
                .value=${usageMB}
            ></meter>
            <small
                >${text.used(
                    usageMB > 0 ? megabytes(usageMB) : text.hardlyAny,
                    megabytes(totalDiskSpaceMB),
                )}</small
            >
        </div>`;
    }

    #limitText({ percent }: SettingsForm): string {
        const { totalDiskSpaceMB = 0 } = this.#capacity;
        return text.limitOf(percent, megabytes((totalDiskSpaceMB * percent) / 100));
    }

    #edit(changes: Partial<SettingsForm>): void {
        if (this.#form) this.#form = { ...this.#form, ...changes };
        this.#message = "";
        this.requestUpdate();
    }

    #measure(capacity: GalleryCapInfo): void {
        this.#capacity = { ...this.#capacity, ...capacity };
        this.requestUpdate();
    }

    #fail(error: Error): void {
        this.#failure = text.failed(error.message);
        this.requestUpdate();
    }

    // What has been typed stays, except for what the gallery has made its own.
    async #load(): Promise<void> {
        try {
            const { settings } = await this.context.client.request("GetSettings", {});
            const now = formOf(settings);
            this.#form = this.#known && this.#form ? rebased(this.#form, this.#known, now) : now;
            this.#known = now;
            this.#measure(settings.capacity ?? {});
            // Before the gallery has answered, its state is that of before the change.
            if (!this.#saving) this.context.pathChange.follow(settings.trackerStatus);
        } catch (error) {
            this.#fail(error as Error);
        }
    }

    readonly #save = async (event: Event): Promise<void> => {
        event.preventDefault();
        if (!this.#known || !this.#form || this.#saving) return;
        const changes = changesOf(this.#known, this.#form);
        if (!changes) return this.close();
        this.#saving = true;
        this.#failure = "";
        this.requestUpdate();
        const { client, pathChange } = this.context;
        if (changes.userGalleryPath) pathChange.begin();
        try {
            await client.request("SetSettings", { settings: changes });
            this.#message = text.saved;
        } catch (error) {
            pathChange.end();
            this.#fail(error as Error);
        }
        this.#saving = false;
        await this.#load();
    };

    readonly #cancelChange = async (): Promise<void> => {
        try {
            await this.context.client.request("CancelPathUpdate", {});
            this.context.pathChange.end();
        } catch (error) {
            this.#fail(error as Error);
        }
    };
}

customElements.define("settings-dialog", SettingsDialog);
