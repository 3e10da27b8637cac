import Foundation

/// One run of TavelClipboardAgent as a child process; make another one to start it again.
///
/// Any thread may call everything. A thread of the client reads all the time, and a queue writes, so an agent that does
/// not read holds up nobody. No wait is without a limit. Call `end()` at last: the threads keep the client until then.
///
/// Each command returns the pasteboard's change count, and throws a `ClipboardAgentError`.
public final class ClipboardAgent: @unchecked Sendable {
    /// Ends with the agent. Of events that nobody takes, the newest 64 are kept.
    public let events: AsyncStream<ClipboardEvent>

    static let longestLine = 64 << 20 // bytes; the agent's lines are far shorter
    static let grace: TimeInterval = 5 // seconds that an agent has to end by itself

    private let told: AsyncStream<ClipboardEvent>.Continuation
    private let timeout: TimeInterval
    private let process = Process()
    private let input = Pipe()
    private let output = Pipe()
    private let exited = DispatchSemaphore(value: 0)
    private let writing = DispatchQueue(label: "TavelClipboard.writing")
    private let lock = NSLock() // guards what follows
    private var pending: [Int: CheckedContinuation<Message, Error>] = [:]
    private var ends: [CheckedContinuation<Void, Never>] = []
    private var lastNumber = 0
    private var over: ClipboardAgentError?

    /// Starts the agent at that path. The arguments are added to the agent's own. The time-out is in seconds, for each
    /// reply.
    public init(program: URL, arguments: [String] = [], timeout: TimeInterval = 30) throws {
        (events, told) = AsyncStream.makeStream(of: ClipboardEvent.self, bufferingPolicy: .bufferingNewest(64))
        self.timeout = timeout
        process.executableURL = program
        process.arguments = ["--parent-pid", String(ProcessInfo.processInfo.processIdentifier)] + arguments
        process.standardInput = input
        process.standardOutput = output
        process.terminationHandler = { [exited] _ in exited.signal() }
        #if canImport(Darwin)
        // Without it, writing to an agent that has ended would end this process, too.
        _ = fcntl(input.fileHandleForWriting.fileDescriptor, F_SETNOSIGPIPE, 1)
        #else
        signal(SIGPIPE, SIG_IGN)
        #endif
        do {
            try process.run()
        } catch {
            throw ClipboardAgentError.notStarted(String(describing: error))
        }
        Thread { [self] in receive() }.start()
    }

    /// Lets the agent carry out what was sent, and end. Kills it after so many seconds. May be called repeatedly.
    public func end(within seconds: TimeInterval = ClipboardAgent.grace) async {
        writing.async { [self] in try? input.fileHandleForWriting.close() }
        DispatchQueue.global().asyncAfter(deadline: .now() + seconds) { [self] in kill() }
        await withCheckedContinuation { waiting in
            let isOver = lock.withLock {
                if over == nil { ends.append(waiting) }
                return over != nil
            }
            if isOver { waiting.resume() }
        }
    }

    // MARK: - Commands

    @discardableResult
    public func ping() async throws -> Int {
        try await request("ping")
    }

    @discardableResult
    public func writeText(_ text: String, marker: String = "") async throws -> Int {
        try await request("write_text", ["text_b64": Data(text.utf8).base64EncodedString(), "marker": marker])
    }

    @discardableResult
    public func writeFiles(_ files: [URL], marker: String = "", expectedSequence: Int? = nil) async throws -> Int {
        try await write(files, as: "files", marker, expectedSequence)
    }

    /// Writes a PNG file's content unchanged.
    @discardableResult
    public func writeImage(_ file: URL, marker: String = "", expectedSequence: Int? = nil) async throws -> Int {
        try await write([file], as: "image", marker, expectedSequence)
    }

    /// Writes the formats of one content. Each file is called by its format, as "text.html".
    @discardableResult
    public func writeFormats(_ files: [URL], marker: String = "", expectedSequence: Int? = nil) async throws -> Int {
        try await write(files, as: "formats", marker, expectedSequence)
    }

    /// Writes a picture as PNG. The data is a file's content: PNG, JPEG, GIF, TIFF, WebP, BMP, HEIC or AVIF.
    @discardableResult
    public func writeImageData(_ data: Data) async throws -> Int {
        try await request("write_image_data", ["image_b64": data.base64EncodedString()])
    }

    /// The agent will not report the current content.
    @discardableResult
    public func discardPending() async throws -> Int {
        try await request("discard_pending")
    }

    /// Switches pasting into the file manager on or off.
    @discardableResult
    public func configureFilePrompt(renamePrompt: Bool) async throws -> Int {
        try await request("configure_file_prompt", ["rename_prompt": renamePrompt])
    }

    private func write(
        _ files: [URL], as kind: String, _ marker: String, _ expectedSequence: Int?
    ) async throws -> Int {
        var fields: [String: Any] = ["kind": kind, "paths": files.map(\.path), "marker": marker]
        fields["expected_sequence"] = expectedSequence
        return try await request("write_files", fields)
    }

    private func request(_ command: String, _ fields: [String: Any] = [:]) async throws -> Int {
        let number = nextNumber()
        var message = fields
        message["command"] = command
        message["request_id"] = number
        var line = try JSONSerialization.data(withJSONObject: message)
        line.append(0x0A)
        let reply = try await reply(to: line, number, command)
        let sequence = try Message.required(reply.sequence, "sequence")
        guard reply.ok == true else {
            throw ClipboardAgentError.refused(command: command, reason: reply.reason ?? "", sequence: sequence)
        }
        return sequence
    }

    private func nextNumber() -> Int {
        lock.withLock {
            lastNumber += 1
            return lastNumber
        }
    }

    private func reply(to line: Data, _ number: Int, _ command: String) async throws -> Message {
        try await withCheckedThrowingContinuation { waiting in
            let failure = lock.withLock {
                if over == nil { pending[number] = waiting }
                return over
            }
            if let failure {
                waiting.resume(throwing: failure)
                return
            }
            writing.async { [self] in send(line) }
            DispatchQueue.global().asyncAfter(deadline: .now() + timeout) { [self] in
                taken(number)?.resume(throwing: ClipboardAgentError.timedOut(command: command))
            }
        }
    }

    /// Returns who waits for this reply, once.
    private func taken(_ number: Int) -> CheckedContinuation<Message, Error>? {
        lock.withLock { pending.removeValue(forKey: number) }
    }

    // MARK: - The pipes

    /// FileHandle raises exceptions that Swift cannot catch, so the system's functions are used.
    private func send(_ line: Data) {
        let descriptor = input.fileHandleForWriting.fileDescriptor
        line.withUnsafeBytes { bytes in
            var rest = bytes[...]
            while !rest.isEmpty {
                let count = Foundation.write(descriptor, UnsafeRawBufferPointer(rebasing: rest).baseAddress, rest.count)
                if count >= 0 {
                    rest = rest.dropFirst(count)
                } else if errno != EINTR {
                    kill() // An agent that reads nothing more is of no use.
                    return
                }
            }
        }
    }

    private func receive() {
        let descriptor = output.fileHandleForReading.fileDescriptor
        let size = 1 << 16
        var buffer = [UInt8](repeating: 0, count: size)
        var line = Data()
        var failure: ClipboardAgentError?
        while failure == nil {
            let count = read(descriptor, &buffer, size)
            if count < 0 && errno == EINTR { continue }
            if count <= 0 { break }
            do {
                try take(buffer[..<count], &line)
            } catch {
                failure = .notAnAgent(String(describing: error))
                kill()
            }
        }
        finish(failure)
    }

    /// Takes the lines that end in these bytes. The line that does not is kept.
    private func take(_ bytes: ArraySlice<UInt8>, _ line: inout Data) throws {
        var rest = bytes
        while let end = rest.firstIndex(of: 0x0A) {
            line.append(contentsOf: rest[..<end])
            rest = rest[(end + 1)...]
            let message = try JSONDecoder().decode(Message.self, from: line)
            line.removeAll(keepingCapacity: true)
            try take(message)
        }
        line.append(contentsOf: rest)
        if line.count > Self.longestLine { throw Message.Missing(key: "end of the line") }
    }

    private func take(_ message: Message) throws {
        if let event = message.event {
            told.yield(try message.asEvent(event))
            return
        }
        _ = try Message.required(message.ok, "ok")
        _ = try Message.required(message.sequence, "sequence")
        taken(try Message.required(message.number, "request_id"))?.resume(returning: message)
    }

    private func kill() {
        // Only a process that runs has its number for itself.
        if process.isRunning { _ = Foundation.kill(process.processIdentifier, SIGKILL) }
    }

    /// Waits for the process and tells everybody of its end.
    private func finish(_ failure: ClipboardAgentError?) {
        if exited.wait(timeout: .now() + Self.grace) == .timedOut {
            kill() // It has closed its output without ending.
            _ = exited.wait(timeout: .now() + Self.grace)
        }
        let ended = failure ?? .ended(status: process.isRunning ? nil : process.terminationStatus)
        let (replies, waiting) = lock.withLock {
            over = ended
            defer { (pending, ends) = ([:], []) }
            return (Array(pending.values), ends)
        }
        told.finish()
        for reply in replies { reply.resume(throwing: ended) }
        for end in waiting { end.resume() }
    }
}
