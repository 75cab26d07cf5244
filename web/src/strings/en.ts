// Every text for people, in English. The page of another language is built with its texts in place of these: as
// exports of a module, they need no names in what is built.

export const language = "en";

export const captureCount = (count: number) =>
    count === 1 ? "1 capture" : `${count.toLocaleString("en")} captures`;

export const gallery = "Gallery";
export const captures = "Captures";

export const searchCaptures = "Search captures";
export const game = "Game";
export const allGames = "All games";
export const kind = "Kind";
export const allKinds = "All kinds";
export const kinds = { image: "Image", video: "Video", other: "File", highlight: "Highlight" };
export const highlights = "Highlights";
export const captioned = "With caption";
export const sort = "Sort";
export const sorts = {
    newest: "Newest first",
    oldest: "Oldest first",
    name: "Name",
    largest: "Largest first",
    longest: "Longest first",
};
export const group = "Group";
export const groupings = { day: "By day", game: "By game" };
export const cellSize = "Size";
export const unknownDay = "Unknown date";
export const today = "Today";
export const yesterday = "Yesterday";

export const selection = "Selection";
export const selected = (count: number, size: string) => `${count.toLocaleString("en")} selected, ${size}`;
export const selectAll = "Select all";
export const clearSelection = "Clear selection";
export const selectGame = "Select this game";
export const selectDay = "Select this day";
export const copyTo = "Copy to…";
export const moveTo = "Move to…";
export const remove = "Delete";
export const montage = "Montage…";

export const cancel = "Cancel";
export const dismiss = "Dismiss";
export const more = (count: number) => `and ${count.toLocaleString("en")} more`;

export const deletions = "Deleted captures";
export const willTrash = (count: number) => `${captureCount(count)} will go to the trash`;
export const willDelete = (count: number) => `${captureCount(count)} will be deleted for good`;
export const deleting = (count: number) => `Deleting ${captureCount(count)}…`;
export const trashed = (count: number) => `${captureCount(count)} in the trash`;
export const restoring = (count: number) => `Bringing back ${captureCount(count)}…`;
export const undone = (count: number) => `${captureCount(count)} brought back`;
export const notDeleted = (count: number) => `${captureCount(count)} could not be deleted or brought back:`;
export const undo = "Undo";
export const deleteQuestion = (count: number) => `Delete ${captureCount(count)}?`;
export const deleteManyToTrash = "They go to the trash. You can undo this afterwards.";
export const deleteManyForGood = "You can undo this for 8 seconds. After that, they are deleted for good.";
export const deleteForGoodQuestion = (count: number) => `Delete ${captureCount(count)} for good?`;
export const deleteForGoodExplanation = "This happens at once and cannot be undone.";

export const destination = "Destination";
export const otherFolder = "Another folder";
export const games = "Games";
export const folder = "Folder";
export const copy = "Copy";
export const move = "Move";
export const noFolder = "There is no such folder.";
export const notWritable = "This folder cannot be written to.";
export const tooFull = "There is not enough room.";
export const copyQuestion = (count: number) => `Copy ${captureCount(count)}?`;
export const moveQuestion = (count: number) => `Move ${captureCount(count)}?`;
export const copiedCount = (count: number) => `${captureCount(count)} copied.`;
export const movedCount = (count: number) => `${captureCount(count)} moved.`;
export const notTried = (count: number) => `${captureCount(count)} left as they were.`;
export const ofCount = (count: number, all: number) =>
    `${count.toLocaleString("en")} of ${all.toLocaleString("en")}`;

export const chooseHighlights =
    "These were captured while you played. Clear the mark of those that you do not keep.";
export const keepAll = "Keep all";
export const deleteCount = (count: number) => `Delete ${count.toLocaleString("en")}…`;

export const montageTitle = "Montage";
export const montageOf = (count: number, size: string) =>
    `One video of ${captureCount(count)}, ${size}, in the order in which they were captured.`;
export const recipe = "Recipe";
export const montageName = "Title";
export const transition = "Transition";
export const filter = "Filter";
export const celebration = "Celebration";
export const none = "None";
export const result = "Result";
export const resultTaken = "There is a file of this name. Choose another one.";
export const makeMontage = "Make the montage";
export const makingMontage = "Making the montage…";
export const montageMade = "The montage is in the gallery.";
export const montageMissing = "The montage has ended. Its file has not come into the gallery yet.";
export const montageCanceled = "The montage was canceled.";
export const montageOver = "The montage has ended.";
export const showResult = "Show";

export const settings = "Settings";
export const loadingSettings = "Asking the gallery for its settings…";
export const galleryFolder = "Gallery folder";
export const tempFolder = "Temporary folder";
export const changeMeans =
    "The captures stay in the old folder. The gallery looks through the new one and shows what is there.";
export const cancelChange = "Back to the old folder";
export const drives = "Drives";
export const driveType = (type: string) =>
    ({ fixed: "built in", external: "external", removable: "removable", network: "network" })[type] ?? type;
export const room = (free: string, total: string) => `${free} free of ${total}`;
export const useDrive = "Use";
export const storage = "Storage";
export const used = (usage: string, total: string) => `Captures use ${usage} of ${total}`;
export const hardlyAny = "less than 1 MB";
export const limitSize = "Limit size";
export const limit = "Limit";
export const limitOf = (percent: number, size: string) => `${percent} % of the drive, ${size}`;
export const noLimit = "The gallery may fill the drive.";
export const save = "Save";
export const saved = "Saved";
export const full = "The gallery has reached its limit. Delete captures, or raise the limit.";
export const lowDiskSpace = "The drive is nearly full.";

/** What keys are called where their caps say something else than their names. */
export const caps = { PageUp: "Page Up", PageDown: "Page Down" } as Record<string, string>;
export const keyTitle = "Keys";
export const keyNextGroup = "To the next day or game";
export const keyNextMark = "To the next mark";
export const keyFirstOrLast = "To the first or last one";
export const keyMove = "Go to the next capture";
export const keyMoveFar = "Go further";
export const keyOpen = "Open";
export const keySelect = "Select or deselect";
export const keySelectRange = "Select from here on";
export const keyDeleteForGood = "Delete for good";
export const keyUndo = "Undo deleting";
export const keyList = "Show the keys";

export const jumpTo = "Jump to";
export const newCaptures = (count: number) => `${count.toLocaleString("en")} new`;
export const captured = (title: string) => `Captured: ${title}`;
export const capturedSeveral = (count: number) => `${captureCount(count)} came in`;

export const loading = "Loading the gallery…";
export const scanning = (count: number) => `Looking through the gallery: ${captureCount(count)} so far`;
export const scanningTitle = "Looking through the gallery";
export const emptyTitle = "No captures yet";
export const emptyHow =
    "Take a screenshot or record a video while you play. Each is kept in the folder of its game, in";
export const emptyCopy = "Captures that you copy into such a folder appear here as well.";
export const noMatchTitle = "Nothing matches";
export const noMatch = "No capture fits what you search for.";
export const showAll = "Show all captures";
export const missingTitle = "The gallery's folder is not there";
export const missing = "Your captures come back as soon as its drive is connected again. The folder is";
export const lost = "The connection was lost. Trying to connect again…";
export const outdated = "This page belongs to an earlier start of the server. Open the gallery again.";
export const noChannel = "This page has to be opened by the client, or by gallery-host page.";

export const broken = "cannot be shown";
export const retry = "Retry";
export const openFolder = "Open folder";
export const openInPlayer = "Open in player";
export const failed = (text: string) => `That did not work: ${text}`;

export const viewer = {
    previous: "Previous",
    next: "Next",
    trim: "Trim",
    caption: "Caption",
    details: "Details",
    delete: "Delete",
    close: "Close",
    position: (index: number, count: number) =>
        `${index.toLocaleString("en")} of ${count.toLocaleString("en")}`,
    gone: "What you looked at has gone. This is the next capture.",
    openFailed: "This browser cannot show this file.",
    brokenTitle: "This file is damaged, or cannot be read.",
};
export const detailsGame = "Game";
export const detailsDate = "Date";
export const detailsLength = "Length";
export const detailsSize = "Size";
export const detailsHighlight = "Highlight";
export const detailsMoment = "Moment";
export const detailsGroup = "Group";
export const detailsCaption = "Caption";
export const detailsPath = "Path";
export const detailsCopyPath = "Copy path";
export const detailsCopied = "The path was copied.";
export const playerPlay = "Play";
export const playerPause = "Pause";
export const playerSeek = "Seek";
export const playerBack = "Frame back";
export const playerForward = "Frame forward";
export const playerSpeed = "Speed";
export const playerLoop = "Loop";
export const playerMute = "Mute";
export const playerVolume = "Volume";
export const playerFullscreen = "Full screen";
export const playerOf = (time: string, length: string) => `${time} of ${length}`;
export const zoomIn = "Zoom in";
export const zoomOut = "Zoom out";
export const zoomWhole = "Show all of it";
export const captionTitle = "Caption";
export const captionTop = "Top text";
export const captionBottom = "Bottom text";
export const captionSaving = "Saving the caption…";
export const captionSaved = "The caption was saved.";
export const captionWhere = "The gallery keeps the texts beside the file, which stays as it is.";
export const captionDiscardQuestion = "Discard the caption?";
export const captionUnsaved = "What you have written is not saved.";
export const captionDiscard = "Discard";
export const trimTitle = "Trim";
export const trimStart = "Start";
export const trimEnd = "End";
export const trimPosition = "Position";
export const trimStartTime = "Start time";
export const trimEndTime = "End time";
export const trimLength = "Length";
export const trimLoop = "Loop";
export const trimPlayFirst = "Play first 2 s";
export const trimPlayLast = "Play last 2 s";
export const trimStartsAt = (time: string) => `The clip will start at ${time}, on a keyframe.`;
export const trimStartsBefore = (time: string, keyframe: string) =>
    `The clip will start at ${time}. Some players will start at the keyframe before, ${keyframe}.`;
export const trimStartsEarlier = "The clip may start up to one keyframe earlier.";
export const trimSaveCopy = "Save as copy";
export const trimCopyMeans = (name: string) => `A copy is saved as ${name}. The video stays as it is.`;
export const trimReplace = "Replace original";
export const trimReplaceMeans = "What is cut off is lost for good, and cannot be brought back.";
export const trimReplaceConfirm = "Replace it now";
export const trimKeepOriginal = "Keep the original";
export const trimCutting = "Cutting the clip…";
export const trimSaved = "The clip was saved.";
export const trimWhole = "Move Start or End to choose a part.";
export const trimUnreadable = "This is not a time. Write it as 1:02.5 or 62.5.";
export const keyViewer = "Capture";
export const keyStep = "Previous and next capture";
export const keyZoom = "Zoom in, out, show all of it";
export const keyPan = "Move the zoomed picture";
export const keyVideo = "Video";
export const keyPlay = "Play or pause";
export const keySeek = "Ten seconds back or forward";
export const keySeekShort = "Five seconds back or forward";
export const keyFrame = "One frame back or forward";
export const keySpeed = "Slower or faster";
export const keyTrim = "Trim";
export const keySetStart = "Start or end the clip here";
export const keyShuttle = "One second back, pause, play and play faster";
export const keyKeyframe = "Previous and next keyframe";
export const keyTenFrames = "Ten frames";
