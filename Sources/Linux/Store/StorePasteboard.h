#pragma once

#include "Linux/Store/LmdbEnvironment.h"
#include "Linux/Store/StoredContent.h"
#include "Platform/Pasteboard.h"

#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// A named pasteboard in the embedded store: every object of the same name, in whatever process of the user,
/// is the same pasteboard. Contents outlive the processes. Data is delivered at once, so reads never block;
/// a write waits for another process's write to end. Large payloads are read without being copied: they share
/// the store's mapping.
class StorePasteboard final : public Pasteboard {
public:
    StorePasteboard(std::shared_ptr<const LmdbEnvironment> environment,
                    const std::optional<std::string>& name);

    std::int64_t changeCount() override;
    std::int64_t noticedChangeCount() override { return changeCount(); }
    std::vector<std::string> types() override;
    std::optional<std::string> availableType(std::span<const std::string_view> wanted) override;
    std::optional<Bytes> string(std::string_view type) override;
    std::optional<Bytes> data(std::string_view type) override;
    std::vector<std::string> filePaths() override;
    std::int64_t clearContents() override;
    bool setString(std::string_view text, std::string_view type) override;
    bool setData(const Bytes& data, std::string_view type) override;
    bool canHold(const Representation& representation) override;
    bool writeItems(std::span<const PasteboardItem> items) override;
    bool addTypes(std::span<const Representation> representations) override;
    bool update(const std::function<bool()>& steps) override;

private:
    struct View;

    View view();
    StoredContent contentOf(MDB_txn* transaction) const;
    bool write(const std::function<bool(StoredContent&)>& change);
    bool writeOwn(const std::function<bool(StoredContent&)>& change);
    bool clear();

    std::shared_ptr<const LmdbEnvironment> environment_;
    BoardKey key_;
    std::shared_ptr<LmdbSnapshot> countSnapshot_; // idle between polls
    std::unique_ptr<LmdbWrite> updating_;         // while `update` runs its steps
    bool updateFailed_ = false;
    bool clearedInUpdate_ = false;
    std::optional<std::int64_t> ownCount_; // the change count of this object's last clearing
};

} // namespace tavel
