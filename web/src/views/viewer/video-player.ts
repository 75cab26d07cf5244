// A video with its controls.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../../model/capture.js";
import { send } from "../context.js";
import { framesOf } from "../keyframes.js";
import { mediaAddress, unload } from "../media.js";
import { PageElement } from "../page-element.js";
import { captionOverlay } from "./caption-overlay.js";
import { SPEEDS, type Playback } from "./playback.js";
import { playerControls } from "./player-controls.js";

const LONG_SEEK = 10;
const SHORT_SEEK = 5;

type Action = (player: VideoPlayer) => void;

const KEYS: Record<string, Action> = {
    " ": (player) => player.togglePlay(),
    k: (player) => player.togglePlay(),
    m: (player) => player.toggleMuted(),
    f: (player) => player.toggleFullscreen(),
    r: (player) => player.toggleLoop(),
    j: (player) => player.seekBy(-LONG_SEEK),
    l: (player) => player.seekBy(LONG_SEEK),
    ",": (player) => void player.stepFrame(-1),
    ".": (player) => void player.stepFrame(1),
    "<": (player) => player.changeSpeed(-1),
    ">": (player) => player.changeSpeed(1),
};
const WITH_SHIFT: Record<string, Action> = {
    ArrowLeft: (player) => player.seekBy(-SHORT_SEEK),
    ArrowRight: (player) => player.seekBy(SHORT_SEEK),
};

export class VideoPlayer extends PageElement {
    capture!: Capture;
    playback!: Playback;
    /** The address of a smaller picture; empty for none. */
    preview = "";
    /** How often it was tried before. */
    attempt = 0;
    readonly #resize = new ResizeObserver(() => this.requestUpdate());

    disconnectedCallback(): void {
        this.#resize.disconnect();
        unload(this.video);
    }

    get video(): HTMLVideoElement {
        return this.querySelector("video")!;
    }

    /** True when the key was one of its own. */
    handleKey(event: KeyboardEvent): boolean {
        const action = (event.shiftKey && WITH_SHIFT[event.key]) || KEYS[event.key.toLowerCase()];
        action?.(this);
        return action !== undefined;
    }

    togglePlay(): void {
        if (this.video.paused) void this.#play();
        else this.video.pause();
    }

    toggleMuted(): void {
        this.video.muted = !this.video.muted;
    }

    toggleLoop(): void {
        this.video.loop = this.playback.loop = !this.playback.loop;
        this.requestUpdate();
    }

    // Not of this element: the next capture is shown in the same place.
    toggleFullscreen(): void {
        if (document.fullscreenElement) void document.exitFullscreen();
        else
            this.parentElement!.requestFullscreen().catch((error: Error) =>
                send(this, "report-failure", error.message),
            );
    }

    seekBy(seconds: number): void {
        this.video.currentTime = Math.min(Math.max(0, this.video.currentTime + seconds), this.#duration);
    }

    changeSpeed(by: 1 | -1): void {
        const next = SPEEDS[SPEEDS.indexOf(this.playback.speed) + by];
        if (next !== undefined) this.setSpeed(next);
    }

    async stepFrame(by: 1 | -1): Promise<void> {
        const { video, capture } = this;
        video.pause();
        const frame = (await framesOf(capture)).frame / 1000;
        // To the middle of a frame, which no rounding makes another one.
        const shown = Math.floor(video.currentTime / frame + 1e-3);
        video.currentTime = Math.min(Math.max(0, (shown + by + 0.5) * frame), this.#duration);
    }

    protected override firstUpdated(): void {
        const { video, playback } = this;
        this.#resize.observe(this.querySelector(".video-area")!);
        Object.assign(video, { volume: playback.volume, muted: playback.muted, loop: playback.loop });
        video.defaultPlaybackRate = playback.speed;
        const events = ["timeupdate", "seeked", "play", "pause", "durationchange", "volumechange", "ended"];
        for (const event of events) video.addEventListener(event, () => this.requestUpdate());
        video.addEventListener("volumechange", () => {
            Object.assign(playback, { volume: video.volume, muted: video.muted });
        });
        video.addEventListener("loadeddata", () => this.#onLoaded());
        video.addEventListener("error", () => send(this, "media-failed", this.capture));
        if (video.canPlayType("video/mp4") === "")
            queueMicrotask(() => send(this, "media-failed", this.capture));
        video.src = mediaAddress(this.capture, this.attempt);
        if (playback.begins && !matchMedia("(prefers-reduced-motion: reduce)").matches) void this.#play();
    }

    protected override render(): TemplateResult {
        const { caption } = this.capture;
        const video = this.querySelector("video");
        return html`
            <div class="video-area">
                <div class="frame" .style=${this.#frameStyle()} @click=${() => this.togglePlay()}>
                    <video playsinline poster=${this.preview || nothing}></video>
                    ${captionOverlay(caption.top, caption.bottom)}
                </div>
            </div>
            ${playerControls(this, {
                paused: video?.paused ?? true,
                time: video?.currentTime ?? 0,
                duration: this.#duration,
            })}
        `;
    }

    get #duration(): number {
        const { duration } = this.querySelector("video") ?? {};
        return duration !== undefined && Number.isFinite(duration)
            ? duration
            : this.capture.durationMs / 1000;
    }

    async #play(): Promise<void> {
        try {
            await this.video.play();
        } catch {
            // The browser does not let it, or it was paused before it began; the button says so.
        }
    }

    #onLoaded(): void {
        // Sound alone: the pictures are of a kind that the browser does not know.
        if (this.video.videoWidth === 0) return send(this, "media-failed", this.capture);
        this.requestUpdate();
        send(this, "media-shown");
    }

    setSpeed(speed: number): void {
        this.playback.speed = speed;
        this.video.defaultPlaybackRate = this.video.playbackRate = speed;
        this.requestUpdate();
    }

    #frameStyle(): string {
        const { videoWidth: width = 0, videoHeight: height = 0 } = this.querySelector("video") ?? {};
        if (width === 0) return "";
        const { clientWidth, clientHeight } = this.querySelector(".video-area")!;
        const view = { width: clientWidth, height: clientHeight };
        // Small videos are shown as large as the others.
        const scale = Math.min(view.width / width, view.height / height);
        const fit = { width: width * scale, height: height * scale };
        return `width:${fit.width}px;height:${fit.height}px`;
    }
}

customElements.define("video-player", VideoPlayer);
