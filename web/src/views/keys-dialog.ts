// The list of keys.
import { html, type TemplateResult } from "lit/html.js";
import * as text from "../strings/en.js";
import type { KeyList } from "./key-list.js";
import { PageDialog } from "./page-dialog.js";

function keyCap(name: string): TemplateResult {
    return html`<kbd>${text.caps[name] ?? name}</kbd>`;
}

// "Shift+A" are two keys; "+" alone is one.
function combination(keys: string): TemplateResult[] {
    return keys
        .split(/(?<=.)\+/)
        .filter(Boolean)
        .map(keyCap);
}

export class KeysDialog extends PageDialog {
    lists: readonly KeyList[] = [];
    protected readonly heading = text.keyTitle;

    protected content(): TemplateResult {
        return html`${this.lists.map(
                ({ title, keys }, place) =>
                    html`<h3>${title}</h3>
                        <dl class="keys" tabindex="-1" ?autofocus=${place === 0}>
                            ${keys.map(
                                ([alternatives, what]) =>
                                    html`<div>
                                        <dt>
                                            ${alternatives.map(
                                                (one) => html`<span>${combination(one)}</span>`,
                                            )}
                                        </dt>
                                        <dd>${what}</dd>
                                    </div>`,
                            )}
                        </dl>`,
            )}
            <div class="buttons">${this.closeButton()}</div>`;
    }
}

customElements.define("keys-dialog", KeysDialog);
