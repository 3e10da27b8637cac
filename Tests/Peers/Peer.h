#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// An application that copies and pastes through its toolkit's own functions, on the selection CLIPBOARD.
///
/// The copy functions throw std::runtime_error if the application does not own the clipboard afterwards. The
/// paste functions return nullopt, false or an empty list if the toolkit finds nothing of that kind.
class Peer {
public:
    virtual ~Peer() = default;

    virtual void copyText(const std::string& text) = 0;
    virtual void copyHtml(const std::string& html, const std::string& text) = 0;
    virtual void copyImage(const std::string& file) = 0;
    virtual void copyFiles(const std::vector<std::string>& paths) = 0; // absolute
    virtual void copyBytes(const std::string& type, const std::string& bytes) = 0;

    /// Answers requestors until the end of standard input, also after another program has taken the
    /// clipboard.
    virtual void serve() = 0;

    virtual std::optional<std::string> pasteText() = 0;
    virtual std::optional<std::string> pasteHtml() = 0;
    virtual bool pasteImage(const std::string& file) = 0; // as PNG; false if there is none
    virtual std::vector<std::string> pasteFiles() = 0;    // paths; the URL of a file without a path
    virtual std::optional<std::string> pasteBytes(const std::string& type) = 0;
    virtual std::vector<std::string> targets() = 0;
};

/// Runs the command line with the peer that `make` creates. Calls `make` only for a valid command line.
/// Returns the exit status:
///   0  done
///   1  there is nothing to paste; nothing was printed
///   2  misuse or failure, explained on standard error
///   3  time-out after 20 s, reported on standard error
/// A copy command prints "ready" when the application owns the clipboard, and then serves without a time
/// limit.
int runPeer(int argumentCount, char** arguments, const std::function<std::unique_ptr<Peer>()>& make);

/// Waits for standard input and discards what it reads. Returns false at the end of the input.
bool discardInput();

} // namespace tavel
