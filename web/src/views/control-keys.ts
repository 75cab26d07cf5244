// Keys that belong to the control which has the focus, and to nothing around it.

const MOVES = /^(Arrow|Page|Home|End)/;

/** Whether the control that has the focus needs the key itself. */
export function isForControl({ key, target }: KeyboardEvent): boolean {
    const control = (target as Element).closest("button, select, input, textarea");
    if (!control) return false;
    if (control instanceof HTMLButtonElement) return key === " " || key === "Enter";
    if (control instanceof HTMLInputElement && control.type === "range") return MOVES.test(key);
    return key !== "Escape";
}
