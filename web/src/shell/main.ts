// Puts the page together.
import { Client, HOST_READY, type HostInfo } from "../api/client.js";
import { channelOf, type Channel } from "../api/query.js";
import { Captions } from "../model/captions.js";
import { Deletions } from "../model/deletions.js";
import { Feed, type News } from "../model/feed.js";
import { NO_FILTER } from "../model/filter.js";
import { Gallery, type View } from "../model/gallery.js";
import { PathChange } from "../model/path-change.js";
import { Selection } from "../model/selection.js";
import { Thumbnails } from "../model/thumbnails.js";
import * as text from "../strings/en.js";
import { GalleryPage } from "../views/gallery-page.js";
import { removerFor } from "../views/remover.js";
import { loaderFor } from "../views/thumbnail-loader.js";
import { PreferenceStore } from "./preferences.js";
import { keepView, keptView } from "./tab-view.js";

function hostInfo(): HostInfo | null {
    return (window as { galleryHost?: HostInfo }).galleryHost ?? null;
}

const scheduler = {
    later: (ms: number, run: () => void) => void setTimeout(run, ms),
    idle: (run: () => void) => void requestIdleCallback(run, { timeout: 500 }),
};

const clock = {
    later(ms: number, run: () => void) {
        const timer = setTimeout(run, ms);
        return () => clearTimeout(timer);
    },
};

// One report for each frame that is drawn; a page that is not seen draws none.
function nextFrame(report: () => void): void {
    if (document.hidden) setTimeout(report, 0);
    else requestAnimationFrame(report);
}

function start(channel: Channel): void {
    const client = new Client(channel, hostInfo);
    const preferences = new PreferenceStore(client);
    const { grouping, sort, cellSize } = preferences.current;
    const gallery = new Gallery({ ...NO_FILTER, grouping, sort, ...keptView() }, nextFrame);
    let redrawing = false;
    const redraw = (): void => {
        if (redrawing) return;
        redrawing = true;
        nextFrame(() => {
            redrawing = false;
            page.grid?.requestUpdate();
        });
    };
    const thumbnails = new Thumbnails(loaderFor(client), redraw);
    const page = new GalleryPage();
    const deletions = new Deletions(gallery, removerFor(client), clock);
    page.context = {
        client,
        gallery,
        selection: new Selection(),
        thumbnails,
        deletions,
        pathChange: new PathChange(),
        captions: new Captions(client, gallery, new BroadcastChannel("captions")),
    };
    window.addEventListener("pagehide", () => {
        // A page that was left and comes back from the browser's memory deletes nothing either.
        deletions.callOff();
        keepView(gallery.view);
    });
    page.cellSize = cellSize;
    page.addEventListener("cell-size", (event) => {
        page.cellSize = (event as CustomEvent<number>).detail;
        page.refresh();
        preferences.keep({ cellSize: page.cellSize });
    });
    page.addEventListener("view-choice", (event) => {
        const { grouping, sort } = { ...gallery.view, ...(event as CustomEvent<Partial<View>>).detail };
        preferences.keep({ grouping, sort });
    });
    document.body.append(page);
    const load = (): void => {
        if (!client.offers("Preferences")) return;
        preferences.load(({ cellSize, ...view }) => {
            page.cellSize = cellSize;
            gallery.setView(view); // draws the page again
        });
    };
    if (hostInfo()) load();
    else window.addEventListener(HOST_READY, load, { once: true });
    const hear = (news: News): void => page.actions.hear(news);
    new Feed(client, gallery, scheduler, hear).start();
}

document.documentElement.lang = text.language;
document.title = text.gallery;
const channel = channelOf(window);
if (channel) start(channel);
else document.body.append(text.noChannel);
