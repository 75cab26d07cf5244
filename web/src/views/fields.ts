// Buttons and fields of the page.
import { html, nothing, type TemplateResult } from "lit/html.js";

export function valueOf({ target }: Event): string {
    return (target as HTMLInputElement | HTMLSelectElement).value;
}

/** A button with a drawing of icons.svg and a name. `pressed` is for those that stay pressed. */
export function iconButton(
    icon: string,
    label: string,
    run: (() => void) | undefined,
    pressed?: boolean,
): TemplateResult {
    return html`<button
        type="button"
        class="icon ${icon}"
        aria-label=${label}
        title=${label}
        aria-pressed=${pressed ?? nothing}
        @click=${run}
    ></button>`;
}

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
            @input=${(event: Event) => onInput(valueOf(event))}
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
        <select @change=${(event: Event) => onChange(valueOf(event))}>
            ${options}
        </select>
    </label>`;
}

export function option(value: string, title: string, selected = false): TemplateResult {
    return html`<option value=${value} ?selected=${selected}>${title}</option>`;
}
