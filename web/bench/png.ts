// Pictures as small PNG files. Browsers write theirs fast, at twice the size.
import { deflateSync } from "node:zlib";

function crc(bytes: Buffer): number {
    let rest = ~0;
    for (const byte of bytes) {
        rest ^= byte;
        for (let bit = 0; bit < 8; ++bit) rest = (rest >>> 1) ^ (rest & 1 ? 0xedb88320 : 0);
    }
    return ~rest >>> 0;
}

// https://www.w3.org/TR/png/#5Chunk-layout
function chunk(type: string, data: Buffer): Buffer {
    const length = Buffer.alloc(4);
    const sum = Buffer.alloc(4);
    const content = Buffer.concat([Buffer.from(type, "latin1"), data]);
    length.writeUInt32BE(data.length);
    sum.writeUInt32BE(crc(content));
    return Buffer.concat([length, content, sum]);
}

/** `rgba` holds the rows from the top; every colour is drawn with 64 steps, and all is opaque. */
export function smallPng(rgba: Uint8Array, width: number): Buffer {
    const height = rgba.length / 4 / width;
    const header = Buffer.alloc(13);
    header.writeUInt32BE(width, 0);
    header.writeUInt32BE(height, 4);
    header.set([8, 2, 0, 0, 0], 8);
    // Each row without a filter: few colours repeat better as they are.
    const rows = Buffer.alloc(height * (1 + 3 * width));
    for (let from = 0, to = 0; from < rgba.length; from += 4) {
        if (from % (4 * width) === 0) ++to;
        for (let part = 0; part < 3; ++part)
            rows[to++] = Math.min(255, 4 * Math.round(rgba[from + part]! / 4));
    }
    return Buffer.concat([
        Buffer.from("\x89PNG\r\n\x1a\n", "latin1"),
        chunk("IHDR", header),
        chunk("IDAT", deflateSync(rows, { level: 9 })),
        chunk("IEND", Buffer.alloc(0)),
    ]);
}
