/**
 * A client of TavelClipboardAgent for parent applications in Node.js 18 and later. README.md shows how to use it.
 * No wait is without a limit, and every failure but a TypeError is an AgentError. Times are in milliseconds.
 */
import { type ChildProcess, execFile, spawn } from "node:child_process";
import { EventEmitter } from "node:events";
import { resolve as absolutePath } from "node:path";

/** Bytes. The agent's lines are far shorter; a program that writes a longer one is no agent. */
export const LONGEST_LINE = 64 * 1024 * 1024;

const GRACE = 5000; // an agent's time to end by itself

// ---- events

interface Content {
    /** The pasteboard's change count. */
    sequence: number;
    /** The marker beside the content: the parent's own, or empty. */
    marker: string;
}

/** There is a new content. Its description follows with the same sequence, if the agent can describe it. */
export interface Announcement extends Content {
    type: "announcement";
}

export interface TextChange extends Content {
    type: "text";
    text: string;
}

export interface FilesChange extends Content {
    type: "files";
    paths: string[];
}

/** A PNG file, which the agent deletes when it reports the next picture, or ends. */
export interface ImageChange extends Content {
    type: "image";
    path: string;
}

/** One file per format, called by it. The agent deletes them when it reports the next formats, or ends. */
export interface FormatsChange extends Content {
    type: "formats";
    paths: string[];
}

/** A content was pasted as a file. */
export interface FileRenamed {
    type: "file_renamed";
    sequence: number;
}

export interface LogMessage {
    type: "log";
    level: string;
    message: string;
}

/** An event of a later agent. */
export interface UnknownEvent {
    type: "unknown";
    fields: Record<string, unknown>;
}

export type AgentEvent =
    | Announcement
    | TextChange
    | FilesChange
    | ImageChange
    | FormatsChange
    | FileRenamed
    | LogMessage
    | UnknownEvent;

// ---- options

export interface AgentOptions {
    /** The agent's path. Without it, start() looks for one with findAgent(). */
    program?: string | undefined;
    /** Added to the agent's own arguments. */
    arguments?: readonly string[] | undefined;
    /** The agent's environment; that of this process if missing. */
    environment?: Record<string, string | undefined> | undefined;
    /** For each reply; 30,000 if missing. */
    timeout?: number | undefined;
}

export interface TextOptions {
    /** At most 512 bytes of UTF-8; empty if missing. */
    marker?: string | undefined;
}

export interface FileOptions extends TextOptions {
    /** The change count that the parent saw last. The command is refused if the content has changed since. */
    expectedSequence?: number | undefined;
}

// ---- errors

/** The base of all errors of this module. */
export class AgentError extends Error {
    constructor(message: string) {
        super(message);
        this.name = new.target.name;
    }
}

/** The agent's program is missing, or cannot be started. */
export class AgentNotFound extends AgentError {}

/** The agent refused a command, for a reason that can be shown to the user (in French). */
export class CommandRefused extends AgentError {
    readonly reason: string;
    readonly sequence: number;

    constructor(command: string, reply: Reply) {
        super(`${command}: ${reply.reason}`);
        this.reason = reply.reason;
        this.sequence = reply.sequence;
    }
}

/** The agent did not reply in time. Whether it carries the command out later is unknown. */
export class AgentTimeout extends AgentError {}

/** The agent ended, was ended, or was never started. */
export class AgentEnded extends AgentError {
    /** Null after a signal, or if unknown. */
    readonly exitCode: number | null;
    readonly signal: string | null;

    constructor(message: string, exitCode: number | null = null, signal: string | null = null) {
        super(message);
        this.exitCode = exitCode;
        this.signal = signal;
    }
}

/** The program wrote something that no agent writes, and was killed. */
export class ProtocolError extends AgentEnded {}

// ---- the messages

interface Reply {
    request_id: number;
    ok: boolean;
    reason: string;
    sequence: number;
}

type Fields = Record<string, unknown>;

function text(fields: Fields, key: string): string {
    const value = fields[key];
    if (typeof value !== "string") throw new Error(`no string "${key}"`);
    return value;
}

function integer(fields: Fields, key: string): number {
    const value = fields[key];
    if (typeof value !== "number" || !Number.isInteger(value)) throw new Error(`no integer "${key}"`);
    return value;
}

function pathsOf(fields: Fields): string[] {
    const value = fields["paths"];
    if (!Array.isArray(value) || !value.every((path) => typeof path === "string")) throw new Error("no paths");
    return value as string[];
}

function decodedText(fields: Fields): string {
    const bytes = Buffer.from(text(fields, "text_b64"), "base64");
    if (bytes.length !== integer(fields, "bytes")) throw new Error("wrong base64");
    return utf8.decode(bytes);
}

function changeOf(fields: Fields): AgentEvent {
    const content = { sequence: integer(fields, "sequence"), marker: text(fields, "marker") };
    if (fields["kind"] === undefined) return { type: "text", ...content, text: decodedText(fields) };
    switch (text(fields, "kind")) {
        case "unsupported":
            return { type: "announcement", ...content };
        case "files":
            return { type: "files", ...content, paths: pathsOf(fields) };
        case "image": {
            const [path] = pathsOf(fields);
            if (path === undefined) throw new Error("no path");
            return { type: "image", ...content, path };
        }
        case "formats":
            return { type: "formats", ...content, paths: pathsOf(fields) };
        default:
            return { type: "unknown", fields };
    }
}

function eventOf(fields: Fields): AgentEvent {
    switch (fields["event"]) {
        case "change":
            return changeOf(fields);
        case "log":
            return { type: "log", level: text(fields, "level"), message: text(fields, "message") };
        case "file_renamed":
            return { type: "file_renamed", sequence: integer(fields, "sequence") };
        default:
            return { type: "unknown", fields };
    }
}

function replyOf(fields: Fields): Reply {
    const ok = fields["ok"];
    if (typeof ok !== "boolean") throw new Error('no boolean "ok"');
    return {
        request_id: integer(fields, "request_id"),
        ok,
        reason: text(fields, "reason"),
        sequence: integer(fields, "sequence"),
    };
}

const utf8 = new TextDecoder("utf-8", { fatal: true, ignoreBOM: true });

function fieldsOf(line: Buffer): Fields {
    const value: unknown = JSON.parse(utf8.decode(line));
    if (typeof value !== "object" || value === null || Array.isArray(value)) throw new Error("no object");
    return value as Fields;
}

/** Half a surrogate pair has no UTF-8; the agent would drop the line. */
function wellFormed(value: string): string {
    if (/\p{Surrogate}/u.test(value)) throw new TypeError("a text with half a surrogate pair");
    return value;
}

/**
 * Returns the path in the environment variable TAVEL_CLIPBOARD_AGENT, or else where the package is installed, as
 * pkg-config says. An application that brings its own agent passes the agent's path instead.
 */
export async function findAgent(): Promise<string> {
    const named = process.env["TAVEL_CLIPBOARD_AGENT"];
    if (named) return named;
    return new Promise((found, failed) => {
        execFile("pkg-config", ["--variable=agent", "tavel-clipboard-agent"], { timeout: GRACE }, (error, output) => {
            if (error === null) found(output.trimEnd());
            else failed(new AgentNotFound("TAVEL_CLIPBOARD_AGENT is not set, and pkg-config does not know the agent"));
        });
    });
}

// ---- one run of the agent

interface Waiting {
    resolve(reply: Reply): void;
    reject(error: Error): void;
}

/** From the start of a process to its end. */
class Run {
    over: AgentEnded | undefined;
    readonly started: Promise<void>;
    readonly ended: Promise<AgentEnded>;
    readonly #child: ChildProcess;
    readonly #pending = new Map<number, Waiting>();
    readonly #timers = new Set<NodeJS.Timeout>();
    readonly #onEvent: (event: AgentEvent) => void;
    #tellEnd: (ended: AgentEnded) => void = () => undefined;
    #failure: string | undefined;
    #lastNumber = 0;
    #begun: Buffer[] = []; // of the line that has not ended yet
    #begunLength = 0;

    constructor(program: string, options: AgentOptions, onEvent: (event: AgentEvent) => void) {
        this.#onEvent = onEvent;
        this.ended = new Promise((resolve) => (this.#tellEnd = resolve));
        const child = spawn(program, ["--parent-pid", String(process.pid), ...(options.arguments ?? [])], {
            stdio: ["pipe", "pipe", "inherit"],
            env: options.environment ?? process.env,
        });
        this.#child = child;
        this.started = new Promise((resolve, reject) => {
            child.once("spawn", resolve);
            child.on("error", (error) => {
                reject(new AgentNotFound(`cannot start ${program}: ${error.message}`));
                if (child.pid === undefined) this.#finish(null, null);
            });
        });
        // An agent that reads nothing more is of no use.
        child.stdin?.on("error", () => child.kill("SIGKILL"));
        child.stdout?.on("data", (chunk: Buffer) => this.#take(chunk));
        // An agent may close its output without ending, and leave a process behind that holds it open.
        child.stdout?.once("end", () => this.#after(GRACE, () => child.kill("SIGKILL")));
        child.once("exit", () => this.#after(GRACE, () => child.stdout?.destroy()));
        child.once("close", (code, signal) => this.#finish(code, signal));
    }

    get pid(): number | undefined {
        return this.#child.pid;
    }

    async submit(command: string, fields: Fields, timeout: number): Promise<Reply> {
        const number = ++this.#lastNumber;
        const line = JSON.stringify({ ...fields, command, request_id: number }, (_, value: unknown) =>
            typeof value === "string" ? wellFormed(value) : value,
        );
        if (this.over !== undefined) throw this.over;
        if (this.#child.stdin?.writable !== true) throw new AgentEnded("the agent is being ended");
        let timer: NodeJS.Timeout | undefined;
        try {
            return await new Promise<Reply>((resolve, reject) => {
                this.#pending.set(number, { resolve, reject });
                const late = () => reject(new AgentTimeout(`${command}: no reply within ${timeout} ms`));
                timer = setTimeout(late, timeout);
                this.#child.stdin?.write(line + "\n");
            });
        } finally {
            clearTimeout(timer);
            this.#pending.delete(number);
        }
    }

    /** Lets the agent carry out what was sent and end; kills it at the time-out. */
    async end(timeout: number): Promise<void> {
        this.#child.stdin?.end();
        this.#after(timeout, () => {
            this.#child.kill("SIGKILL");
            this.#after(timeout, () => this.#child.stdout?.destroy());
        });
        await this.ended;
    }

    #after(time: number, action: () => void): void {
        if (this.over === undefined) this.#timers.add(setTimeout(action, time));
    }

    #take(chunk: Buffer): void {
        if (this.#failure !== undefined) return;
        let begin = 0;
        for (let end = chunk.indexOf("\n"); end >= 0; end = chunk.indexOf("\n", begin)) {
            const line = Buffer.concat([...this.#begun, chunk.subarray(begin, end)]);
            begin = end + 1;
            this.#begun = [];
            this.#begunLength = 0;
            this.#guarded(() => this.#takeLine(line));
        }
        this.#begun.push(chunk.subarray(begin));
        this.#begunLength += chunk.length - begin;
        if (this.#begunLength > LONGEST_LINE) this.#fail("too long a line");
    }

    #guarded(action: () => void): void {
        try {
            if (this.#failure === undefined) action();
        } catch (error) {
            this.#fail(String(error));
        }
    }

    #takeLine(line: Buffer): void {
        const fields = fieldsOf(line);
        if ("event" in fields) {
            const event = eventOf(fields);
            // What a listener throws costs no other message.
            queueMicrotask(() => this.#onEvent(event));
            return;
        }
        const reply = replyOf(fields);
        this.#pending.get(reply.request_id)?.resolve(reply);
    }

    #fail(failure: string): void {
        this.#failure = failure;
        this.#begun = [];
        this.#begunLength = 0;
        this.#child.kill("SIGKILL");
    }

    #finish(code: number | null, signal: string | null): void {
        if (this.over !== undefined) return;
        this.over =
            this.#failure === undefined
                ? new AgentEnded(`the agent has ended with ${signal ?? `status ${code}`}`, code, signal)
                : new ProtocolError(`the program is no agent, and was killed: ${this.#failure}`, code, signal);
        for (const timer of this.#timers) clearTimeout(timer);
        for (const waiting of this.#pending.values()) waiting.reject(this.over);
        this.#tellEnd(this.over);
    }
}

// ---- the client

function filesFields(kind: string, paths: readonly string[], options: FileOptions): Fields {
    const fields: Fields = { kind, paths: paths.map((path) => absolutePath(path)), marker: options.marker ?? "" };
    if (options.expectedSequence !== undefined) fields["expected_sequence"] = options.expectedSequence;
    return fields;
}

export interface ClipboardAgent {
    on(name: "event", listener: (event: AgentEvent) => void): this;
    on(name: "end", listener: (ended: AgentEnded) => void): this;
    once(name: "event", listener: (event: AgentEvent) => void): this;
    once(name: "end", listener: (ended: AgentEnded) => void): this;
    off(name: "event", listener: (event: AgentEvent) => void): this;
    off(name: "end", listener: (ended: AgentEnded) => void): this;
}

/**
 * The agent as a child process. It emits "event" for each event, and "end" when the agent ends without end().
 *
 * Each command resolves to the pasteboard's change count, and rejects with CommandRefused, AgentTimeout or AgentEnded,
 * or with a TypeError for half a surrogate pair.
 */
export class ClipboardAgent extends EventEmitter {
    readonly #options: AgentOptions;
    #run: Run | undefined;
    #ending = false;

    constructor(options: AgentOptions = {}) {
        super();
        this.#options = options;
    }

    /** How the agent ended; undefined while it runs, and before the first start. */
    get ended(): AgentEnded | undefined {
        return this.#run?.over;
    }

    get running(): boolean {
        return this.#run !== undefined && this.#run.over === undefined;
    }

    get pid(): number | undefined {
        return this.#run?.pid;
    }

    /** Rejects with AgentNotFound. */
    async start(): Promise<void> {
        if (this.running) throw new AgentError("the agent is running");
        const program = this.#options.program ?? (await findAgent());
        try {
            this.#run = new Run(program, this.#options, (event) => this.emit("event", event));
        } catch (error) {
            throw new AgentNotFound(`cannot start ${program}: ${String(error)}`);
        }
        const run = this.#run;
        this.#ending = false;
        await run.started;
        void run.ended.then((ended) => {
            if (this.#run === run && !this.#ending) this.emit("end", ended);
        });
    }

    /** Lets the agent carry out what was sent, and end. Kills it after the time-out. May be called repeatedly. */
    async end(timeout: number = GRACE): Promise<void> {
        this.#ending = true;
        await this.#run?.end(timeout);
    }

    async restart(timeout: number = GRACE): Promise<void> {
        await this.end(timeout);
        await this.start();
    }

    /** Sends any command. */
    async request(command: string, fields: Record<string, unknown> = {}): Promise<number> {
        if (this.#run === undefined) throw new AgentEnded("the agent was not started");
        const reply = await this.#run.submit(command, fields, this.#options.timeout ?? 30_000);
        if (!reply.ok) throw new CommandRefused(command, reply);
        return reply.sequence;
    }

    async ping(): Promise<number> {
        return this.request("ping");
    }

    async writeText(value: string, options: TextOptions = {}): Promise<number> {
        const text_b64 = Buffer.from(wellFormed(value)).toString("base64");
        return this.request("write_text", { text_b64, marker: options.marker ?? "" });
    }

    async writeFiles(paths: readonly string[], options: FileOptions = {}): Promise<number> {
        return this.request("write_files", filesFields("files", paths, options));
    }

    /** Writes a PNG file's content unchanged. */
    async writeImage(path: string, options: FileOptions = {}): Promise<number> {
        return this.request("write_files", filesFields("image", [path], options));
    }

    /** Writes the formats of one content. Each file is called by its format, as "text.html". */
    async writeFormats(paths: readonly string[], options: FileOptions = {}): Promise<number> {
        return this.request("write_files", filesFields("formats", paths, options));
    }

    /** Writes a picture as PNG. The data is a file's content: PNG, JPEG, GIF, TIFF, WebP, BMP, HEIC or AVIF. */
    async writeImageData(data: Uint8Array): Promise<number> {
        const bytes = Buffer.from(data.buffer, data.byteOffset, data.byteLength);
        return this.request("write_image_data", { image_b64: bytes.toString("base64") });
    }

    /** The agent will not report the current content. */
    async discardPending(): Promise<number> {
        return this.request("discard_pending");
    }

    /** Switches pasting into the file manager on or off. */
    async configureFilePrompt(renamePrompt: boolean): Promise<number> {
        return this.request("configure_file_prompt", { rename_prompt: renamePrompt });
    }
}
