// What the TypeScript client does when the agent is missing, hangs, dies, or is another program.

import assert from "node:assert/strict";
import { chmodSync, existsSync, mkdtempSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { afterEach, beforeEach, test } from "node:test";
import {
    AgentEnded,
    AgentNotFound,
    AgentTimeout,
    ClipboardAgent,
    findAgent,
    LONGEST_LINE,
    ProtocolError,
} from "tavel-clipboard";

import { within } from "./support.mjs";

const real = process.env.TAVEL_TEST_AGENT;
const SHORT = 200; // ms, for time-outs that the tests let pass

const BEGIN = `#!/usr/bin/env python3
import json, os, signal, sys
def say(**fields):
    print(json.dumps(fields), flush=True)
def answer(line):
    say(request_id=json.loads(line)["request_id"], ok=True, reason="", sequence=1)
`;

let program, agent, ends;

beforeEach(() => {
    program = join(mkdtempSync(join(process.env.TMPDIR, "tavel-test-")), "agent");
    ends = [];
});

afterEach(async () => {
    await agent?.end(SHORT);
    if (agent?.pid !== undefined) assert.ok(!existsSync(`/proc/${agent.pid}`), "the process is still there");
});

async function start(path, options = {}) {
    agent = new ClipboardAgent({ program: path, ...options });
    agent.on("end", (ended) => ends.push(ended));
    await agent.start();
}

async function startFake(text, options) {
    writeFileSync(program, BEGIN + text);
    chmodSync(program, 0o755);
    await start(program, options);
}

/** Waits until the process has the state, as /proc tells it: a signal takes a moment. */
async function stopped(pid) {
    process.kill(pid, "SIGSTOP");
    while (!readFileSync(`/proc/${pid}/stat`, "utf8").includes(") T ")) await new Promise(setImmediate);
}

test("a missing program", async () => {
    await assert.rejects(start(program), AgentNotFound);
    await assert.rejects(agent.ping(), AgentEnded);
    writeFileSync(program, "no program");
    await assert.rejects(start(program), AgentNotFound);
    assert.ok(!agent.running);
    await assert.rejects(start(program + "\0"), AgentNotFound);
});

test("the program is found in the environment, or by pkg-config", async () => {
    const folder = dirname(program);
    const before = { ...process.env };
    try {
        process.env.PKG_CONFIG_PATH = folder;
        writeFileSync(join(folder, "tavel-clipboard-agent.pc"), `agent=${real}\nName: a\nDescription: a\nVersion: 1\n`);
        assert.equal(await findAgent(), real);
        process.env.PATH = folder;
        await assert.rejects(findAgent(), AgentNotFound);
        process.env.TAVEL_CLIPBOARD_AGENT = real;
        await start(undefined);
        await agent.ping();
    } finally {
        process.env.PATH = before.PATH;
        delete process.env.PKG_CONFIG_PATH;
        delete process.env.TAVEL_CLIPBOARD_AGENT;
    }
});

test("a crash fails pending and later commands", async () => {
    await start(real);
    await agent.ping();
    await stopped(agent.pid);
    const pending = Array.from({ length: 3 }, () => assert.rejects(agent.ping(), { signal: "SIGKILL" }));
    process.kill(agent.pid, "SIGKILL");
    await within(Promise.all(pending), "the failure");
    await assert.rejects(agent.ping(), AgentEnded);
    assert.deepEqual(
        ends.map((ended) => ended.signal),
        ["SIGKILL"],
    );
    await agent.restart();
    assert.equal(await agent.ping(), 0);
    await agent.end();
    assert.equal(agent.ended.exitCode, 0);
    assert.equal(ends.length, 1, "an end that the parent wanted was told");
});

test("a stopped agent costs no more than the time-out", async () => {
    // Ready when it says so, because the time-out is too short for a start.
    await startFake("say(event='log', level='', message='')\nsignal.pause()", { timeout: SHORT });
    await stopped(agent.pid);
    await assert.rejects(agent.ping(), AgentTimeout);
    await assert.rejects(agent.writeImageData(Buffer.alloc(8 << 20)), AgentTimeout); // more than the pipe takes
    await agent.end(SHORT);
    assert.equal(agent.ended.signal, "SIGKILL");
});

test("a late reply is nobody else's", async () => {
    await startFake(
        `first = sys.stdin.readline(); second = sys.stdin.readline()
say(request_id=1, ok=True, reason="", sequence=1); say(request_id=2, ok=True, reason="", sequence=2)
`,
        { timeout: 1000 },
    );
    await assert.rejects(agent.ping(), AgentTimeout);
    assert.equal(await agent.ping(), 2);
});

test("an agent that floods and does not read", async () => {
    await startFake("while True: say(event='log', level='', message='m' * 100000)", { timeout: SHORT });
    let events = 0;
    agent.on("event", () => ++events);
    await assert.rejects(agent.writeImageData(Buffer.alloc(8 << 20)), AgentTimeout);
    await agent.end(SHORT);
    assert.ok(events > 0);
});

test("a process that the agent leaves behind holds up nothing", async () => {
    await startFake(`line = sys.stdin.readline()
if (child := os.fork()) == 0: signal.pause()
say(request_id=1, ok=True, reason="", sequence=child)
`);
    const child = await agent.ping();
    try {
        await agent.end(SHORT);
        assert.equal(agent.ended.exitCode, 0);
    } finally {
        process.kill(child, "SIGKILL");
    }
});

test("an agent that only closes its output or its input is ended", async () => {
    await startFake("os.close(0); say(event='log', level='', message='')\nsignal.pause()");
    await new Promise((resolve) => agent.once("event", resolve));
    await assert.rejects(agent.writeImageData(Buffer.alloc(1 << 20)), AgentEnded);
    await startFake("os.close(1); signal.pause()");
    await assert.rejects(agent.ping(), AgentEnded);
});

test("what is no line of an agent ends it", async () => {
    const event = '"event":"change","marker":"","sequence":1';
    for (const line of [
        "text",
        "",
        "[]",
        "7",
        "null",
        "{",
        '{"request_id":1}',
        '{"request_id":1,"ok":1,"reason":"","sequence":1}',
        '{"request_id":"1","ok":true,"reason":"","sequence":1}',
        '{"request_id":1.5,"ok":true,"reason":"","sequence":1}',
        `{${event}}`,
        `{${event},"text_b64":"?","bytes":1}`,
        `{${event},"text_b64":"/w","bytes":1}`,
        `{${event},"kind":7}`,
        `{${event},"kind":"files","paths":[7]}`,
        `{${event},"kind":"image","paths":[]}`,
        '{"event":"log","level":"warning"}',
        '{"event":"file_renamed"}',
    ]) {
        await startFake(`sys.stdin.readline(); print(${JSON.stringify(line)}, flush=True)\nsignal.pause()`);
        await assert.rejects(agent.ping(), ProtocolError, line);
    }
});

test("too long a line ends the agent", async () => {
    await startFake(`sys.stdin.readline(); print("x" * ${LONGEST_LINE + 1}, flush=True)\nsignal.pause()`);
    await assert.rejects(agent.ping(), (error) => error instanceof ProtocolError && /too long/.test(error.message));
});

test("half a line at the end is no other failure", async () => {
    await startFake('sys.stdin.readline(); print("{", end="", flush=True)');
    await assert.rejects(agent.ping(), (error) => error instanceof AgentEnded && !(error instanceof ProtocolError));
});

test("unknown events are no failure", async () => {
    const events = [];
    await startFake(`line = sys.stdin.readline()
say(event="news", value=1); say(event="change", kind="news", marker="", sequence=1)
say(event="log", level="warning", message="m", more=1); answer(line)
`);
    agent.on("event", (event) => events.push(event));
    await agent.ping();
    assert.deepEqual(events, [
        { type: "unknown", fields: { event: "news", value: 1 } },
        { type: "unknown", fields: { event: "change", kind: "news", marker: "", sequence: 1 } },
        { type: "log", level: "warning", message: "m" },
    ]);
});

test("half a surrogate pair is refused at once", async () => {
    await start(real);
    await assert.rejects(agent.writeText("\ud800"), TypeError);
    await assert.rejects(agent.writeText("", { marker: "\udc00" }), TypeError);
    await assert.rejects(agent.writeFiles(["/\ud800"]), TypeError);
    await agent.writeText("😀");
});

test("what a listener throws costs no other message", async () => {
    const caught = [];
    const listeners = process.listeners("uncaughtException");
    process.removeAllListeners("uncaughtException");
    process.on("uncaughtException", (error) => caught.push(error.message));
    try {
        await startFake(`line = sys.stdin.readline()
say(event="log", level="", message="m"); answer(line)
`);
        agent.on("event", () => {
            throw new Error("the parent's mistake");
        });
        assert.equal(await agent.ping(), 1);
        await new Promise(setImmediate);
        assert.deepEqual(caught, ["the parent's mistake"]);
    } finally {
        process.removeAllListeners("uncaughtException");
        for (const listener of listeners) process.on("uncaughtException", listener);
    }
});
