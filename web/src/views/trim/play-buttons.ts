// Plays the clip, or its ends, before it is saved.
import { html, type TemplateResult } from "lit/html.js";
import type { TrimRange } from "../../model/trim-range.js";
import * as text from "../../strings/en.js";
import type { SelectionPlayer } from "./selection-player.js";

const MOMENT = 2000;

interface Dialog {
    // Not before the first time that the dialog is drawn.
    readonly player?: SelectionPlayer;
    togglePlay(): void;
    toggleLoop(): void;
}

export function playButtons(dialog: Dialog, { start, end }: TrimRange, looping: boolean): TemplateResult {
    const label = dialog.player?.isPlaying ? text.playerPause : text.playerPlay;
    const play = (from: number, until: number) => void dialog.player?.play(from, until, false);
    return html`
        <button @click=${() => dialog.togglePlay()}>${label}</button>
        <button aria-pressed=${looping} @click=${() => dialog.toggleLoop()}>${text.trimLoop}</button>
        <button @click=${() => play(start, Math.min(start + MOMENT, end))}>${text.trimPlayFirst}</button>
        <button @click=${() => play(Math.max(end - MOMENT, start), end)}>${text.trimPlayLast}</button>
    `;
}
