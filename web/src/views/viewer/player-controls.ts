// What a video is controlled with.
import { html, nothing, type TemplateResult } from "lit/html.js";
import { clockText, text } from "../../strings/index.js";
import { SPEEDS } from "./playback.js";
import type { VideoPlayer } from "./video-player.js";

/** Times are seconds. */
export interface PlayerState {
    readonly paused: boolean;
    readonly time: number;
    readonly duration: number;
}

const valueOf = (event: Event): number => Number((event.target as HTMLInputElement).value);

function button(icon: string, label: string, run: () => void, pressed?: boolean): TemplateResult {
    return html`<button
        class="icon ${icon}"
        aria-label=${label}
        title=${label}
        aria-pressed=${pressed ?? nothing}
        @click=${run}
    ></button>`;
}

function seekBar(player: VideoPlayer, { time, duration }: PlayerState): TemplateResult {
    const [now, end] = [clockText(time * 1000), clockText(duration * 1000)];
    return html`<div class="seek-row">
        <input
            type="range"
            aria-label=${text.player.seek}
            aria-valuetext=${text.player.of(now, end)}
            min="0"
            max=${duration}
            step="any"
            .value=${String(time)}
            @input=${(event: Event) => (player.video.currentTime = valueOf(event))}
        />
        <span class="clock" aria-hidden="true">${now} / ${end}</span>
    </div>`;
}

function speeds(player: VideoPlayer): TemplateResult {
    const option = (speed: number) =>
        html`<option value=${speed} ?selected=${speed === player.playback.speed}>${speed}×</option>`;
    return html`<select
        aria-label=${text.player.speed}
        title=${text.player.speed}
        @change=${(event: Event) => player.setSpeed(valueOf(event))}
    >
        ${SPEEDS.map(option)}
    </select>`;
}

function volume(player: VideoPlayer): TemplateResult {
    return html`<input
        class="volume"
        type="range"
        aria-label=${text.player.volume}
        min="0"
        max="1"
        step="0.05"
        .value=${String(player.playback.volume)}
        @input=${(event: Event) => (player.video.volume = valueOf(event))}
    />`;
}

export function playerControls(player: VideoPlayer, state: PlayerState): TemplateResult {
    const { playback } = player;
    const names = text.player;
    const [icon, label] = state.paused ? ["play", names.play] : ["pause", names.pause];
    return html`<div class="controls">
        ${seekBar(player, state)} ${button("previous-frame", names.back, () => void player.stepFrame(-1))}
        ${button(icon, label, () => player.togglePlay())}
        ${button("next-frame", names.forward, () => void player.stepFrame(1))}
        <span class="space"></span>
        ${button("loop", names.loop, () => player.toggleLoop(), playback.loop)} ${speeds(player)}
        ${button(playback.muted ? "muted" : "sound", names.mute, () => player.toggleMuted(), playback.muted)}
        ${volume(player)} ${button("fullscreen", names.fullscreen, () => player.toggleFullscreen())}
    </div>`;
}
