// The keys of the viewer, its player and the trim dialog.
import * as text from "../../strings/en.js";
import type { KeyList } from "../key-list.js";

export const VIEWER_KEYS: KeyList = {
    title: text.keyViewer,
    keys: [
        [["←", "→", "PageUp", "PageDown"], text.keyStep],
        [["+", "-", "0"], text.keyZoom],
        [["←", "→", "↑", "↓"], text.keyPan],
        [["I"], text.viewer.details],
        [["C"], text.viewer.caption],
        [["T"], text.viewer.trim],
        [["Delete"], text.viewer.delete],
        [["Esc"], text.viewer.close],
    ],
};

export const PLAYER_KEYS: KeyList = {
    title: text.keyVideo,
    keys: [
        [["Space", "K"], text.keyPlay],
        [["J", "L"], text.keySeek],
        [["Shift+←", "Shift+→"], text.keySeekShort],
        [[",", "."], text.keyFrame],
        [["<", ">"], text.keySpeed],
        [["R"], text.playerLoop],
        [["M"], text.playerMute],
        [["F"], text.playerFullscreen],
    ],
};

export const TRIM_KEYS: KeyList = {
    title: text.keyTrim,
    keys: [
        [["I", "O"], text.keySetStart],
        [["J", "K", "L"], text.keyShuttle],
        [["←", "→"], text.keyFrame],
        [["PageUp", "PageDown"], text.keyTenFrames],
        [["Alt+←", "Alt+→"], text.keyKeyframe],
        [["Space"], text.keyPlay],
        [["R"], text.trimLoop],
    ],
};
