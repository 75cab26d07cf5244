// The video from left to right: its pictures and keyframes, what is chosen, and the handles that choose it.
import { html, type TemplateResult } from "lit/html.js";
import type { TrimRange } from "../../model/trim-range.js";
import * as text from "../../strings/en.js";
import { clockText } from "../../strings/formats.js";
import { send } from "../context.js";
import { PageElement } from "../page-element.js";
import { drawFilmstrip } from "./filmstrip.js";

export type Handle = "start" | "end" | "position";

export interface Move {
    readonly handle: Handle;
    readonly time: number;
}

// More are no marks but a bar.
const MOST_TICKS = 200;

export class TrimBar extends PageElement {
    address = "";
    range!: TrimRange;
    position = 0;
    #dragged: Handle | null = null;
    readonly #ending = new AbortController();

    override connectedCallback(): void {
        super.connectedCallback();
        this.addEventListener("pointerdown", this.#onDown);
        this.addEventListener("pointermove", this.#onMove);
        for (const end of ["pointerup", "pointercancel"] as const)
            this.addEventListener(end, () => (this.#dragged = null));
    }

    disconnectedCallback(): void {
        this.#ending.abort();
    }

    protected override firstUpdated(): void {
        void drawFilmstrip(this.address, this.querySelector("canvas")!, this.#ending.signal);
    }

    protected override render(): TemplateResult {
        const { range } = this;
        return html`
            <canvas aria-hidden="true"></canvas>
            <div class="ticks" aria-hidden="true">
                ${range
                    .ticks(MOST_TICKS)
                    .map((time) => html`<i .style=${`left:${this.#percent(time)}`}></i>`)}
            </div>
            <div class="cut" aria-hidden="true" .style=${`left:0;width:${this.#percent(range.start)}`}></div>
            <div class="cut" aria-hidden="true" .style=${`left:${this.#percent(range.end)};right:0`}></div>
            ${this.#handle("position", text.trimPosition, this.position)}
            ${this.#handle("start", text.trimStart, range.start)}
            ${this.#handle("end", text.trimEnd, range.end)}
        `;
    }

    #percent(time: number): string {
        return `${(100 * time) / this.range.duration}%`;
    }

    #handle(handle: Handle, label: string, time: number): TemplateResult {
        const [least, most] = this.#ends(handle);
        return html`<div
            role="slider"
            class="handle ${handle}"
            tabindex="0"
            data-handle=${handle}
            aria-label=${label}
            aria-valuemin=${Math.round(least)}
            aria-valuemax=${Math.round(most)}
            aria-valuenow=${Math.round(time)}
            aria-valuetext=${clockText(time)}
            .style=${`left:${this.#percent(time)}`}
            @keydown=${(event: KeyboardEvent) => this.#onKey(event, handle, time)}
        ></div>`;
    }

    #ends(handle: Handle): [least: number, most: number] {
        const { start, end, frame, duration } = this.range;
        if (handle === "start") return [0, end - frame];
        return handle === "end" ? [start + frame, duration] : [0, duration];
    }

    #onKey(event: KeyboardEvent, handle: Handle, time: number): void {
        if (event.ctrlKey || event.metaKey) return;
        const target = this.range.keyTarget(time, event, ...this.#ends(handle));
        if (target === null) return;
        event.preventDefault();
        event.stopPropagation();
        this.#move(handle, target);
    }

    readonly #onDown = (event: PointerEvent): void => {
        if (event.button !== 0) return;
        const slider = (event.target as Element).closest<HTMLElement>("[data-handle]");
        this.#dragged = (slider?.dataset["handle"] as Handle | undefined) ?? "position";
        this.setPointerCapture(event.pointerId);
        slider?.focus();
        event.preventDefault();
        if (!slider) this.#drag(event);
    };

    readonly #onMove = (event: PointerEvent): void => {
        if (this.#dragged) this.#drag(event);
    };

    #drag({ clientX }: PointerEvent): void {
        const { left, width } = this.getBoundingClientRect();
        const part = Math.min(Math.max((clientX - left) / width, 0), 1);
        if (this.#dragged) this.#move(this.#dragged, part * this.range.duration);
    }

    #move(handle: Handle, time: number): void {
        send<Move>(this, "trim-move", { handle, time });
    }
}

customElements.define("trim-bar", TrimBar);
