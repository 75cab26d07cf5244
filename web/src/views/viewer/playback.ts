// How videos are watched.

/** How somebody likes to watch, kept from video to video. */
export interface Playback {
    volume: number;
    muted: boolean;
    speed: number;
    loop: boolean;
    /** Whether the next one begins by itself. */
    begins: boolean;
}

export const SPEEDS = [0.25, 0.5, 1, 1.5, 2];
