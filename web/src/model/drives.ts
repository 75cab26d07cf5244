// Drives that captures can be kept on, and how much room they have.
import type { Client } from "../api/client.js";
import { isRefusal } from "../api/envelope.js";

export interface Room {
    readonly freeMB: number;
    readonly totalMB: number;
}

export interface Drive extends Room {
    readonly name: string;
    readonly type: string;
}

// The gallery takes a single character for the letter of a drive.
const nameForGallery = (folder: string): string => (folder === "/" ? "//" : folder);

/** Null when the folder is not there. */
export async function roomIn(client: Client, folder: string): Promise<Room | null> {
    try {
        const drive = nameForGallery(folder);
        const { freeSpaceMB, totalSpaceMB } = await client.request("GetDriveInfo", { drive });
        return { freeMB: freeSpaceMB, totalMB: totalSpaceMB };
    } catch (error) {
        if (isRefusal(error)) return null;
        throw error;
    }
}

/** Of a folder, or where it would be made. Null when the path is no full one. */
export async function roomAt(client: Client, folder: string): Promise<Room | null> {
    for (let path = folder; path.startsWith("/"); path = path.slice(0, path.lastIndexOf("/"))) {
        const room = await roomIn(client, path);
        if (room) return room;
    }
    return folder.startsWith("/") ? roomIn(client, "/") : null;
}

/** Those that captures can be written to. */
export async function listDrives(client: Client): Promise<Drive[]> {
    const { drives = [] } = await client.request("EnumerateDrives", {});
    const usable = drives.filter(({ type }) => type !== "reserved");
    const found = await Promise.all(
        usable.map(async (drive) => ({ drive, room: await roomIn(client, drive.name) })),
    );
    return found.flatMap(({ drive, room }) => (room ? [{ ...drive, ...room }] : []));
}
