// Deletes files: by the host's trash where it has one, else by the gallery, for good.
import type { Client, HostAnswer } from "../api/client.js";
import type { Answer, Remover } from "../model/deletions.js";

function answersOf({ files = [] }: HostAnswer): Answer[] {
    return files.map(({ file, _return_code: code, _return_status: text }) => ({
        file,
        error: code === 0 ? "" : text || String(code),
    }));
}

export function removerFor(client: Client): Remover {
    return {
        get hasTrash() {
            return client.offers("Trash") && client.offers("Restore");
        },
        trash: async (files) => answersOf(await client.askHost("Trash", { files })),
        restore: async (files) => answersOf(await client.askHost("Restore", { files })),
        remove: async (file) => void (await client.request("RemoveGalleryItem", { file })),
    };
}
