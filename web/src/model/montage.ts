// A montage: one video of several captures, made by the gallery while the page shows how far it is.
import type { Client } from "../api/client.js";
import type { MontageInput, Requests, Storyboard } from "../api/types.js";
import type { Capture } from "./capture.js";

export interface MontageForm {
    /** The name of a script among the gallery's recipes. */
    readonly recipe: string;
    /** The file that is to be made. */
    readonly output: string;
    readonly title: string;
    /** Ids out of the gallery's configuration of montages; empty for none. */
    readonly celebration: string;
    readonly transition: string;
    readonly filter: string;
}

type Request = Requests["CreateMontageFromRecipe"]["parameters"];

/** Those that a montage can be made of, in the order in which they were captured. */
export function montageCaptures(captures: readonly Capture[]): Capture[] {
    return captures.filter(({ kind }) => kind !== "other").sort((a, b) => a.time - b.time);
}

export function montageRequest(captures: readonly Capture[], form: MontageForm): Request {
    const { recipe, output, title, celebration, transition, filter } = form;
    const inputs = captures.map(
        ({ path, durationMs, kind }): MontageInput => ({
            details: {
                path,
                duration: durationMs,
                ...(filter && { filter }),
                ...(transition && { transition: { kind: transition } }),
            },
            inputFileType: kind === "video" ? "video" : "image",
        }),
    );
    const storyboard: Storyboard = {
        ...(title.trim() && {
            titleSequence: { seqType: "titleBasic", seqDetails: { txtTitle: title.trim() } },
        }),
        ...(celebration && { celebration }),
    };
    const hasStoryboard = Object.keys(storyboard).length > 0;
    return { inputs, recipe: recipe.trim(), output: output.trim(), ...(hasStoryboard && { storyboard }) };
}

export class MontageJob {
    state: "running" | "canceling" | "canceled" | "made" | "failed" = "running";
    /** Percent; null until the first report. */
    progress: number | null = null;
    failure = "";
    #listener = (): void => {};

    constructor(
        private readonly client: Client,
        readonly request: Request,
    ) {}

    get isOver(): boolean {
        return this.state !== "running" && this.state !== "canceling";
    }

    onChange(listener: () => void): void {
        this.#listener = listener;
    }

    async run(): Promise<void> {
        const end = this.client.follow("MontageNotification", ({ progress = null }) =>
            this.#report(progress),
        );
        try {
            await this.client.request("CreateMontageFromRecipe", this.request);
            // A montage that was canceled is answered as if it had been made.
            this.#end(this.state === "canceling" ? "canceled" : "made");
        } catch (error) {
            this.failure = (error as Error).message;
            this.#end("failed");
        }
        end();
    }

    async cancel(): Promise<void> {
        if (this.state !== "running") return;
        this.state = "canceling";
        this.#listener();
        await this.client.request("CancelMontage", {}).catch((error: Error) => {
            this.failure = error.message;
            if (!this.isOver) this.state = "running";
            this.#listener();
        });
    }

    #report(progress: number | null): void {
        this.progress = progress;
        this.#listener();
    }

    #end(state: MontageJob["state"]): void {
        this.state = state;
        this.#listener();
    }
}
