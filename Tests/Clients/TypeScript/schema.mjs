// The TypeScript client sends what the protocol's schema allows, and understands every event of it.

import assert from "node:assert/strict";
import { test } from "node:test";
import { ClipboardAgent } from "tavel-clipboard";

test("the client follows the schema", async () => {
    const agent = new ClipboardAgent({ program: process.env.TAVEL_TEST_SCHEMA_AGENT });
    const events = [];
    agent.on("event", (event) => events.push(event));
    await agent.start();
    try {
        await agent.ping();
        await agent.writeText("é", { marker: "m" });
        await agent.writeFiles(["/a", "/b"], { expectedSequence: 1 });
        await agent.writeImage("/a", { expectedSequence: 1 });
        await agent.writeFormats(["/text.txt"], { expectedSequence: 1 });
        await agent.writeImageData(Buffer.from("picture"));
        await agent.discardPending();
        await agent.configureFilePrompt(true);
        await agent.request("quit");
    } finally {
        await agent.end();
    }
    assert.deepEqual(events, [
        { type: "announcement", sequence: 1, marker: "m" },
        { type: "text", sequence: 2, marker: "m", text: "é" },
        { type: "files", sequence: 3, marker: "m", paths: ["/a", "/b"] },
        { type: "image", sequence: 4, marker: "m", path: "/image.png" },
        { type: "formats", sequence: 5, marker: "m", paths: ["/text.html", "/text.txt"] },
        { type: "file_renamed", sequence: 6 },
        { type: "log", level: "warning", message: "Texte presse-papiers ignoré (>4 Mio)" },
    ]);
});
