// Writes captions. The gallery announces no change of one, so that the page's tabs notify each other.
import type { Client } from "../api/client.js";
import type { Capture } from "./capture.js";
import type { Gallery } from "./gallery.js";

interface News {
    readonly path: string;
    readonly caption: Capture["caption"];
}

export class Captions {
    /** `tabs` reaches the other tabs of the browser that show the same gallery. */
    constructor(
        private readonly client: Client,
        private readonly gallery: Gallery,
        private readonly tabs: BroadcastChannel,
    ) {
        tabs.onmessage = ({ data }) => this.#note(data as News);
    }

    /** Rejects with the reason when the caption could not be saved. */
    async write(path: string, caption: Capture["caption"]): Promise<void> {
        const memeInfo = { topBarText: caption.top, bottomBarText: caption.bottom };
        await this.client.request("AddMeme", { file: path, memeInfo });
        this.#note({ path, caption });
        this.tabs.postMessage({ path, caption });
    }

    #note({ path, caption }: News): void {
        const known = this.gallery.captures.get(path);
        if (known) this.gallery.put({ ...known, caption });
    }
}
