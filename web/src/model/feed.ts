// Keeps the model of the gallery up to date: loads the list, follows notifications, and starts anew when the
// connection was lost.
import type { Client } from "../api/client.js";
import { ApiError, isRefusal, OUTDATED } from "../api/envelope.js";
import type { Notifications, Requests } from "../api/types.js";
import { captureOf, type Capture } from "./capture.js";
import type { Gallery } from "./gallery.js";

export interface Scheduler {
    later(ms: number, run: () => void): void;
    /** When nothing else is to be done. */
    idle(run: () => void): void;
}

export type News = Notifications["GalleryNotifications"]["response"];
type Settings = Requests["GetSettings"]["response"]["settings"];

// Enough for the first screen, and quick for any gallery.
const FIRST_COUNT = 300;
const ALL_COUNT = 1_000_000;
// No notification reports the end of the scan at a start, nor that a drive is back.
const POLL_MS = 1000;
const POLLS_AFTER_RETURN = 60;
const LONGEST_WAIT_MS = 5000;

export class Feed {
    // Counts connections; what belongs to an earlier one is ignored.
    #generation = 0;
    // Counts loads of the list; a later one takes over from one that is under way.
    #loads = 0;
    #failures = 0;
    // How often to look again for captures that come back, and how many there were.
    #polls = 0;
    #lastSize = 0;
    #unsubscribe: (() => void)[] = [];
    // Notifications that came while the list was on its way, which may be older than they are.
    #newsSinceAsked: News[] | null = null;

    constructor(
        private readonly client: Client,
        private readonly gallery: Gallery,
        private readonly scheduler: Scheduler,
        /** Called with everything that the gallery reports, after the gallery's model knows of it. */
        private readonly hear: (news: News) => void = () => {},
    ) {}

    start(): void {
        const generation = ++this.#generation;
        const current = <T extends unknown[]>(run: (...values: T) => void) => {
            return (...values: T) => (generation === this.#generation ? run(...values) : undefined);
        };
        const reload = current(() => this.reload());
        const onEnd = current((error: ApiError) => this.#onLost(error));
        const onNews = current((news: News) => this.#onNews(news));
        this.#unsubscribe = [
            this.client.subscribe("GalleryNotifications", { onNews, onGap: reload, onEnd }),
            this.client.subscribe("PathChangeNotification", { onNews: reload, onGap: () => {}, onEnd }),
        ];
        this.reload();
    }

    /** Loads the whole list again. */
    reload(): void {
        ++this.#loads;
        const isCurrent = this.#untilNextLoad();
        this.#load(isCurrent).catch((error: unknown) => {
            if (!isCurrent()) return;
            // As while the gallery is moved to another folder.
            if (isRefusal(error)) this.#reloadLater();
            else this.#onLost(error);
        });
    }

    #onLost(error: unknown): void {
        ++this.#generation;
        for (const end of this.#unsubscribe) end();
        this.gallery.setConnection(
            error instanceof ApiError && error.code === OUTDATED ? "outdated" : "lost",
        );
        const wait = this.#failures === 0 ? 0 : Math.min(500 * 2 ** this.#failures, LONGEST_WAIT_MS);
        ++this.#failures;
        this.scheduler.later(wait, () => this.start());
    }

    async #load(isCurrent: () => boolean): Promise<void> {
        const isFirst = this.gallery.captures.size === 0;
        const [settings] = await Promise.all([
            this.#settings(),
            isFirst ? this.#fetch(FIRST_COUNT, isCurrent) : null,
        ]);
        if (!isCurrent()) return;
        this.#failures = 0;
        this.gallery.folder = settings.path ?? "";
        this.gallery.setConnection("open");
        if (isFirst && this.gallery.captures.size >= FIRST_COUNT) await this.#idle();
        if (!isFirst || this.gallery.captures.size >= FIRST_COUNT) await this.#fetch(ALL_COUNT, isCurrent);
        if (isCurrent()) await this.#settle(settings, isCurrent);
    }

    // Finds out what it means that the list is as it is, and looks again while that can change unannounced.
    async #settle(settings: Settings, isCurrent: () => boolean): Promise<void> {
        const scanning = settings.trackerStatus === "TrackerUpdateInProgress";
        const missing = !scanning && this.gallery.captures.size === 0 && !(await this.#isFolderThere());
        if (!isCurrent()) return;
        if (missing) this.#polls = POLLS_AFTER_RETURN;
        this.gallery.setStatus(scanning ? "scanning" : missing ? "missing" : "ready");
        if (scanning || missing || this.#isReturning()) this.#reloadLater();
    }

    // Captures of a drive that is back come back one after the other.
    #isReturning(): boolean {
        const { size } = this.gallery.captures;
        if (this.#polls > 0 && size > 0 && size === this.#lastSize) this.#polls = 0;
        this.#lastSize = size;
        if (this.#polls === 0) return false;
        --this.#polls;
        return true;
    }

    #untilNextLoad(): () => boolean {
        const generation = this.#generation;
        const load = this.#loads;
        return () => generation === this.#generation && load === this.#loads;
    }

    #reloadLater(): void {
        const isCurrent = this.#untilNextLoad();
        this.scheduler.later(POLL_MS, () => isCurrent() && this.reload());
    }

    async #settings(): Promise<Settings> {
        return (await this.client.request("GetSettings", {})).settings;
    }

    async #fetch(count: number, isCurrent: () => boolean): Promise<void> {
        const news: News[] = [];
        this.#newsSinceAsked = news;
        const { recents = [] } = await this.client.request("GetRecentUGC", { count });
        if (!isCurrent() || this.#newsSinceAsked !== news) return;
        this.#newsSinceAsked = null;
        this.gallery.replace(
            recents.map(captureOf).filter((capture): capture is Capture => capture !== null),
        );
        for (const one of news) this.#apply(one);
    }

    async #isFolderThere(): Promise<boolean> {
        try {
            await this.client.request("GetDriveInfo", { drive: this.gallery.folder });
            return true;
        } catch (error) {
            if (isRefusal(error)) return false;
            throw error;
        }
    }

    #idle(): Promise<void> {
        return new Promise((resolve) => this.scheduler.idle(resolve));
    }

    #onNews(news: News): void {
        this.#newsSinceAsked?.push(news);
        this.#apply(news);
        const { status } = news.galleryPathUpdateStatus ?? {};
        if (status === "TrackerUpdateInProgress") this.#followScan();
        else if (status) this.reload();
        // The last capture may have gone with the drive.
        else if (news.ugcDeleted && this.gallery.captures.size === 0) this.reload();
        this.hear(news);
    }

    // The gallery reports each file that it looks through; the list is loaded once a second meanwhile.
    #followScan(): void {
        if (this.gallery.status === "scanning") return;
        this.gallery.setStatus("scanning");
        this.#reloadLater();
    }

    #apply(news: News): void {
        const saved = captureOf(news.captureSaved?.ugc);
        if (saved) this.gallery.put(saved);
        const deleted = captureOf(news.ugcDeleted?.ugc);
        if (deleted) this.gallery.remove(deleted.path);
    }
}
