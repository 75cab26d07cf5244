// What is done with a clip that was chosen, and what that means.
import { html, nothing, type TemplateResult } from "lit/html.js";
import * as text from "../../strings/en.js";

export type TrimState =
    | { step: "choosing"; failure?: string }
    | { step: "confirming" } // that the original goes
    | { step: "cutting" };

export interface TrimChoices {
    readonly isWhole: boolean;
    /** Empty until it is known. */
    readonly copyName: string;
    cancel(): void;
    saveCopy(): void;
    askToReplace(): void;
    replace(): void;
    keep(): void;
}

function cutting(): TemplateResult {
    return html`<p role="status">
        <progress aria-label=${text.trimCutting}></progress> ${text.trimCutting}
    </p>`;
}

// A second click at the place of the first keeps the original.
function confirmation({ replace, keep }: TrimChoices): TemplateResult {
    return html`<p class="error" role="alert">${text.trimReplaceMeans}</p>
        <div class="buttons">
            <button class="primary" @click=${keep}>${text.trimKeepOriginal}</button>
            <button class="danger" @click=${replace}>${text.trimReplaceConfirm}</button>
        </div>`;
}

function hint({ isWhole, copyName }: TrimChoices): string {
    if (isWhole) return text.trimWhole;
    return copyName === "" ? "" : text.trimCopyMeans(copyName);
}

export function trimActions(state: TrimState, choices: TrimChoices): TemplateResult {
    if (state.step === "cutting") return cutting();
    if (state.step === "confirming") return confirmation(choices);
    const { isWhole, copyName } = choices;
    return html`
        ${state.failure ? html`<p class="error" role="alert">${text.failed(state.failure)}</p>` : nothing}
        <p>${hint(choices)}</p>
        <div class="buttons">
            <button @click=${choices.cancel}>${text.cancel}</button>
            <button ?disabled=${isWhole} @click=${choices.askToReplace}>${text.trimReplace}</button>
            <button class="primary" ?disabled=${isWhole || copyName === ""} @click=${choices.saveCopy}>
                ${text.trimSaveCopy}
            </button>
        </div>
    `;
}
