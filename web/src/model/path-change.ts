// A change of the gallery's folder that this page has asked for: the gallery looks through the new folder, and until
// that is done it can go back to the old one.
import type { News } from "./feed.js";

export class PathChange {
    /** Only a change that the page itself began can be canceled: the gallery knows no way back from any other. */
    isRunning = false;
    private listener = (): void => {};

    onChange(listener: () => void): void {
        this.listener = listener;
    }

    begin(): void {
        this.set(true);
    }

    end(): void {
        this.set(false);
    }

    hear({ galleryPathUpdateStatus }: News): void {
        const status = galleryPathUpdateStatus?.status;
        if (status === "TrackerUpdateComplete" || status === "CancelUpdateComplete") this.end();
    }

    private set(running: boolean): void {
        if (this.isRunning === running) return;
        this.isRunning = running;
        this.listener();
    }
}
