// A video with controls of the page's own.
import { html, type PropertyValues, type TemplateResult } from "lit";
import type { Capture } from "../../model/capture.js";
import { lengthText, text } from "../../strings/index.js";
import { send } from "../context.js";
import { fetchKeyframes, mediaAddress } from "../media.js";
import { PageElement } from "../page-element.js";

const SPEEDS = [0.25, 0.5, 1, 1.5, 2];
const SEEK_SECONDS = 10;
// Where the video's own is not known: short enough for the usual ones.
const FRAME_MS = 1000 / 60;

export class VideoStage extends PageElement {
    static override properties = { capture: { attribute: false } };

    capture!: Capture;
    // Kept from one video to the next.
    private volume = 1;
    private muted = false;
    private speed = 1;
    private loop = false;
    private frameMs = FRAME_MS;

    /** True when the key was one of a player. */
    onKey({ key, shiftKey }: KeyboardEvent): boolean {
        const keys: Record<string, () => void> = {
            " ": () => this.toggle(),
            k: () => this.toggle(),
            j: () => this.seekBy(-SEEK_SECONDS),
            l: () => this.seekBy(SEEK_SECONDS),
            ",": () => this.step(-1),
            ".": () => this.step(1),
            m: () => this.change({ muted: !this.muted }),
            f: () => this.toggleFullscreen(),
            ...(shiftKey && {
                ArrowLeft: () => this.seekBy(-SEEK_SECONDS),
                ArrowRight: () => this.seekBy(SEEK_SECONDS),
            }),
        };
        const run = keys[key.length === 1 ? key.toLowerCase() : key];
        run?.();
        return run !== undefined;
    }

    protected override updated(changed: PropertyValues): void {
        const { video } = this;
        video.volume = this.volume;
        video.muted = this.muted;
        video.playbackRate = this.speed;
        video.loop = this.loop;
        if (changed.has("capture")) void this.start();
    }

    private async start(): Promise<void> {
        const { capture } = this;
        void this.video.play().catch(() => {});
        const known = await fetchKeyframes(capture);
        if (capture === this.capture) this.frameMs = known?.frameMs || FRAME_MS;
    }

    protected override render(): TemplateResult {
        const refresh = () => this.requestUpdate();
        return html`<video
                src=${mediaAddress(this.capture)}
                preload="metadata"
                playsinline
                aria-label=${this.capture.title}
                @click=${this.toggle}
                @dblclick=${this.toggleFullscreen}
                @play=${refresh}
                @pause=${refresh}
                @timeupdate=${refresh}
                @durationchange=${refresh}
                @loadeddata=${() => send(this, "stage-ready")}
                @error=${() => send(this, "stage-failed")}
            ></video>
            <div class="controls">${this.transport()} ${this.sound()} ${this.options()}</div>`;
    }

    private get video(): HTMLVideoElement {
        return this.querySelector("video")!;
    }

    private get seconds(): number {
        const { duration } = this.hasUpdated ? this.video : { duration: NaN };
        return Number.isFinite(duration) ? duration : this.capture.durationMs / 1000;
    }

    private transport(): TemplateResult {
        const now = this.hasUpdated ? this.video.currentTime : 0;
        const paused = !this.hasUpdated || this.video.paused;
        const shown = `${lengthText(now * 1000)} / ${lengthText(this.seconds * 1000)}`;
        const label = paused ? text.play : text.pause;
        const seek = (event: Event) =>
            (this.video.currentTime = Number((event.target as HTMLInputElement).value));
        return html`<button
                class="icon ${paused ? "play" : "pause"}"
                aria-label=${label}
                title=${label}
                @click=${this.toggle}
            ></button>
            <input
                type="range"
                class="seek"
                aria-label=${text.position}
                aria-valuetext=${shown}
                min="0"
                max=${this.seconds}
                step="0.01"
                .value=${String(now)}
                @input=${seek}
            />
            <span class="time">${shown}</span>`;
    }

    private sound(): TemplateResult {
        const setVolume = (event: Event) =>
            this.change({ volume: Number((event.target as HTMLInputElement).value), muted: false });
        return html`<button
                class="icon sound"
                aria-label=${text.mute}
                title=${text.mute}
                aria-pressed=${this.muted}
                @click=${() => this.change({ muted: !this.muted })}
            ></button>
            <input
                type="range"
                class="volume"
                aria-label=${text.volume}
                min="0"
                max="1"
                step="0.05"
                .value=${String(this.muted ? 0 : this.volume)}
                @input=${setVolume}
            />`;
    }

    private options(): TemplateResult {
        const setSpeed = (event: Event) =>
            this.change({ speed: Number((event.target as HTMLSelectElement).value) });
        return html`<select aria-label=${text.speed} @change=${setSpeed}>
                ${SPEEDS.map(
                    (one) => html`<option value=${one} ?selected=${one === this.speed}>${one}×</option>`,
                )}
            </select>
            <button
                class="icon loop"
                aria-label=${text.loop}
                title=${text.loop}
                aria-pressed=${this.loop}
                @click=${() => this.change({ loop: !this.loop })}
            ></button>
            <button
                class="icon fullscreen"
                aria-label=${text.fullscreen}
                title=${text.fullscreen}
                @click=${this.toggleFullscreen}
            ></button>`;
    }

    private change(changes: Partial<{ volume: number; muted: boolean; speed: number; loop: boolean }>): void {
        Object.assign(this, changes);
        this.requestUpdate();
    }

    private seekBy(seconds: number): void {
        this.video.currentTime = Math.min(this.seconds, Math.max(0, this.video.currentTime + seconds));
    }

    private step(frames: number): void {
        this.video.pause();
        this.seekBy((frames * this.frameMs) / 1000);
    }

    private readonly toggle = (): void => {
        if (this.video.paused) void this.video.play().catch(() => {});
        else this.video.pause();
    };

    private readonly toggleFullscreen = (): void => {
        if (document.fullscreenElement) void document.exitFullscreen();
        else void this.requestFullscreen().catch(() => {});
    };
}

customElements.define("video-stage", VideoStage);
