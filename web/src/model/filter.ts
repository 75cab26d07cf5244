// Which captures are shown.
import { hasCaption, type Capture, type Kind } from "./capture.js";

export interface Filter {
    /** Words that title, game, highlight and caption are searched for; all have to be found. */
    readonly search: string;
    /** Empty for all games. */
    readonly game: string;
    /** Empty for all kinds. */
    readonly kind: Kind | "";
    readonly highlights: boolean;
    readonly captions: boolean;
}

export const NO_FILTER: Filter = { search: "", game: "", kind: "", highlights: false, captions: false };

export function isFiltering(filter: Filter): boolean {
    return (
        words(filter.search).length > 0 ||
        filter.game !== "" ||
        filter.kind !== "" ||
        filter.highlights ||
        filter.captions
    );
}

// Case and accents make no difference: "drachenkuste" finds "Drachenküste".
function folded(text: string): string {
    return text.normalize("NFKD").replace(/\p{M}/gu, "").toLowerCase();
}

function words(search: string): string[] {
    return folded(search).split(/\s+/).filter(Boolean);
}

// Folding ten thousand texts at each key stroke would be felt.
const texts = new WeakMap<Capture, string>();

function textOf(capture: Capture): string {
    let text = texts.get(capture);
    if (text === undefined) {
        const { title, game, highlightName, caption } = capture;
        text = folded([title, game, highlightName, caption.top, caption.bottom].join("\n"));
        texts.set(capture, text);
    }
    return text;
}

/** A function that says whether a capture is shown. */
export function matcher(filter: Filter): (capture: Capture) => boolean {
    const wanted = words(filter.search);
    return (capture) =>
        (filter.game === "" || capture.game === filter.game) &&
        (filter.kind === "" || capture.kind === filter.kind) &&
        (!filter.highlights || capture.highlight) &&
        (!filter.captions || hasCaption(capture)) &&
        wanted.every((word) => textOf(capture).includes(word));
}
