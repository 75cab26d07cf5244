// Which keys do what in the viewer.
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

const MOVES = /^(Arrow|Page|Home|End)/;

/** Whether the control that has the focus needs the key itself. */
export function isForControl({ key, target }: KeyboardEvent): boolean {
    const control = (target as Element).closest("button, select, input, textarea");
    if (!control) return false;
    if (control instanceof HTMLButtonElement) return key === " " || key === "Enter";
    if (control instanceof HTMLInputElement && control.type === "range") return MOVES.test(key);
    return key !== "Escape";
}
