// What the elements of the page share.
import type { Client } from "../api/client.js";
import type { Capture } from "../model/capture.js";
import type { Captions } from "../model/captions.js";
import type { Deletions } from "../model/deletions.js";
import type { Gallery } from "../model/gallery.js";
import type { PathChange } from "../model/path-change.js";
import type { Selection } from "../model/selection.js";
import type { Thumbnails } from "../model/thumbnails.js";

export interface Context {
    readonly client: Client;
    readonly gallery: Gallery;
    readonly selection: Selection;
    readonly thumbnails: Thumbnails;
    readonly deletions: Deletions;
    readonly pathChange: PathChange;
    readonly captions: Captions;
}

/** Whatever concerns more captures is asked about once more. */
export const MANY = 100;

export type SelectionAction = "copy" | "move" | "delete" | "montage";

/** A clip that was saved, and the capture that was at its path before, if any. */
export interface Clip {
    readonly path: string;
    readonly replaced: Capture | null;
}

/** Events that elements send upwards. */
declare global {
    interface HTMLElementEventMap {
        /** Somebody wants to see this capture. */
        "open-capture": CustomEvent<Capture>;
        "selection-change": CustomEvent<void>;
        /** Somebody wants to do this with what is selected. */
        "selection-action": CustomEvent<SelectionAction>;
        /** Somebody wants to delete captures, which can be undone, or for good, which cannot. */
        "delete-captures": CustomEvent<readonly string[]>;
        "delete-for-good": CustomEvent<readonly string[]>;
        /** The grid shows another part, or another layout. */
        "grid-view": CustomEvent<void>;
        /** Somebody wants to do something that failed; the text says why. */
        "report-failure": CustomEvent<string>;
        /** The browser does not show this capture. */
        "media-failed": CustomEvent<Capture>;
        /** The viewer is gone; the detail is what it showed last, if that is still there. */
        "viewer-closed": CustomEvent<Capture | null>;
        /** This path stays in the viewer, even when its capture goes; null for none. */
        "hold-capture": CustomEvent<string | null>;
        /** The gallery has saved a clip; whether it is to be shown. */
        "clip-cut": CustomEvent<Clip & { show: boolean }>;
        "show-clip": CustomEvent<Clip>;
        /** Something to read out. */
        announce: CustomEvent<string>;
    }
}

export function send<T>(element: HTMLElement, name: string, detail?: T): void {
    element.dispatchEvent(new CustomEvent(name, { detail, bubbles: true }));
}
