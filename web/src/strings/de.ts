// Every text for people, in German.
import type { Strings } from "./en.js";

const captures = (count: number) => (count === 1 ? "1 Aufnahme" : `${count.toLocaleString("de")} Aufnahmen`);

export const de: Strings = {
    gallery: "Galerie",
    captures: "Aufnahmen",
    captureCount: captures,

    searchCaptures: "Aufnahmen durchsuchen",
    game: "Spiel",
    allGames: "Alle Spiele",
    kind: "Art",
    allKinds: "Alle Arten",
    kinds: { image: "Bild", video: "Video", other: "Datei", highlight: "Highlight" },
    highlights: "Highlights",
    captioned: "Mit Beschriftung",
    sort: "Sortierung",
    sorts: {
        newest: "Neueste zuerst",
        oldest: "Älteste zuerst",
        name: "Name",
        largest: "Größte zuerst",
        longest: "Längste zuerst",
    },
    group: "Gruppen",
    groupings: { day: "Nach Tag", game: "Nach Spiel" },
    cellSize: "Größe",
    unknownDay: "Unbekanntes Datum",
    today: "Heute",
    yesterday: "Gestern",

    selection: "Auswahl",
    selected: (count, size) => `${count.toLocaleString("de")} ausgewählt, ${size}`,
    selectAll: "Alle auswählen",
    clearSelection: "Auswahl aufheben",

    jumpTo: "Springen zu",
    newCaptures: (count) => `${count.toLocaleString("de")} neu`,
    captured: (title) => `Aufgenommen: ${title}`,
    capturedSeveral: (count) => `${captures(count)} hinzugekommen`,

    loading: "Die Galerie wird geladen…",
    scanning: (count) => `Die Galerie wird durchsucht: bisher ${captures(count)}`,
    scanningTitle: "Die Galerie wird durchsucht",
    emptyTitle: "Noch keine Aufnahmen",
    emptyHow:
        "Mach beim Spielen einen Screenshot oder ein Video. Jede Aufnahme kommt in den Ordner ihres Spiels, in",
    emptyCopy: "Auch Aufnahmen, die du in einen solchen Ordner kopierst, erscheinen hier.",
    noMatchTitle: "Nichts gefunden",
    noMatch: "Keine Aufnahme passt zu deiner Suche.",
    showAll: "Alle Aufnahmen zeigen",
    missingTitle: "Der Ordner der Galerie ist nicht da",
    missing: "Deine Aufnahmen sind wieder da, sobald das Laufwerk verbunden ist. Der Ordner ist",
    lost: "Die Verbindung ist abgerissen. Sie wird wiederhergestellt…",
    outdated: "Diese Seite gehört zu einem früheren Start des Servers. Öffne die Galerie noch einmal.",
    noChannel: "Diese Seite muss vom Client oder mit gallery-host page geöffnet werden.",

    broken: "kann nicht angezeigt werden",
    retry: "Noch einmal",
    openFolder: "Ordner öffnen",
    openInPlayer: "Im Player öffnen",
    failed: (text) => `Das hat nicht geklappt: ${text}`,
};
