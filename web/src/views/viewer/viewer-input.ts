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

/** Whether a key is neither for a dialog above the viewer's nor for the browser or a control. */
export function isForViewer(event: KeyboardEvent, dialog: HTMLDialogElement): boolean {
    const { target, ctrlKey, metaKey, altKey } = event;
    const inner = (target as Element).closest("dialog") !== dialog;
    return !inner && !ctrlKey && !metaKey && !altKey && !isForControl(event);
}
