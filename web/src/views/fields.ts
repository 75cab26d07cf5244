// Fields of the page's forms.
import { html, type TemplateResult } from "lit/html.js";

/** For paths and names, which no browser should correct. */
export function textField(label: string, value: string, onInput: (value: string) => void): TemplateResult {
    return html`<label>
        ${label}
        <input
            type="text"
            dir="auto"
            spellcheck="false"
            autocomplete="off"
            .value=${value}
            @input=${(event: Event) => onInput((event.target as HTMLInputElement).value)}
        />
    </label>`;
}

export function selectField(
    label: string,
    options: unknown,
    onChange: (value: string) => void,
): TemplateResult {
    return html`<label>
        ${label}
        <select @change=${(event: Event) => onChange((event.target as HTMLSelectElement).value)}>
            ${options}
        </select>
    </label>`;
}

export function option(value: string, title: string, selected = false): TemplateResult {
    return html`<option value=${value} ?selected=${selected}>${title}</option>`;
}
