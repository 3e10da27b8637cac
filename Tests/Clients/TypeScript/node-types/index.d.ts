// The declarations of Node.js that the client, its package's example and nothing else use. They stand in for
// @types/node, which comes with Debian's Node.js but not with that of others.

declare namespace NodeJS {
    interface Timeout {
        readonly timeout: unique symbol;
    }
}

interface Buffer extends Uint8Array {
    indexOf(value: string | number, offset?: number): number;
    subarray(begin?: number, end?: number): Buffer;
    toString(encoding?: "base64"): string;
}

declare const Buffer: {
    from(text: string, encoding?: "base64"): Buffer;
    from(memory: ArrayBufferLike, offset: number, length: number): Buffer;
    concat(parts: readonly Uint8Array[]): Buffer;
};

declare class TextDecoder {
    constructor(encoding: string, options: { fatal?: boolean; ignoreBOM?: boolean });
    decode(bytes: Uint8Array): string;
}

declare const console: { log(...values: unknown[]): void };
declare const process: {
    argv: string[];
    env: Record<string, string | undefined>;
    pid: number;
    stdin: AsyncIterable<Buffer>;
};
declare function setTimeout(action: () => void, time: number): NodeJS.Timeout;
declare function clearTimeout(timer: NodeJS.Timeout | undefined): void;
declare function queueMicrotask(action: () => void): void;

declare module "node:events" {
    class EventEmitter {
        on(name: string, listener: (...values: any[]) => void): this;
        once(name: string, listener: (...values: any[]) => void): this;
        off(name: string, listener: (...values: any[]) => void): this;
        emit(name: string, ...values: unknown[]): boolean;
    }
}

declare module "node:child_process" {
    import { EventEmitter } from "node:events";
    interface Writable extends EventEmitter {
        readonly writable: boolean;
        write(text: string): boolean;
        end(): void;
    }
    interface Readable extends EventEmitter {
        destroy(): void;
    }
    class ChildProcess extends EventEmitter {
        readonly stdin: Writable | null;
        readonly stdout: Readable | null;
        readonly pid?: number | undefined;
        kill(signal: "SIGKILL"): boolean;
    }
    function spawn(
        program: string,
        values: readonly string[],
        options: { stdio: ["pipe", "pipe", "inherit"]; env: Record<string, string | undefined> },
    ): ChildProcess;
    function execFile(
        program: string,
        values: readonly string[],
        options: { timeout: number },
        done: (error: Error | null, output: string, errors: string) => void,
    ): ChildProcess;
}

declare module "node:path" {
    function resolve(...paths: string[]): string;
}

declare module "node:fs/promises" {
    function readFile(path: string): Promise<Buffer>;
}
