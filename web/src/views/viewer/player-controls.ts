// What a video is controlled with.
import { html, type TemplateResult } from "lit/html.js";
import * as text from "../../strings/en.js";
import { clockText } from "../../strings/formats.js";
import { iconButton, valueOf } from "../fields.js";
import { SPEEDS } from "./playback.js";
import type { VideoPlayer } from "./video-player.js";

/** Times are seconds. */
export interface PlayerState {
    readonly paused: boolean;
    readonly time: number;
    readonly duration: number;
}

const numberOf = (event: Event): number => Number(valueOf(event));

function seekBar(player: VideoPlayer, { time, duration }: PlayerState): TemplateResult {
    const [now, end] = [clockText(time * 1000), clockText(duration * 1000)];
    return html`<div class="seek-row">
        <input
            type="range"
            aria-label=${text.playerSeek}
            aria-valuetext=${text.playerOf(now, end)}
            min="0"
            max=${duration}
            step="any"
            .value=${String(time)}
            @input=${(event: Event) => (player.video.currentTime = numberOf(event))}
        />
        <span class="clock" aria-hidden="true">${now} / ${end}</span>
    </div>`;
}

function speeds(player: VideoPlayer): TemplateResult {
    const option = (speed: number) =>
        html`<option value=${speed} ?selected=${speed === player.playback.speed}>${speed}×</option>`;
    return html`<select
        aria-label=${text.playerSpeed}
        title=${text.playerSpeed}
        @change=${(event: Event) => player.setSpeed(numberOf(event))}
    >
        ${SPEEDS.map(option)}
    </select>`;
}

function volume(player: VideoPlayer): TemplateResult {
    return html`<input
        class="volume"
        type="range"
        aria-label=${text.playerVolume}
        min="0"
        max="1"
        step="0.05"
        .value=${String(player.playback.volume)}
        @input=${(event: Event) => (player.video.volume = numberOf(event))}
    />`;
}

export function playerControls(player: VideoPlayer, state: PlayerState): TemplateResult {
    const { playback } = player;
    const [icon, label] = state.paused ? ["play", text.playerPlay] : ["pause", text.playerPause];
    return html`<div class="controls">
        ${seekBar(player, state)}
        ${iconButton("previous-frame", text.playerBack, () => void player.stepFrame(-1))}
        ${iconButton(icon, label, () => player.togglePlay())}
        ${iconButton("next-frame", text.playerForward, () => void player.stepFrame(1))}
        <span class="space"></span>
        ${iconButton("loop", text.playerLoop, () => player.toggleLoop(), playback.loop)} ${speeds(player)}
        ${iconButton(
            playback.muted ? "muted" : "sound",
            text.playerMute,
            () => player.toggleMuted(),
            playback.muted,
        )}
        ${volume(player)} ${iconButton("fullscreen", text.playerFullscreen, () => player.toggleFullscreen())}
    </div>`;
}
