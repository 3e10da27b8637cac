// Sessions of the TypeScript client with the real agent and another application, in the place that in-place has made.

import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { existsSync, mkdtempSync, readFileSync, writeFileSync } from "node:fs";
import { basename, join } from "node:path";
import { afterEach, beforeEach, test } from "node:test";
import { AgentEnded, ClipboardAgent, CommandRefused } from "tavel-clipboard";

import { largePicture, smallPicture, within } from "./support.mjs";

const { TAVEL_TEST_AGENT: program, TAVEL_TEST_PASTEBOARD: toolProgram, TAVEL_TEST_PLACE: place } = process.env;
const MARKER_TYPE = "com.corvelle.tavelbridge.clipboard-origin-v1";
const LARGEST_TEXT = "Voilà/\n".repeat(4 * 1024 * 128);

function tool(options, input = "") {
    const run = spawnSync(toolProgram, options, { input, maxBuffer: 1 << 27, timeout: 60_000 });
    assert.equal(run.status, 0, String(run.stderr));
    return run.stdout;
}

let agent, sequence, events, told, directory;

beforeEach(async () => {
    directory = mkdtempSync(join(process.env.TMPDIR, "tavel-test-"));
    events = [];
    told = () => undefined;
    agent = new ClipboardAgent({ program });
    agent.on("event", (event) => {
        events.push(event);
        told();
    });
    await agent.start();
    sequence = await agent.ping();
    if (place === "wayland") {
        // Without the module, the agent would use its store, on which the tests pass as well.
        assert.ok(readFileSync(`/proc/${agent.pid}/maps`, "utf8").includes("tavel-wayland"));
    }
});

afterEach(async () => {
    await agent.end();
    assert.equal(agent.ended.exitCode, 0);
});

function file(name, content) {
    const path = join(directory, name);
    writeFileSync(path, content);
    return path;
}

async function nextEvent() {
    while (events.length === 0) await within(new Promise((resolve) => (told = resolve)), "an event");
    return events.shift();
}

/** Returns the event after the announcement, without its sequence. */
async function described() {
    const announcement = await nextEvent();
    assert.ok(announcement.sequence > sequence);
    sequence = announcement.sequence;
    assert.deepEqual(announcement, { type: "announcement", sequence, marker: "" });
    const { sequence: same, ...rest } = await nextEvent();
    assert.equal(same, sequence);
    return rest;
}

test("texts of every length of base64 are reported", async () => {
    for (const text of ["", "a", "é", "été", 'Voilà 😀\0/\\"', "\ufeffmark"]) {
        tool(["copy"], text);
        assert.deepEqual(await described(), { type: "text", marker: "", text });
    }
});

test("the largest text passes both ways", async () => {
    assert.equal(Buffer.byteLength(LARGEST_TEXT), 4 * 1024 * 1024);
    tool(["copy"], LARGEST_TEXT);
    assert.ok((await described()).text === LARGEST_TEXT);
    await agent.writeText(LARGEST_TEXT.toUpperCase());
    assert.ok(tool(["paste"]).toString() === LARGEST_TEXT.toUpperCase());
});

test("a text is written with its marker", async () => {
    assert.ok((await agent.writeText("Bonjour", { marker: "d'ici 😀" })) > sequence);
    assert.equal(tool(["paste"]).toString(), "Bonjour");
    assert.equal(tool(["paste", "--type", MARKER_TYPE]).toString(), "d'ici 😀");
});

test("large pictures pass both ways", async () => {
    const picture = largePicture();
    await agent.writeImageData(picture);
    assert.ok(tool(["paste", "--type", "png"]).equals(picture));
    sequence = await agent.ping();
    tool(["copy", "--type", "png"], picture);
    const { type, path } = await described();
    assert.equal(type, "image");
    assert.ok(readFileSync(path).equals(picture));
});

test("files pass both ways", async () => {
    const paths = [file("d'été.txt", "content"), file("100%.txt", "content")];
    tool(["copy-files", ...paths]);
    assert.deepEqual(await described(), { type: "files", marker: "", paths });
    assert.equal(await agent.writeFiles(paths, { expectedSequence: sequence }), await agent.ping());
    await assert.rejects(agent.writeFiles(paths, { expectedSequence: sequence }), {
        name: "CommandRefused",
        reason: "Le presse-papiers local a changé pendant le transfert",
    });
});

test("formats pass both ways", async () => {
    const paths = [file("text.html", "<b>Bonjour</b>"), file("text.txt", "Bonjour")];
    tool(["set", `html=${paths[0]}`, `text=${paths[1]}`]);
    const formats = await described();
    assert.equal(formats.type, "formats");
    assert.deepEqual(
        formats.paths.map((path) => basename(path)),
        ["text.html", "text.txt"],
    );
    tool(["clear"]);
    await agent.writeFormats(paths);
    assert.equal(tool(["paste"]).toString(), "Bonjour");
    await agent.writeImage(file("picture", smallPicture()));
    assert.ok(tool(["paste", "--type", "png"]).equals(smallPicture()));
});

test("a refusal has the reason", async () => {
    await assert.rejects(agent.writeImageData(Buffer.from("no picture")), (error) => {
        assert.ok(error instanceof CommandRefused);
        assert.deepEqual([error.reason, error.sequence], ["Image historique invalide", sequence]);
        return true;
    });
    await agent.configureFilePrompt(false);
    await agent.discardPending();
});

test("commands are answered while a large event comes", async () => {
    tool(["copy"], LARGEST_TEXT);
    const sequences = await Promise.all(Array.from({ length: 200 }, () => agent.ping()));
    assert.deepEqual(
        sequences,
        [...sequences].sort((one, other) => one - other),
    );
    assert.ok((await described()).text === LARGEST_TEXT);
});

test("an agent is started again", async () => {
    const first = agent.pid;
    await agent.restart();
    assert.notEqual(agent.pid, first);
    assert.ok(!existsSync(`/proc/${first}`), "the first agent is still there");
    sequence = await agent.ping();
    tool(["copy"], "after that");
    assert.equal((await described()).text, "after that");
    const ending = agent.end();
    await assert.rejects(agent.ping(), AgentEnded);
    await ending;
});
