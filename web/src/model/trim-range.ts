// The part of a video that a clip is cut from. All times are milliseconds; the end is the first moment that is
// not in the clip.

const USUAL_FRAME = 1000 / 30;
// Times are known to a hundredth of a millisecond, which adds up to seconds over an hour of frames.
const PRECISION = 0.006;
const NTSC = 1000 / 1001;

interface Key {
    readonly key: string;
    readonly altKey: boolean;
}

const FRAMES: Record<string, number> = {
    ArrowLeft: -1,
    ArrowDown: -1,
    ArrowRight: 1,
    ArrowUp: 1,
    PageDown: -10,
    PageUp: 10,
};

/** The length of a frame, from one that was rounded; of the usual length when it is not known. */
export function exactFrame(rounded: number): number {
    if (!(rounded > 0)) return USUAL_FRAME;
    const rate = 1000 / rounded;
    const rates = [Math.round(rate), Math.round(rate / NTSC) * NTSC];
    return rates.map((one) => 1000 / one).find((one) => Math.abs(one - rounded) < PRECISION) ?? rounded;
}

export class TrimRange {
    start = 0;
    end: number;

    constructor(
        readonly duration: number,
        /** The length of one. */
        readonly frame: number,
        /** Null where they are not known. */
        readonly keyframes: readonly number[] | null,
    ) {
        this.end = duration;
    }

    get length(): number {
        return this.end - this.start;
    }

    get isWhole(): boolean {
        return this.start === 0 && this.end === this.duration;
    }

    /** A range never has less than one frame, however far a handle is moved. */
    setStart(time: number): void {
        this.start = this.onFrame(Math.min(time, this.end - this.frame));
    }

    setEnd(time: number): void {
        const end = time >= this.duration ? this.duration : this.onFrame(time);
        this.end = Math.min(Math.max(end, this.start + this.frame), this.duration);
    }

    setLength(length: number): void {
        this.setEnd(this.start + length);
    }

    /** The start of the frame that is nearest to a time. */
    onFrame(time: number): number {
        const frames = Math.round(Math.min(Math.max(time, 0), this.duration) / this.frame);
        return frames * this.frame;
    }

    /** The start of the frame that is shown at a time. */
    frameAt(time: number): number {
        return Math.floor(time / this.frame + 1e-3) * this.frame;
    }

    /** Where a key moves what is at a time between these ends; null for a key that does not move. */
    keyTarget(time: number, { key, altKey }: Key, least: number, most: number): number | null {
        if (key === "Home") return least;
        if (key === "End") return most;
        const frames = FRAMES[key];
        if (frames === undefined) return null;
        if (altKey) return this.nextKeyframe(time, frames > 0 ? 1 : -1);
        return time + frames * this.frame;
    }

    /** The keyframe before or after a time, or the end of the video where there is none. */
    nextKeyframe(time: number, direction: 1 | -1): number {
        const reach = this.frame / 2;
        const { keyframes, duration } = this;
        if (direction > 0) return keyframes?.find((one) => one > time + reach) ?? duration;
        return keyframes?.findLast((one) => one < time - reach) ?? 0;
    }

    /** The keyframe that the clip's first packets come from; null where it is not known. */
    get keyframeOfStart(): number | null {
        if (!this.keyframes) return null;
        return this.keyframes.findLast((one) => one <= this.start + this.frame / 2) ?? 0;
    }

    /** The keyframes to show; none when they would be a solid bar. */
    ticks(most: number): readonly number[] {
        return this.keyframes && this.keyframes.length <= most ? this.keyframes : [];
    }

    /** What the gallery is asked for: the start of the first frame, and an end before the first one left out. */
    get request(): { headTrimMs: number; lengthMs: number } {
        const round = (time: number) => Math.round(time * 1000) / 1000;
        return { headTrimMs: round(this.start), lengthMs: Math.max(1, round(this.length)) };
    }
}
