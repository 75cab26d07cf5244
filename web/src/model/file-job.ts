// Copies or moves captures, one after the other. Between two files it can be stopped; what is done stays done.
import { isRefusal } from "../api/envelope.js";
import type { Capture } from "./capture.js";
import type { Failure } from "./deletions.js";

/** Resolves after the file is at its destination; rejects with the reason when it is not. */
export type Transfer = (source: string, destination: string) => Promise<unknown>;

export class FileJob {
    state: "running" | "stopped" | "done" = "running";
    /** Captures that were tried. */
    tried = 0;
    current: Capture | undefined;
    failures: readonly Failure[] = [];

    constructor(
        readonly captures: readonly Capture[],
        private readonly folder: string,
        private readonly transfer: Transfer,
        private readonly onChange: () => void,
    ) {}

    get succeeded(): number {
        return this.tried - this.failures.length;
    }

    stop(): void {
        if (this.state === "running") this.state = "stopped";
        this.onChange();
    }

    async run(): Promise<void> {
        for (const capture of this.captures) {
            if (this.state !== "running") break;
            this.current = capture;
            this.onChange();
            await this.#move(capture);
        }
        this.current = undefined;
        if (this.state === "running") this.state = "done";
        this.onChange();
    }

    async #move(capture: Capture): Promise<void> {
        try {
            await this.transfer(capture.path, placeIn(this.folder, capture));
        } catch (error) {
            const { message: reason } = error as Error;
            this.failures = [...this.failures, { capture, reason }];
            // Whoever is asked next does not answer either, or much later.
            if (!isRefusal(error)) this.stop();
        }
        ++this.tried;
    }
}

/** Without slashes at its end. */
export function folderFrom(typed: string): string {
    const folder = typed.trim();
    return folder.length > 1 ? folder.replace(/\/+$/, "") || "/" : folder;
}

function placeIn(folder: string, { fileName }: Capture): string {
    return `${folder === "/" ? "" : folder}/${fileName}`;
}
