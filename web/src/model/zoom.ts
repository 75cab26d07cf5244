// How a picture is magnified and moved within its frame. Sizes are CSS pixels.

export interface Size {
    readonly width: number;
    readonly height: number;
}

/** At scale 1 the picture fits the frame; the offset moves its middle from the frame's. */
export interface Zoom {
    readonly scale: number;
    readonly x: number;
    readonly y: number;
}

export const FIT: Zoom = { scale: 1, x: 0, y: 0 };

// Pixels of the picture as large as a finger tip.
const MOST_PER_PIXEL = 16;

/** The size of the picture where it fits the frame, never magnified. */
export function fitted(picture: Size, frame: Size): Size {
    const scale = Math.min(1, frame.width / picture.width, frame.height / picture.height);
    return { width: picture.width * scale, height: picture.height * scale };
}

/** The scale at which one pixel of the picture is one of the page. */
export function fullScale(picture: Size, frame: Size): number {
    return picture.width / fitted(picture, frame).width;
}

// No further than to the picture's edge; a picture smaller than the frame stays in its middle.
function within(zoom: Zoom, picture: Size, frame: Size): Zoom {
    const fit = fitted(picture, frame);
    const limit = (offset: number, size: number, room: number) => {
        const most = (size * zoom.scale - room) / 2;
        return most > 0 ? Math.min(most, Math.max(-most, offset)) : 0;
    };
    return {
        scale: zoom.scale,
        x: limit(zoom.x, fit.width, frame.width),
        y: limit(zoom.y, fit.height, frame.height),
    };
}

/** Magnifies to a scale around a point, given from the middle of the frame, which stays where it is. */
export function zoomTo(
    zoom: Zoom,
    scale: number,
    at: { x: number; y: number },
    picture: Size,
    frame: Size,
): Zoom {
    const most = MOST_PER_PIXEL * fullScale(picture, frame);
    const next = Math.min(most, Math.max(1, scale));
    const factor = next / zoom.scale;
    const moved = { scale: next, x: at.x - (at.x - zoom.x) * factor, y: at.y - (at.y - zoom.y) * factor };
    return within(moved, picture, frame);
}

export function pan(zoom: Zoom, dx: number, dy: number, picture: Size, frame: Size): Zoom {
    return within({ scale: zoom.scale, x: zoom.x + dx, y: zoom.y + dy }, picture, frame);
}
