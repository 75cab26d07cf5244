// The keys of the viewer, its player and the trim dialog.
import { text } from "../../strings/index.js";
import type { KeyList } from "../key-list.js";

const { viewerKeys: keys, player, viewer, trim } = text;

export const VIEWER_KEYS: KeyList = {
    title: keys.viewer,
    keys: [
        [["←", "→", "PageUp", "PageDown"], keys.step],
        [["+", "-", "0"], keys.zoom],
        [["←", "→", "↑", "↓"], keys.pan],
        [["I"], viewer.details],
        [["C"], viewer.caption],
        [["T"], viewer.trim],
        [["Delete"], viewer.delete],
        [["Esc"], viewer.close],
    ],
};

export const PLAYER_KEYS: KeyList = {
    title: keys.video,
    keys: [
        [["Space", "K"], keys.play],
        [["J", "L"], keys.seek],
        [["Shift+←", "Shift+→"], keys.seekShort],
        [[",", "."], keys.frame],
        [["<", ">"], keys.speed],
        [["R"], player.loop],
        [["M"], player.mute],
        [["F"], player.fullscreen],
    ],
};

export const TRIM_KEYS: KeyList = {
    title: keys.trim,
    keys: [
        [["I", "O"], keys.setStart],
        [["J", "K", "L"], keys.shuttle],
        [["←", "→"], keys.frame],
        [["PageUp", "PageDown"], keys.tenFrames],
        [["Alt+←", "Alt+→"], keys.keyframe],
        [["Space"], keys.play],
        [["R"], trim.loop],
    ],
};
