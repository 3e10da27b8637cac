import Foundation
import TavelClipboard

@main
struct WatchClipboard {
    static func main() async throws {
        let paths = CommandLine.arguments.dropFirst().map { URL(fileURLWithPath: $0) }
        let agent = try ClipboardAgent(program: paths[0])
        Task.detached { for await event in agent.events { print(event) } }
        try await agent.writeText("Bonjour", marker: "my-application")
        try await agent.writeImageData(try Data(contentsOf: paths[1]))
        print("Copy something in another application. Return ends this program.")
        _ = readLine()
        await agent.end()
    }
}
