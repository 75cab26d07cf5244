// The gallery's settings as somebody edits them.
import type { GallerySettings } from "../api/types.js";

/** What a form holds. */
export interface SettingsForm {
    readonly galleryFolder: string;
    readonly tempFolder: string;
    readonly limited: boolean;
    /** The limit, as percent of the drive. */
    readonly percent: number;
}

export function formOf({ userGalleryPath, tempFolderPath, capacity }: GallerySettings): SettingsForm {
    return {
        galleryFolder: userGalleryPath ?? "",
        tempFolder: tempFolderPath ?? "",
        limited: capacity?.enabled ?? false,
        percent: capacity?.capacityPercent ?? 100,
    };
}

/** Only what has been changed, because the gallery acts on everything that it is sent. Null when nothing has. */
export function changesOf(known: SettingsForm, form: SettingsForm): GallerySettings | null {
    const changes: GallerySettings = {};
    const galleryFolder = form.galleryFolder.trim();
    const tempFolder = form.tempFolder.trim();
    if (galleryFolder !== "" && galleryFolder !== known.galleryFolder)
        changes.userGalleryPath = galleryFolder;
    if (tempFolder !== "" && tempFolder !== known.tempFolder) changes.tempFolderPath = tempFolder;
    const capacity = {
        ...(form.limited !== known.limited && { enabled: form.limited }),
        ...(form.percent !== known.percent && { capacityPercent: form.percent }),
    };
    if (Object.keys(capacity).length > 0) changes.capacity = capacity;
    return Object.keys(changes).length > 0 ? changes : null;
}

/** What somebody has typed stays when the settings change meanwhile; the rest becomes what it is now. */
export function rebased(form: SettingsForm, known: SettingsForm, now: SettingsForm): SettingsForm {
    const typed = Object.entries(form).filter(([name, value]) => known[name as keyof SettingsForm] !== value);
    return { ...now, ...Object.fromEntries(typed) };
}
