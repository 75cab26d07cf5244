// The viewer's buttons.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../../model/capture.js";
import * as text from "../../strings/en.js";

export type ViewerAction = "previous" | "next" | "trim" | "caption" | "details" | "delete" | "close";

export interface BarState {
    /** "3 of 415" */
    readonly place: string;
    canStep(by: 1 | -1): boolean;
    readonly showsDetails: boolean;
    run(action: ViewerAction): void;
}

interface ButtonState {
    readonly disabled?: boolean;
    readonly pressed?: boolean;
}

// Buttons that are out of use keep the focus: at the last capture "Next" must not throw it out of the dialog.
function button(action: ViewerAction, { run }: BarState, state: ButtonState = {}): TemplateResult {
    const label = text.viewer[action];
    return html`<button
        class="icon ${action}"
        title=${label}
        aria-disabled=${state.disabled ? "true" : nothing}
        aria-pressed=${state.pressed ?? nothing}
        @click=${() => !state.disabled && run(action)}
    >
        <span>${label}</span>
    </button>`;
}

export function toolbar(capture: Capture, state: BarState): TemplateResult {
    return html`<header class="viewer-bar">
        ${button("previous", state, { disabled: !state.canStep(-1) })}
        ${button("next", state, { disabled: !state.canStep(1) })}
        <h2><bdi>${capture.title}</bdi> <small>${state.place}</small></h2>
        ${button("trim", state, { disabled: capture.kind !== "video" })} ${button("caption", state)}
        ${button("details", state, { pressed: state.showsDetails })} ${button("delete", state)}
        ${button("close", state)}
    </header>`;
}
