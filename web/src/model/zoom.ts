// How far a picture is zoomed, and which part of it is seen. Lengths are CSS pixels; points count from the middle
// of the view.

export interface Size {
    readonly width: number;
    readonly height: number;
}

export interface Point {
    readonly x: number;
    readonly y: number;
}

/** The middle of the picture lies at x, y; at scale 1 the whole picture fits the view. */
export interface Zoom extends Point {
    readonly scale: number;
}

export const WHOLE: Zoom = { scale: 1, x: 0, y: 0 };

/** The size at which all of a picture is seen. Small ones are not made larger than they are. */
export function fitted(picture: Size, view: Size): Size {
    const scale = Math.min(view.width / picture.width, view.height / picture.height, 1);
    return { width: picture.width * scale, height: picture.height * scale };
}

export class Zooming {
    constructor(
        private readonly fit: Size,
        private readonly view: Size,
        /** Pixels of the screen for one of the picture, when it is whole. */
        private readonly reduction: number,
    ) {}

    /** One pixel of the picture is one of the page, or the double size where that is no more than the whole. */
    get natural(): number {
        return Math.max(this.reduction, 2);
    }

    get #most(): number {
        return 4 * this.natural;
    }

    /** Zooms by a factor; what lies at the point stays there. */
    by(factor: number, { scale, x, y }: Zoom, at: Point): Zoom {
        const next = Math.min(Math.max(scale * factor, 1), this.#most);
        const change = next / scale;
        return this.#within({ scale: next, x: at.x + (x - at.x) * change, y: at.y + (y - at.y) * change });
    }

    pan({ scale, x, y }: Zoom, by: Point): Zoom {
        return this.#within({ scale, x: x + by.x, y: y + by.y });
    }

    // No side of the picture comes further in than the view's; what is smaller than the view stays in the middle.
    #within({ scale, x, y }: Zoom): Zoom {
        const room = (fit: number, view: number) => Math.max(0, (fit * scale - view) / 2);
        const bounded = (value: number, most: number) => Math.min(Math.max(value, -most), most);
        return {
            scale,
            x: bounded(x, room(this.fit.width, this.view.width)),
            y: bounded(y, room(this.fit.height, this.view.height)),
        };
    }
}
