// Gets one thumbnail: from the server's route, which the browser caches, or as a text from the gallery itself.
import type { Client } from "../api/client.js";
import { ApiError, CANCELED } from "../api/envelope.js";
import type { Capture } from "../model/capture.js";
import type { Found, Load, Loader } from "../model/thumbnails.js";
import { thumbnailAddress, THUMBNAIL } from "./media.js";

// What the page keeps for a picture that is in the browser's own cache: about its address.
const ADDRESS_BYTES = 200;

// An image outside the page, because the request of one inside it goes on after the image was taken out.
function fromRoute(capture: Capture): Load {
    const image = new Image();
    const source = thumbnailAddress(capture);
    let settle: (found: Found | null | undefined) => void;
    const done = new Promise<Found | null | undefined>((resolve) => (settle = resolve));
    image.onload = () => settle({ source, bytes: ADDRESS_BYTES });
    image.onerror = () => settle(null);
    image.src = source;
    return {
        done,
        cancel() {
            image.onload = image.onerror = null;
            image.src = "";
            // Browsers end the request later, when they have nothing more urgent to do.
            requestIdleCallback(() => settle(undefined), { timeout: 200 });
        },
    };
}

async function ask(client: Client, { path }: Capture): Promise<Found | null> {
    try {
        const { thumbnail } = await client.request("GetThumbnail", { file: path, ...THUMBNAIL });
        return thumbnail ? { source: thumbnail, bytes: thumbnail.length } : null;
    } catch (error) {
        // A refusal is about the file, the end of the channel is not.
        if (error instanceof ApiError && error.code !== CANCELED) return null;
        throw error;
    }
}

// A request that was sent cannot be called back.
function fromGallery(client: Client, capture: Capture): Load {
    return { done: ask(client, capture), cancel: () => {} };
}

export function loaderFor(client: Client): Loader {
    return (capture) => (capture.handle ? fromRoute(capture) : fromGallery(client, capture));
}
