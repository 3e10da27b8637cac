import Foundation

/// What the agent reports. Every content is announced; its description follows with the same sequence, if the agent can
/// describe it. The marker is that of the parent that wrote the content, or empty.
public enum ClipboardEvent: Sendable, Equatable {
    case announcement(sequence: Int, marker: String)
    case text(String, sequence: Int, marker: String)
    case files([URL], sequence: Int, marker: String)
    /// A PNG file, which the agent deletes when it reports the next picture, or ends.
    case image(URL, sequence: Int, marker: String)
    /// One file per format, called by it. The agent deletes them when it reports the next formats, or ends.
    case formats([URL], sequence: Int, marker: String)
    /// A content was pasted as a file.
    case fileRenamed(sequence: Int)
    case log(level: String, message: String)
    /// Of a later agent.
    case unknown(String)
}

public enum ClipboardAgentError: Error, Sendable, Equatable {
    /// The program is missing, or cannot be started.
    case notStarted(String)
    /// The reason is for the user, in French.
    case refused(command: String, reason: String, sequence: Int)
    /// Whether the agent carries the command out later is unknown.
    case timedOut(command: String)
    /// The exit status, or the signal; nil if the agent did not even end when it was killed.
    case ended(status: Int32?)
    /// The program wrote something that no agent writes, and was killed.
    case notAnAgent(String)
}

/// A line from the agent: an event, or a reply if it has no event.
struct Message: Decodable {
    var event: String?
    var kind: String?
    var text: String?
    var paths: [String]?
    var marker: String?
    var level: String?
    var message: String?
    var number: Int?
    var ok: Bool?
    var reason: String?
    var sequence: Int?

    enum CodingKeys: String, CodingKey {
        case event, kind, paths, marker, level, message, ok, reason, sequence
        case text = "text_b64"
        case number = "request_id"
    }

    struct Missing: Error {
        let key: String
    }

    /// Throws an error if a key is missing that every agent sends.
    static func required<Value>(_ value: Value?, _ key: String) throws -> Value {
        guard let value else { throw Missing(key: key) }
        return value
    }

    func asEvent(_ event: String) throws -> ClipboardEvent {
        switch event {
        case "change":
            return try asChange()
        case "file_renamed":
            return .fileRenamed(sequence: try Self.required(sequence, "sequence"))
        case "log":
            return .log(level: try Self.required(level, "level"), message: try Self.required(message, "message"))
        default:
            return .unknown(event)
        }
    }

    private func asChange() throws -> ClipboardEvent {
        let sequence = try Self.required(sequence, "sequence")
        let marker = try Self.required(marker, "marker")
        switch kind {
        case nil:
            return .text(try decodedText(), sequence: sequence, marker: marker)
        case "unsupported":
            return .announcement(sequence: sequence, marker: marker)
        case "files":
            return .files(try files(), sequence: sequence, marker: marker)
        case "image":
            return .image(try Self.required(try files().first, "paths"), sequence: sequence, marker: marker)
        case "formats":
            return .formats(try files(), sequence: sequence, marker: marker)
        case let other?:
            return .unknown(other)
        }
    }

    private func files() throws -> [URL] {
        try Self.required(paths, "paths").map { URL(fileURLWithPath: $0) }
    }

    private func decodedText() throws -> String {
        let encoded = try Self.required(text, "text_b64")
        let padded = encoded + String(repeating: "=", count: (4 - encoded.utf8.count % 4) % 4) // the agent leaves it out
        let bytes = try Self.required(Data(base64Encoded: padded), "text_b64")
        return try Self.required(String(data: bytes, encoding: .utf8), "text_b64")
    }
}
