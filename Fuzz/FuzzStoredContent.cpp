#include "Fuzz/Fuzz.h"
#include "Linux/Store/LmdbEnvironment.h"
#include "Linux/Store/StoredContent.h"

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>

namespace tavel {
namespace {

/// An empty store of this process, in a directory that is removed at its end.
class Store {
public:
    Store() : directory_(makeDirectory()), environment_(directory_) {}
    ~Store() {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    const LmdbEnvironment& environment() const { return environment_; }

private:
    static std::filesystem::path makeDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "tavel-fuzz-XXXXXX").string();
        require(mkdtemp(name.data()) != nullptr);
        return name;
    }

    std::filesystem::path directory_;
    LmdbEnvironment environment_;
};

/// Takes pieces off the input, each behind its length of one byte.
class Pieces {
public:
    explicit Pieces(std::string_view input) : rest_(input) {}

    bool isAtEnd() const { return rest_.empty(); }

    std::string_view next() {
        if (rest_.empty())
            return {};
        const auto length = static_cast<unsigned char>(rest_.front());
        const std::string_view piece = rest_.substr(1, length);
        rest_.remove_prefix(1 + piece.size());
        return piece;
    }

private:
    std::string_view rest_;
};

/// What all keys of the board start with.
std::string boardPrefixOf(const BoardKey& key) {
    std::string prefix = key.changeCount();
    prefix.pop_back();
    return prefix;
}

void put(MDB_txn* transaction, MDB_dbi database, const std::string& key, std::string_view record) {
    MDB_val name{key.size(), const_cast<char*>(key.data())}; // only read, as is the record
    MDB_val value{record.size(), const_cast<char*>(record.data())};
    require(mdb_put(transaction, database, &name, &value, 0) == MDB_SUCCESS);
}

/// Puts each record of the input below the board's keys: the end of its key, then its value.
void putRecords(MDB_txn* transaction, MDB_dbi database, const BoardKey& key, Pieces input) {
    while (!input.isAtEnd()) {
        const std::string_view end = input.next();
        if (!end.empty() && end.size() <= 64) // LMDB's limit is above 500 bytes
            put(transaction, database, boardPrefixOf(key) + std::string(end), input.next());
    }
}

std::optional<std::string> dataOf(const StoredContent& content, std::string_view type) {
    std::optional<std::string> data;
    content.forEach([&](const StoredContent::Entry& entry) {
        if (entry.item == 0 && entry.type == type)
            data = entry.data;
        return !data;
    });
    return data;
}

void check(StoredContent content) {
    std::size_t entries = 0;
    std::uint32_t last = 0;
    content.forEach([&](const StoredContent::Entry& entry) {
        require(entries == 0 || entry.item >= last);
        last = entry.item;
        ++entries;
        // Reads the bytes, which a sanitizer checks.
        return !(std::string(entry.type) + std::string(entry.data)).starts_with("stop");
    });
    static_cast<void>(content.changeCount());
    static_cast<void>(content.itemCount());

    if (content.putOnFirstItem("public.new", "new"))
        require(dataOf(content, "public.new") == "new");
    require(content.setChangeCount(std::numeric_limits<std::int64_t>::max()));
    require(content.changeCount() == std::numeric_limits<std::int64_t>::max());
    require(content.removeAll());
    content.forEach([](const StoredContent::Entry&) -> bool { std::abort(); });
    require(content.itemCount() == 0);
}

} // namespace
} // namespace tavel

/// Puts any records where those of a pasteboard belong, and reads, writes and clears the pasteboard.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    static const Store store;
    const BoardKey key(std::nullopt);
    const auto write = LmdbWrite::begin(store.environment()); // rolled back
    require(write != nullptr);
    const MDB_dbi database = store.environment().database();
    putRecords(write->transaction(), database, key, Pieces(inputText(data, size)));
    check(StoredContent(write->transaction(), database, key));
    return 0;
}
