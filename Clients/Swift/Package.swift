// swift-tools-version:5.9
import PackageDescription

let package = Package(
    name: "TavelClipboard",
    platforms: [.macOS(.v13)],
    products: [.library(name: "TavelClipboard", targets: ["TavelClipboard"])],
    targets: [
        .target(name: "TavelClipboard"),
        .executableTarget(name: "watch-clipboard", dependencies: ["TavelClipboard"]),
    ]
)
