// Opens a capture outside the page, by the host.
import type { Capture } from "../model/capture.js";
import { send, type Context } from "./context.js";

/** Dispatches "report-failure" on the element when the host does not do it. */
export function openOutside(
    element: HTMLElement & { readonly context: Context },
    method: "OpenFolder" | "OpenInPlayer",
    { path }: Capture,
): void {
    element.context.client
        .askHost(method, { file: path })
        .catch((error: Error) => send(element, "report-failure", error.message));
}
