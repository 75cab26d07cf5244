// Every text for people, in English. Other languages have the same members.

const captures = (count: number) => (count === 1 ? "1 capture" : `${count.toLocaleString("en")} captures`);

export const en = {
    gallery: "Gallery",
    captures: "Captures",
    captureCount: captures,

    searchCaptures: "Search captures",
    game: "Game",
    allGames: "All games",
    kind: "Kind",
    allKinds: "All kinds",
    kinds: { image: "Image", video: "Video", other: "File", highlight: "Highlight" },
    highlights: "Highlights",
    captioned: "With caption",
    sort: "Sort",
    sorts: {
        newest: "Newest first",
        oldest: "Oldest first",
        name: "Name",
        largest: "Largest first",
        longest: "Longest first",
    },
    group: "Group",
    groupings: { day: "By day", game: "By game" },
    cellSize: "Size",
    unknownDay: "Unknown date",
    today: "Today",
    yesterday: "Yesterday",

    selection: "Selection",
    selected: (count: number, size: string) => `${count.toLocaleString("en")} selected, ${size}`,
    selectAll: "Select all",
    clearSelection: "Clear selection",

    jumpTo: "Jump to",
    newCaptures: (count: number) => `${count.toLocaleString("en")} new`,
    captured: (title: string) => `Captured: ${title}`,
    capturedSeveral: (count: number) => `${captures(count)} came in`,

    loading: "Loading the gallery…",
    scanning: (count: number) => `Looking through the gallery: ${captures(count)} so far`,
    scanningTitle: "Looking through the gallery",
    emptyTitle: "No captures yet",
    emptyHow:
        "Take a screenshot or record a video while you play. Each is kept in the folder of its game, in",
    emptyCopy: "Captures that you copy into such a folder appear here as well.",
    noMatchTitle: "Nothing matches",
    noMatch: "No capture fits what you search for.",
    showAll: "Show all captures",
    missingTitle: "The gallery's folder is not there",
    missing: "Your captures come back as soon as its drive is connected again. The folder is",
    lost: "The connection was lost. Trying to connect again…",
    outdated: "This page belongs to an earlier start of the server. Open the gallery again.",
    noChannel: "This page has to be opened by the client, or by gallery-host page.",

    broken: "cannot be shown",
    retry: "Retry",
    openFolder: "Open folder",
    openInPlayer: "Open in player",
    failed: (text: string) => `That did not work: ${text}`,
};

export type Strings = typeof en;
