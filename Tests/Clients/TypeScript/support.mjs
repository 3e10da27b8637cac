// What the tests of the TypeScript client share.

import { randomFillSync } from "node:crypto";
import { deflateSync } from "node:zlib";

/** Fails if the promise takes a minute; a busy machine needs far less. */
export async function within(promise, wanted) {
    let timer;
    const late = new Promise((_, reject) => {
        timer = setTimeout(() => reject(new Error(`${wanted} does not come`)), 60_000);
    });
    return Promise.race([promise, late]).finally(() => clearTimeout(timer));
}

function crc32(data) {
    let crc = -1;
    for (const byte of data) {
        crc ^= byte;
        for (let bit = 0; bit < 8; ++bit) crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
    }
    return ~crc >>> 0;
}

function chunk(kind, data) {
    const named = Buffer.concat([Buffer.from(kind), data]);
    const [length, sum] = [Buffer.alloc(4), Buffer.alloc(4)];
    length.writeUInt32BE(data.length);
    sum.writeUInt32BE(crc32(named));
    return Buffer.concat([length, named, sum]);
}

function picture(width, height, rows) {
    const header = Buffer.from([0, 0, 0, 0, 0, 0, 0, 0, 8, 2, 0, 0, 0]);
    header.writeUInt32BE(width, 0);
    header.writeUInt32BE(height, 4);
    return Buffer.concat([
        Buffer.from("\x89PNG\r\n\x1a\n", "latin1"),
        chunk("IHDR", header),
        chunk("IDAT", deflateSync(rows)),
        chunk("IEND", Buffer.alloc(0)),
    ]);
}

export function smallPicture() {
    return picture(3, 2, Buffer.alloc(2 * (1 + 3 * 3)));
}

/** Returns a PNG file of about 3.6 MB, which do not compress. */
export function largePicture() {
    const [width, height] = [1200, 1000];
    const rows = randomFillSync(Buffer.alloc(height * (1 + 3 * width)));
    for (let row = 0; row < height; ++row) rows[row * (1 + 3 * width)] = 0; // no filter
    return picture(width, height, rows);
}
