// Every text for people, in German.

export const language = "de";

export const captureCount = (count: number) =>
    count === 1 ? "1 Aufnahme" : `${count.toLocaleString("de")} Aufnahmen`;

export const gallery = "Galerie";
export const captures = "Aufnahmen";

export const searchCaptures = "Aufnahmen durchsuchen";
export const game = "Spiel";
export const allGames = "Alle Spiele";
export const kind = "Art";
export const allKinds = "Alle Arten";
export const kinds = { image: "Bild", video: "Video", other: "Datei", highlight: "Highlight" };
export const highlights = "Highlights";
export const captioned = "Mit Beschriftung";
export const sort = "Sortierung";
export const sorts = {
    newest: "Neueste zuerst",
    oldest: "Älteste zuerst",
    name: "Name",
    largest: "Größte zuerst",
    longest: "Längste zuerst",
};
export const group = "Gruppen";
export const groupings = { day: "Nach Tag", game: "Nach Spiel" };
export const cellSize = "Größe";
export const unknownDay = "Unbekanntes Datum";
export const today = "Heute";
export const yesterday = "Gestern";

export const selection = "Auswahl";
export const selected = (count: number, size: string) => `${count.toLocaleString("de")} ausgewählt, ${size}`;
export const selectAll = "Alle auswählen";
export const clearSelection = "Auswahl aufheben";
export const selectGame = "Dieses Spiel auswählen";
export const selectDay = "Diesen Tag auswählen";
export const copyTo = "Kopieren nach…";
export const moveTo = "Verschieben nach…";
export const remove = "Löschen";
export const montage = "Montage…";

export const cancel = "Abbrechen";
export const dismiss = "Ausblenden";
export const more = (count: number) => `und ${count.toLocaleString("de")} weitere`;

export const deletions = "Gelöschte Aufnahmen";
export const willTrash = (count: number) =>
    `${captureCount(count)} ${count === 1 ? "kommt" : "kommen"} in den Papierkorb`;
export const willDelete = (count: number) =>
    `${captureCount(count)} ${count === 1 ? "wird" : "werden"} endgültig gelöscht`;
export const deleting = (count: number) => `${captureCount(count)}: wird gelöscht…`;
export const trashed = (count: number) => `${captureCount(count)} im Papierkorb`;
export const restoring = (count: number) => `${captureCount(count)}: wird zurückgeholt…`;
export const undone = (count: number) => `${captureCount(count)} zurückgeholt`;
export const notDeleted = (count: number) =>
    `${captureCount(count)} konnten nicht gelöscht oder zurückgeholt werden:`;
export const undo = "Rückgängig";
export const deleteQuestion = (count: number) => `${captureCount(count)} löschen?`;
export const deleteManyToTrash = "Sie kommen in den Papierkorb. Das lässt sich danach rückgängig machen.";
export const deleteManyForGood =
    "Das lässt sich 8 Sekunden lang rückgängig machen. Danach sind sie endgültig gelöscht.";
export const deleteForGoodQuestion = (count: number) => `${captureCount(count)} endgültig löschen?`;
export const deleteForGoodExplanation = "Das geschieht sofort und lässt sich nicht rückgängig machen.";

export const destination = "Ziel";
export const otherFolder = "Ein anderer Ordner";
export const games = "Spiele";
export const folder = "Ordner";
export const copy = "Kopieren";
export const move = "Verschieben";
export const noFolder = "Diesen Ordner gibt es nicht.";
export const notWritable = "In diesen Ordner kann nicht geschrieben werden.";
export const tooFull = "Der Platz reicht nicht.";
export const copyQuestion = (count: number) => `${captureCount(count)} kopieren?`;
export const moveQuestion = (count: number) => `${captureCount(count)} verschieben?`;
export const copiedCount = (count: number) => `${captureCount(count)} kopiert.`;
export const movedCount = (count: number) => `${captureCount(count)} verschoben.`;
export const notTried = (count: number) => `${captureCount(count)} unverändert.`;
export const ofCount = (count: number, all: number) =>
    `${count.toLocaleString("de")} von ${all.toLocaleString("de")}`;

export const chooseHighlights =
    "Das wurde beim Spielen aufgenommen. Nimm das Häkchen weg, wenn du etwas nicht behalten willst.";
export const keepAll = "Alle behalten";
export const deleteCount = (count: number) => `${count.toLocaleString("de")} löschen…`;

export const montageTitle = "Montage";
export const montageOf = (count: number, size: string) =>
    `Ein Video aus ${captureCount(count)}, ${size}, in der Reihenfolge, in der sie entstanden sind.`;
export const recipe = "Rezept";
export const montageName = "Titel";
export const transition = "Übergang";
export const filter = "Filter";
export const celebration = "Feier";
export const none = "Keine";
export const result = "Ergebnis";
export const resultTaken = "Eine Datei mit diesem Namen gibt es schon. Wähle einen anderen.";
export const makeMontage = "Montage machen";
export const makingMontage = "Die Montage entsteht…";
export const montageMade = "Die Montage ist in der Galerie.";
export const montageMissing = "Die Montage ist zu Ende. Ihre Datei ist noch nicht in der Galerie.";
export const montageCanceled = "Die Montage wurde abgebrochen.";
export const montageOver = "Die Montage ist zu Ende.";
export const showResult = "Zeigen";

export const settings = "Einstellungen";
export const loadingSettings = "Die Galerie wird nach ihren Einstellungen gefragt…";
export const galleryFolder = "Ordner der Galerie";
export const tempFolder = "Temporärer Ordner";
export const changeMeans =
    "Die Aufnahmen bleiben im alten Ordner. Die Galerie durchsucht den neuen und zeigt, was darin ist.";
export const cancelChange = "Zurück zum alten Ordner";
export const drives = "Laufwerke";
export const driveType = (type: string) =>
    ({ fixed: "eingebaut", external: "extern", removable: "Wechselmedium", network: "Netzwerk" })[type] ??
    type;
export const room = (free: string, total: string) => `${free} von ${total} frei`;
export const useDrive = "Nehmen";
export const storage = "Speicher";
export const used = (usage: string, total: string) => `Die Aufnahmen belegen ${usage} von ${total}`;
export const hardlyAny = "weniger als 1 MB";
export const limitSize = "Größe begrenzen";
export const limit = "Grenze";
export const limitOf = (percent: number, size: string) => `${percent} % des Laufwerks, ${size}`;
export const noLimit = "Die Galerie darf das Laufwerk füllen.";
export const save = "Speichern";
export const saved = "Gespeichert";
export const full = "Die Galerie hat ihre Grenze erreicht. Lösche Aufnahmen oder erhöhe die Grenze.";
export const lowDiskSpace = "Das Laufwerk ist fast voll.";

export const caps = {
    Ctrl: "Strg",
    Shift: "Umschalt",
    Enter: "Eingabe",
    Space: "Leertaste",
    Delete: "Entf",
    Home: "Pos1",
    End: "Ende",
    PageUp: "Bild ↑",
    PageDown: "Bild ↓",
};
export const keyTitle = "Tasten";
export const keyNextGroup = "Zum nächsten Tag oder Spiel";
export const keyNextMark = "Zur nächsten Marke";
export const keyFirstOrLast = "Zum ersten oder letzten";
export const keyMove = "Zur nächsten Aufnahme";
export const keyMoveFar = "Weiter springen";
export const keyOpen = "Öffnen";
export const keySelect = "Auswählen oder abwählen";
export const keySelectRange = "Ab hier auswählen";
export const keyDeleteForGood = "Endgültig löschen";
export const keyUndo = "Löschen rückgängig machen";
export const keyList = "Tasten zeigen";

export const jumpTo = "Springen zu";
export const newCaptures = (count: number) => `${count.toLocaleString("de")} neu`;
export const captured = (title: string) => `Aufgenommen: ${title}`;
export const capturedSeveral = (count: number) => `${captureCount(count)} hinzugekommen`;

export const loading = "Die Galerie wird geladen…";
export const scanning = (count: number) => `Die Galerie wird durchsucht: bisher ${captureCount(count)}`;
export const scanningTitle = "Die Galerie wird durchsucht";
export const emptyTitle = "Noch keine Aufnahmen";
export const emptyHow =
    "Mach beim Spielen einen Screenshot oder ein Video. Jede Aufnahme kommt in den Ordner ihres Spiels, in";
export const emptyCopy = "Auch Aufnahmen, die du in einen solchen Ordner kopierst, erscheinen hier.";
export const noMatchTitle = "Nichts gefunden";
export const noMatch = "Keine Aufnahme passt zu deiner Suche.";
export const showAll = "Alle Aufnahmen zeigen";
export const missingTitle = "Der Ordner der Galerie ist nicht da";
export const missing = "Deine Aufnahmen sind wieder da, sobald das Laufwerk verbunden ist. Der Ordner ist";
export const lost = "Die Verbindung ist abgerissen. Sie wird wiederhergestellt…";
export const outdated =
    "Diese Seite gehört zu einem früheren Start des Servers. Öffne die Galerie noch einmal.";
export const noChannel = "Diese Seite muss vom Client oder mit gallery-host page geöffnet werden.";

export const broken = "kann nicht angezeigt werden";
export const retry = "Noch einmal";
export const openFolder = "Ordner öffnen";
export const openInPlayer = "Im Player öffnen";
export const failed = (text: string) => `Das hat nicht geklappt: ${text}`;

export const viewer = {
    previous: "Vorherige",
    next: "Nächste",
    trim: "Kürzen",
    caption: "Beschriftung",
    details: "Details",
    delete: "Löschen",
    close: "Schließen",
    position: (index: number, count: number) =>
        `${index.toLocaleString("de")} von ${count.toLocaleString("de")}`,
    gone: "Die Aufnahme ist nicht mehr da. Dies ist die nächste.",
    openFailed: "Dieser Browser kann die Datei nicht zeigen.",
    brokenTitle: "Diese Datei ist beschädigt oder nicht lesbar.",
};
export const detailsGame = "Spiel";
export const detailsDate = "Datum";
export const detailsLength = "Länge";
export const detailsSize = "Größe";
export const detailsHighlight = "Highlight";
export const detailsMoment = "Augenblick";
export const detailsGroup = "Gruppe";
export const detailsCaption = "Beschriftung";
export const detailsPath = "Pfad";
export const detailsCopyPath = "Pfad kopieren";
export const detailsCopied = "Der Pfad ist kopiert.";
export const playerPlay = "Abspielen";
export const playerPause = "Anhalten";
export const playerSeek = "Stelle";
export const playerBack = "Bild zurück";
export const playerForward = "Bild vor";
export const playerSpeed = "Tempo";
export const playerLoop = "Wiederholen";
export const playerMute = "Stumm";
export const playerVolume = "Lautstärke";
export const playerFullscreen = "Vollbild";
export const playerOf = (time: string, length: string) => `${time} von ${length}`;
export const zoomIn = "Vergrößern";
export const zoomOut = "Verkleinern";
export const zoomWhole = "Alles zeigen";
export const captionTitle = "Beschriftung";
export const captionTop = "Text oben";
export const captionBottom = "Text unten";
export const captionSaving = "Die Beschriftung wird gespeichert…";
export const captionSaved = "Die Beschriftung ist gespeichert.";
export const captionWhere = "Die Galerie merkt sich die Texte neben der Datei, die bleibt, wie sie ist.";
export const captionDiscardQuestion = "Beschriftung verwerfen?";
export const captionUnsaved = "Was du geschrieben hast, ist nicht gespeichert.";
export const captionDiscard = "Verwerfen";
export const trimTitle = "Kürzen";
export const trimStart = "Anfang";
export const trimEnd = "Ende";
export const trimPosition = "Stelle";
export const trimStartTime = "Zeit des Anfangs";
export const trimEndTime = "Zeit des Endes";
export const trimLength = "Länge";
export const trimLoop = "Wiederholen";
export const trimPlayFirst = "Erste 2 s abspielen";
export const trimPlayLast = "Letzte 2 s abspielen";
export const trimStartsAt = (time: string) => `Der Clip wird bei ${time} beginnen, auf einem Schlüsselbild.`;
export const trimStartsBefore = (time: string, keyframe: string) =>
    `Der Clip wird bei ${time} beginnen. Manche Player beginnen beim Schlüsselbild davor, ${keyframe}.`;
export const trimStartsEarlier = "Der Clip beginnt vielleicht bis zu ein Schlüsselbild früher.";
export const trimSaveCopy = "Als Kopie speichern";
export const trimCopyMeans = (name: string) =>
    `Eine Kopie wird als ${name} gespeichert. Das Video bleibt, wie es ist.`;
export const trimReplace = "Original ersetzen";
export const trimReplaceMeans = "Was abgeschnitten wird, ist endgültig verloren und kommt nicht wieder.";
export const trimReplaceConfirm = "Jetzt ersetzen";
export const trimKeepOriginal = "Original behalten";
export const trimCutting = "Der Clip wird geschnitten…";
export const trimSaved = "Der Clip ist gespeichert.";
export const trimWhole = "Verschiebe Anfang oder Ende, um einen Teil zu wählen.";
export const trimUnreadable = "Das ist keine Zeit. Schreib sie als 1:02,5 oder 62,5.";
export const keyViewer = "Aufnahme";
export const keyStep = "Vorherige und nächste Aufnahme";
export const keyZoom = "Vergrößern, verkleinern, alles zeigen";
export const keyPan = "Das vergrößerte Bild verschieben";
export const keyVideo = "Video";
export const keyPlay = "Abspielen oder anhalten";
export const keySeek = "Zehn Sekunden zurück oder vor";
export const keySeekShort = "Fünf Sekunden zurück oder vor";
export const keyFrame = "Ein Bild zurück oder vor";
export const keySpeed = "Langsamer oder schneller";
export const keyTrim = "Kürzen";
export const keySetStart = "Clip hier beginnen oder enden lassen";
export const keyShuttle = "Eine Sekunde zurück, anhalten, abspielen und schneller";
export const keyKeyframe = "Voriges und nächstes Schlüsselbild";
export const keyTenFrames = "Zehn Bilder";
