// Small pictures of a video from its beginning to its end, drawn side by side on a canvas.
import { unload } from "../media.js";

const MOST_PICTURES = 24;
const HEIGHT = 72;

function once(video: HTMLVideoElement, event: string, signal: AbortSignal): Promise<void> {
    return new Promise((resolve, reject) => {
        video.addEventListener(event, () => resolve(), { once: true, signal });
        video.addEventListener("error", () => reject(video.error), { once: true, signal });
        signal.addEventListener("abort", () => reject(signal.reason), { once: true });
    });
}

async function paint(video: HTMLVideoElement, canvas: HTMLCanvasElement, signal: AbortSignal): Promise<void> {
    const loaded = once(video, "loadeddata", signal);
    video.load();
    await loaded;
    const width = Math.round((HEIGHT * video.videoWidth) / video.videoHeight);
    const count = Math.min(Math.max(1, Math.ceil(canvas.clientWidth / width)), MOST_PICTURES);
    canvas.width = width * count;
    canvas.height = HEIGHT;
    const context = canvas.getContext("2d");
    for (let picture = 0; picture < count; ++picture) {
        const sought = once(video, "seeked", signal);
        video.currentTime = ((picture + 0.5) * video.duration) / count;
        await sought;
        context?.drawImage(video, picture * width, 0, width, HEIGHT);
    }
}

/** Resolves when all is drawn, or cannot be. */
export async function drawFilmstrip(
    address: string,
    canvas: HTMLCanvasElement,
    signal: AbortSignal,
): Promise<void> {
    // Outside the page, so that nobody sees or hears it.
    const video = document.createElement("video");
    video.muted = true;
    video.preload = "auto";
    video.src = address;
    try {
        await paint(video, canvas, signal);
    } catch {
        // A video that the browser does not show is cut without pictures.
    } finally {
        unload(video);
    }
}
