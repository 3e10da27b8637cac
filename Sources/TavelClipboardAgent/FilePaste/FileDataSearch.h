#pragma once

#include "Platform/ImageCodec.h"
#include "Platform/Pasteboard.h"
#include "Support/Bytes.h"
#include "Support/Error.h"
#include "TavelClipboardAgent/Formats/ClipboardFormats.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace tavel {

/// The content of a file that is made from the pasteboard's content.
struct FileData {
    Bytes data;
    std::string ext; // without a dot
};

/// Looks for the first representation on the pasteboard that can become a file. Gathers one after the other,
/// in the order of preference, so that nothing is fetched that is not needed. May have to encode a picture.
/// Its destruction ends it. Main thread only.
class FileDataSearch : public std::enable_shared_from_this<FileDataSearch> {
public:
    /// The content was replaced meanwhile, or there is no memory for it.
    struct GivenUp {};

    /// The error is ("Tavel", 4) if nothing can become a file, and ("Tavel", 3) if a picture cannot be
    /// encoded here.
    using Outcome = std::variant<FileData, Error, GivenUp>;

    /// Must not throw.
    using Done = std::function<void(Outcome outcome)>;

    /// Searches the content with the noticed change count; `done` runs once. Null if it has run already, as
    /// nobody had to be waited for. `board` and `codec` must outlive the search.
    static std::shared_ptr<FileDataSearch> start(Pasteboard& board, ImageCodec& codec, Done done);

private:
    FileDataSearch(Pasteboard& board, ImageCodec& codec, Done done)
        : board_(board), codec_(codec), done_(std::move(done)) {}

    void listCandidates();
    void gatherNext();
    void tryNext(bool isCurrent);
    std::optional<FileData> fileFrom(const ClipboardFormat& format);
    std::optional<FileData> encodedPicture(const Bytes& data);
    void finish(Outcome outcome);

    Pasteboard& board_;
    ImageCodec& codec_;
    Done done_;                                     // empty once it has run
    std::deque<const ClipboardFormat*> candidates_; // offered and not tried yet, the preferred one first
    std::unique_ptr<Gathering> gathering_;
};

} // namespace tavel
