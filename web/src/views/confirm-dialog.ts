// Asks once more before something that cannot be undone, or that concerns many captures.
import { html, type TemplateResult } from "lit/html.js";
import * as text from "../strings/en.js";
import { openDialog, PageDialog } from "./page-dialog.js";

export interface Question {
    readonly heading: string;
    readonly explanation: string;
    /** What the button that does it says. */
    readonly action: string;
}

export class ConfirmDialog extends PageDialog {
    question!: Question;
    confirmed = false;

    protected get heading(): string {
        return this.question.heading;
    }

    // The focus starts on the way out: Enter alone destroys nothing.
    protected content(): TemplateResult {
        return html`<p>${this.question.explanation}</p>
            <div class="buttons">
                <button type="button" autofocus @click=${() => this.close()}>${text.cancel}</button>
                <button type="button" class="danger" @click=${this.#confirm}>${this.question.action}</button>
            </div>`;
    }

    readonly #confirm = (): void => {
        this.confirmed = true;
        this.close();
    };
}

customElements.define("confirm-dialog", ConfirmDialog);

export async function confirmed(question: Question): Promise<boolean> {
    const dialog = new ConfirmDialog();
    dialog.question = question;
    await openDialog(dialog);
    return dialog.confirmed;
}

/** Before captures are deleted in a way that can be undone. */
export function deletionConfirmed(count: number, hasTrash: boolean): Promise<boolean> {
    return confirmed({
        heading: text.deleteQuestion(count),
        explanation: hasTrash ? text.deleteManyToTrash : text.deleteManyForGood,
        action: text.remove,
    });
}
