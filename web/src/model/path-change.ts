// A change of the gallery's folder that this page has asked for: the gallery looks through the new folder, and until
// that is done it can go back to the old one.
import type { GalleryPathUpdateStatus } from "../api/types.js";
import type { News } from "./feed.js";

const DONE: readonly GalleryPathUpdateStatus[] = ["TrackerUpdateComplete", "CancelUpdateComplete"];

export class PathChange {
    /** Only a change that the page itself began can be canceled: the gallery knows no way back from any other. */
    isRunning = false;
    #listener = (): void => {};

    onChange(listener: () => void): void {
        this.#listener = listener;
    }

    /** Before the gallery is asked: its reports may come before its answer. */
    begin(): void {
        this.#set(true);
    }

    end(): void {
        this.#set(false);
    }

    /** What the gallery reports, or says when it is asked. */
    follow(status: GalleryPathUpdateStatus | undefined): void {
        if (status && DONE.includes(status)) this.end();
    }

    hear({ galleryPathUpdateStatus }: News): void {
        this.follow(galleryPathUpdateStatus?.status);
    }

    #set(running: boolean): void {
        if (this.isRunning === running) return;
        this.isRunning = running;
        this.#listener();
    }
}
