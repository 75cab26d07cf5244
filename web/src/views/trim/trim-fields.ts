// The times of a clip as text, for who knows them exactly.
import { html, type TemplateResult } from "lit/html.js";
import { parseTime } from "../../model/clip-name.js";
import type { TrimRange } from "../../model/trim-range.js";
import * as text from "../../strings/en.js";
import { clockText } from "../../strings/formats.js";

export type Field = "start" | "end" | "length";

/** `set` gets the time that was written; null when what was written is none. */
export function trimFields(
    range: TrimRange,
    set: (field: Field, time: number | null) => void,
): TemplateResult {
    const field = (name: Field, label: string, time: number) =>
        html`<label>
            ${label}
            <input
                type="text"
                inputmode="decimal"
                autocomplete="off"
                .value=${clockText(time)}
                @change=${({ target }: Event) => {
                    const input = target as HTMLInputElement;
                    const written = parseTime(input.value);
                    // What follows is drawn only when it is another time.
                    input.value = clockText(time);
                    set(name, written);
                }}
            />
        </label>`;
    return html`${field("start", text.trimStartTime, range.start)}
    ${field("end", text.trimEndTime, range.end)} ${field("length", text.trimLength, range.length)}`;
}

/** Where the clip will start, as far as it is known. */
export function startHint(range: TrimRange): string {
    const keyframe = range.keyframeOfStart;
    if (keyframe === null) return text.trimStartsEarlier;
    const time = clockText(range.start);
    if (Math.abs(range.start - keyframe) < range.frame / 2) return text.trimStartsAt(time);
    return text.trimStartsBefore(time, clockText(keyframe));
}
