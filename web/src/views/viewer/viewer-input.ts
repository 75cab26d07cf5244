// Which keys do what in the viewer.
import { isForControl } from "../control-keys.js";
import type { ViewerAction } from "./viewer-bar.js";

const ACTIONS: Record<string, ViewerAction> = {
    ArrowLeft: "previous",
    ArrowRight: "next",
    PageUp: "previous",
    PageDown: "next",
    i: "details",
    c: "caption",
    t: "trim",
    Delete: "delete",
};

// Pages that are read from right to left have the next one on the left.
const MIRRORED: Record<string, string> = { ArrowLeft: "ArrowRight", ArrowRight: "ArrowLeft" };

export function actionOf({ key, target, shiftKey }: KeyboardEvent): ViewerAction | undefined {
    if (shiftKey) return undefined;
    const rightToLeft = getComputedStyle(target as Element).direction === "rtl";
    return ACTIONS[(rightToLeft && MIRRORED[key]) || (key.length === 1 ? key.toLowerCase() : key)];
}

/** Whether a key is neither for the browser nor for a control. */
export function isForViewer(event: KeyboardEvent): boolean {
    return !event.ctrlKey && !event.metaKey && !event.altKey && !isForControl(event);
}
