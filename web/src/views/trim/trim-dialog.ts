// Chooses a part of a video and has it saved as a clip.
import { html, nothing, type TemplateResult } from "lit/html.js";
import type { Capture } from "../../model/capture.js";
import { TrimRange } from "../../model/trim-range.js";
import * as text from "../../strings/en.js";
import { clockText } from "../../strings/formats.js";
import { isForControl } from "../control-keys.js";
import { send, type Context } from "../context.js";
import { framesOf } from "../keyframes.js";
import { mediaAddress, thumbnailAddress, unload } from "../media.js";
import { PageDialog } from "../page-dialog.js";
import type { PageElement } from "../page-element.js";
import { playButtons } from "./play-buttons.js";
import { freeClipPath, saveClip } from "./save-clip.js";
import { SelectionPlayer } from "./selection-player.js";
import { trimActions, type TrimState } from "./trim-actions.js";
import "./trim-bar.js";
import type { Handle, Move } from "./trim-bar.js";
import { startHint, trimFields, type Field } from "./trim-fields.js";

const SHUTTLE = 1000;

type Action = (dialog: TrimDialog) => void;

const KEYS: Record<string, Action> = {
    " ": (dialog) => dialog.togglePlay(),
    i: (dialog) => dialog.setHere("start"),
    o: (dialog) => dialog.setHere("end"),
    j: (dialog) => dialog.move("position", dialog.position - SHUTTLE),
    k: (dialog) => dialog.player.pause(),
    l: (dialog) => dialog.player.faster(),
    r: (dialog) => dialog.toggleLoop(),
};

export class TrimDialog extends PageDialog {
    context!: Context;
    capture!: Capture;
    player!: SelectionPlayer;
    position = 0;
    protected readonly heading = text.trimTitle;
    #range: TrimRange | null = null;
    #looping = false;
    #message = "";
    #copyPath = "";
    #state: TrimState = { step: "choosing" };

    override connectedCallback(): void {
        super.connectedCallback();
        // What is cut is this file, even when another takes its path meanwhile.
        const { capture } = this;
        void framesOf(capture).then(({ frame, keyframes }) => {
            this.#range = new TrimRange(capture.durationMs, frame, keyframes);
            this.requestUpdate();
            void this.updateComplete.then(() =>
                this.querySelector<HTMLElement>("[data-handle=start]")?.focus(),
            );
        });
        this.#findCopyPath().catch((error: Error) => this.#fail(error));
        this.addEventListener("trim-move", (event) => {
            const { handle, time } = (event as CustomEvent<Move>).detail;
            this.move(handle, time);
        });
    }

    disconnectedCallback(): void {
        unload(this.querySelector("video"));
    }

    togglePlay(): void {
        if (this.player.isPlaying) this.player.pause();
        else if (this.#looping) this.#playSelection();
        else void this.player.resume();
    }

    toggleLoop(): void {
        this.#looping = !this.#looping;
        if (this.#looping) this.#playSelection();
        else this.player.playOn();
        this.requestUpdate();
    }

    /** The frame that is shown becomes the first, or the last one. */
    setHere(handle: "start" | "end"): void {
        const range = this.#range;
        if (!range) return;
        const frame = range.frameAt(this.position);
        this.#set(handle, handle === "start" ? frame : frame + range.frame);
    }

    /** Moves a handle, and shows the frame that it is at. */
    move(handle: Handle, time: number): void {
        const range = this.#range;
        if (!range) return;
        if (handle !== "position") this.#set(handle, time);
        const frame = { start: range.start, end: range.end - range.frame, position: range.frameAt(time) };
        // Its middle, which no rounding makes another one.
        const shown = Math.min(Math.max(frame[handle], 0) + range.frame / 2, range.duration);
        if (!this.#looping || handle === "position") this.player.seek(shown);
    }

    protected override firstUpdated(): void {
        const video = this.querySelector("video")!;
        this.player = new SelectionPlayer(video, (time) => {
            this.position = time;
            this.requestUpdate();
        });
        for (const event of ["play", "pause"]) video.addEventListener(event, () => this.requestUpdate());
        super.firstUpdated();
    }

    protected override updated(): void {
        super.updated();
        const bar = this.querySelector("trim-bar") as PageElement | null;
        bar?.requestUpdate();
    }

    protected content(): TemplateResult {
        const { capture } = this;
        const range = this.#range;
        const poster = capture.handle ? thumbnailAddress(capture) : nothing;
        return html`<p><bdi>${capture.title}</bdi></p>
            <video playsinline src=${mediaAddress(capture)} poster=${poster}></video>
            ${range ? this.#controls(range) : html`<progress aria-label=${text.trimTitle}></progress>`}`;
    }

    #controls(range: TrimRange): TemplateResult {
        return html`
            <trim-bar
                .address=${mediaAddress(this.capture)}
                .range=${range}
                .position=${this.position}
            ></trim-bar>
            <p class="clock">${clockText(range.frameAt(this.position))} / ${clockText(range.duration)}</p>
            <div class="trim-row">${playButtons(this, range, this.#looping)}</div>
            <div class="trim-row">${trimFields(range, (field, time) => this.#write(field, time))}</div>
            <p>${startHint(range)}</p>
            <p class="error" role="status">${this.#message}</p>
            ${this.#actions(range)}
        `;
    }

    #actions(range: TrimRange): TemplateResult {
        return trimActions(this.#state, {
            isWhole: range.isWhole,
            copyName: this.#copyPath.slice(this.#copyPath.lastIndexOf("/") + 1),
            cancel: () => this.close(),
            saveCopy: () => void this.#saveCopy(),
            askToReplace: () => this.#go({ step: "confirming" }),
            replace: () => void this.#save(this.capture.path),
            keep: () => this.#go({ step: "choosing" }),
        });
    }

    protected override onKey(event: KeyboardEvent): void {
        super.onKey(event);
        if (event.ctrlKey || event.metaKey || isForControl(event)) return;
        const run = event.altKey ? undefined : KEYS[event.key.toLowerCase()];
        const range = this.#range;
        const time = run ? null : range?.keyTarget(range.frameAt(this.position), event, 0, range.duration);
        if (run) run(this);
        else if (typeof time === "number") this.move("position", time);
        else return;
        event.preventDefault();
    }

    #playSelection(): void {
        const range = this.#range;
        if (range) void this.player.play(range.start, range.end, true);
    }

    #write(field: Field, time: number | null): void {
        this.#message = time === null ? text.trimUnreadable : "";
        if (time === null || !this.#range) return this.requestUpdate();
        if (field !== "length") return this.move(field, time);
        this.#range.setLength(time);
        this.move("end", this.#range.end);
    }

    #set(handle: "start" | "end", time: number): void {
        const range = this.#range;
        if (!range) return;
        if (handle === "start") range.setStart(time);
        else range.setEnd(time);
        this.player.change(range.start, range.end);
        this.requestUpdate();
    }

    #go(state: TrimState): void {
        this.#state = state;
        this.requestUpdate();
    }

    #fail(error: Error): void {
        this.#go({ step: "choosing", failure: error.message });
    }

    async #findCopyPath(): Promise<void> {
        this.#copyPath = await freeClipPath(this.context, this.capture);
        this.requestUpdate();
    }

    async #saveCopy(): Promise<void> {
        this.#go({ step: "cutting" });
        try {
            // Something may have taken the name since.
            await this.#findCopyPath();
        } catch (error) {
            return this.#fail(error as Error);
        }
        await this.#save(this.#copyPath);
    }

    async #save(output: string): Promise<void> {
        const { capture } = this;
        const range = this.#range;
        if (!range) return;
        const replaced = output === capture.path ? capture : null;
        this.player.pause();
        this.#looping = false;
        this.#go({ step: "cutting" });
        // While the clip takes its place, the original is gone for a moment.
        if (replaced) send(this, "hold-capture", capture.path);
        try {
            await saveClip(this.context, capture, output, range);
            // Whoever has closed the dialog meanwhile looks at something else.
            const show = this.isConnected;
            this.close();
            send(this, "clip-cut", { path: output, replaced, show });
        } catch (error) {
            if (this.isConnected) this.#fail(error as Error);
            else send(this, "report-failure", (error as Error).message);
        } finally {
            send(this, "hold-capture", null);
        }
    }
}

customElements.define("trim-dialog", TrimDialog);
