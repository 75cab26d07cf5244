// Makes a montage of what is selected.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { MontageConfigInfo } from "../api/types.js";
import type { Capture } from "../model/capture.js";
import { MontageJob, montageRequest, type MontageForm } from "../model/montage.js";
import * as text from "../strings/en.js";
import { sizeText } from "../strings/formats.js";
import type { Context } from "./context.js";
import { option, selectField, textField } from "./fields.js";
import { PageDialog } from "./page-dialog.js";

// Until the page is closed: recipes have no list to choose from.
let lastRecipe = "";

function proposal(captures: readonly Capture[]): string {
    const path = captures[0]?.path ?? "";
    const now = new Date();
    const local = new Date(now.getTime() - now.getTimezoneOffset() * 60_000).toISOString();
    const stamp = local.slice(0, 19).replace("T", " ").replaceAll(":", "-");
    return `${path.slice(0, path.lastIndexOf("/"))}/Montage ${stamp}.mp4`;
}

export class MontageDialog extends PageDialog {
    context!: Context;
    /** Those of which it is made, in this order. */
    captures: readonly Capture[] = [];
    /** One that is under way already. */
    job: MontageJob | null = null;
    /** What somebody wants to see when the dialog is closed. */
    result: Capture | undefined;
    protected readonly heading = text.montageTitle;
    #form!: MontageForm;
    #choices: Record<string, MontageConfigInfo | undefined> = {};
    #failure = "";
    #stopListening = (): void => {};

    override connectedCallback(): void {
        super.connectedCallback();
        const { client, gallery } = this.context;
        const output = proposal(this.captures);
        this.#form = { recipe: lastRecipe, output, title: "", celebration: "", transition: "", filter: "" };
        this.job?.onChange(() => this.requestUpdate());
        // The result appears there.
        this.#stopListening = gallery.onChange(() => this.requestUpdate());
        // A gallery without a configuration makes montages without these.
        client.request("GetMontageCloudConfig", {}).then(
            ({ montageConfig = {} }) => {
                const { celebrations, transitions, filters } = montageConfig;
                this.#choices = { celebration: celebrations, transition: transitions, filter: filters };
                this.requestUpdate();
            },
            () => {},
        );
    }

    disconnectedCallback(): void {
        this.#stopListening();
    }

    protected content(): TemplateResult {
        return this.job ? this.#progress(this.job) : this.#fields();
    }

    #fields(): TemplateResult {
        const size = this.captures.reduce((sum, { sizeKB }) => sum + sizeKB, 0);
        const { recipe, output } = this.#form;
        const isComplete = this.captures.length > 0 && recipe.trim() !== "" && output.trim().startsWith("/");
        return html`<form novalidate @submit=${this.#start}>
            <p>${text.montageOf(this.captures.length, sizeText(size))}</p>
            ${this.#failure ? html`<p class="error" role="alert">${this.#failure}</p>` : nothing}
            ${this.#input(text.recipe, "recipe")} ${this.#input(text.montageName, "title")}
            ${this.#choice(text.transition, "transition")} ${this.#choice(text.filter, "filter")}
            ${this.#choice(text.celebration, "celebration")} ${this.#input(text.result, "output")}
            <div class="buttons">
                ${this.closeButton(text.cancel)}
                <button class="primary" ?disabled=${!isComplete}>${text.makeMontage}</button>
            </div>
        </form>`;
    }

    #input(label: string, member: keyof MontageForm): TemplateResult {
        return textField(label, this.#form[member], (value) => this.#edit(member, value));
    }

    #choice(label: string, member: keyof MontageForm): TemplateResult | typeof nothing {
        const choices = this.#choices[member] ?? [];
        if (choices.length === 0) return nothing;
        const options = choices.map(({ id = "", name = id }) => option(id, name));
        return selectField(label, [option("", text.none), ...options], (value) => this.#edit(member, value));
    }

    #progress(job: MontageJob): TemplateResult {
        const shown = this.context.gallery.captures.get(job.request.output);
        const percent = job.progress ?? undefined;
        return html`
            ${job.isOver
                ? nothing
                : html`<progress
                      aria-label=${this.heading}
                      max="100"
                      value=${percent ?? nothing}
                  ></progress>`}
            <p role="status">${this.#stateText(job, shown)}</p>
            ${job.failure ? html`<p class="error" role="alert">${text.failed(job.failure)}</p>` : nothing}
            <div class="buttons">
                ${job.isOver
                    ? nothing
                    : html`<button
                          type="button"
                          ?disabled=${job.state === "canceling"}
                          @click=${() => job.cancel()}
                      >
                          ${text.cancel}
                      </button>`}
                ${this.closeButton()}
                ${job.state === "made" && shown
                    ? html`<button type="button" class="primary" @click=${() => this.#show(shown)}>
                          ${text.showResult}
                      </button>`
                    : nothing}
            </div>
        `;
    }

    #stateText({ state, progress }: MontageJob, shown: Capture | undefined): string {
        if (state === "made") return shown ? text.montageMade : text.montageMissing;
        if (state === "canceled") return text.montageCanceled;
        if (state === "failed") return "";
        return progress === null ? text.makingMontage : `${text.makingMontage} ${Math.round(progress)} %`;
    }

    #show(result: Capture): void {
        this.result = result;
        this.close();
    }

    #edit(member: keyof MontageForm, value: string): void {
        this.#form = { ...this.#form, [member]: value };
        this.#failure = "";
        this.requestUpdate();
    }

    readonly #start = async (event: Event): Promise<void> => {
        event.preventDefault();
        const request = montageRequest(this.captures, this.#form);
        try {
            if (await this.#isTaken(request.output)) {
                this.#failure = text.resultTaken;
                return this.requestUpdate();
            }
        } catch (error) {
            this.#failure = text.failed((error as Error).message);
            return this.requestUpdate();
        }
        lastRecipe = request.recipe;
        this.job = new MontageJob(this.context.client, request);
        this.job.onChange(() => this.requestUpdate());
        this.requestUpdate();
        await this.job.run();
    };

    // The gallery would write over it.
    async #isTaken(output: string): Promise<boolean> {
        const slash = output.lastIndexOf("/");
        const directory = output.slice(0, Math.max(slash, 1));
        const { files = [] } = await this.context.client.request("GetFolderListing", { directory });
        return files.some(({ name }) => name === output.slice(slash + 1));
    }
}

customElements.define("montage-dialog", MontageDialog);
