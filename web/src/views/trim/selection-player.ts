// Plays parts of a video: the selection again and again, its first or last moments. Times are milliseconds.

interface Part {
    readonly from: number;
    readonly until: number;
    /** Whether it is played again and again. */
    readonly again: boolean;
}

const WHOLE: Part = { from: 0, until: Infinity, again: false };
const FASTEST = 4;

export class SelectionPlayer {
    // What is played.
    #part: Part = WHOLE;
    // Where to seek when the seek that is under way has ended: a drag asks for more than a video can show.
    #wanted: number | null = null;

    constructor(
        private readonly video: HTMLVideoElement,
        private readonly onMove: (time: number) => void,
    ) {
        video.addEventListener("seeked", () => this.#seekOn());
        video.addEventListener("play", () => this.#follow());
    }

    get isPlaying(): boolean {
        return !this.video.paused;
    }

    seek(time: number): void {
        if (this.video.seeking) this.#wanted = time;
        else this.video.currentTime = time / 1000;
        this.onMove(time);
    }

    /** Plays from one time until another, where it pauses or begins again. */
    async play(from: number, until: number, again: boolean): Promise<void> {
        this.#part = { from, until, again };
        this.video.playbackRate = 1;
        this.#wanted = null;
        this.video.currentTime = from / 1000;
        await this.resume();
    }

    async resume(): Promise<void> {
        try {
            await this.video.play();
        } catch {
            // It was paused before it began, or cannot be shown.
        }
    }

    pause(): void {
        this.video.pause();
        this.playOn();
    }

    /** What is played goes on to the end of the video. */
    playOn(): void {
        this.#part = WHOLE;
    }

    faster(): void {
        if (this.isPlaying) this.video.playbackRate = Math.min(2 * this.video.playbackRate, FASTEST);
        else {
            this.video.playbackRate = 1;
            void this.resume();
        }
    }

    /** The part that is played again and again becomes another one. */
    change(from: number, until: number): void {
        if (this.#part.again) this.#part = { from, until, again: true };
    }

    #seekOn(): void {
        if (this.#wanted === null) return;
        this.video.currentTime = this.#wanted / 1000;
        this.#wanted = null;
    }

    // Each frame of the screen: the video's own events come too rarely to stop where the selection ends.
    readonly #follow = (): void => {
        const time = this.video.currentTime * 1000;
        if (!this.video.seeking) {
            this.onMove(time);
            if (time >= this.#part.until) this.#onEnd();
        }
        if (!this.video.paused) requestAnimationFrame(this.#follow);
        // The selection may end where the video does.
        else if (this.video.ended && this.#part.again)
            void this.play(this.#part.from, this.#part.until, true);
    };

    #onEnd(): void {
        if (this.#part.again) this.video.currentTime = this.#part.from / 1000;
        else this.pause();
    }
}
