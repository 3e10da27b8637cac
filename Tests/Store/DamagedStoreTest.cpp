#include "Linux/Store/PasteboardStore.h"
#include "Linux/Store/StorePasteboard.h"
#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tavel {

namespace {

namespace fs = std::filesystem;

/// A store that something has damaged while no process used it. Each damage is met by a child process: it may
/// find less than there was, but has to end by itself, with a pasteboard that takes and gives a content.
class DamagedStore : public testing::Test {
protected:
    static constexpr std::string_view someType = "net.example.some";
    static constexpr std::size_t pageBytes = 4096;

    DamagedStore() {
        const auto store = std::make_shared<const PasteboardStore>(directory());
        std::vector<PasteboardItem> items(50, {{std::string(pasteboardType::string), Bytes::copyOf("text")}});
        items.front().push_back({std::string(someType), Bytes::adopt(std::string(30'000, 'd'))});
        for (int change = 0; change < 20; ++change)
            StorePasteboard(store, "name").replaceWithItems(items);
        StorePasteboard(store, std::nullopt).replaceWithItems({&items.back(), 1});
        for (const auto& entry : fs::directory_iterator(directory()))
            whole_[entry.path().filename()] = contentOf(entry.path());
    }

    fs::path directory() const { return scratch_.runtimeDirectory(); }
    const std::map<std::string, std::string>& whole() const { return whole_; }

    void restore() const {
        fs::remove_all(directory());
        fs::create_directory(directory());
        fs::permissions(directory(), fs::perms::owner_all);
        for (const auto& [name, content] : whole_)
            write(name, content);
    }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(directory() / name, std::ios::binary) << content;
    }

    /// The name of the file with the content of "name".
    std::string contentName() const {
        const auto found =
            std::ranges::find_if(whole_, [](const auto& one) { return one.first.ends_with("-20"); });
        return found == whole_.end() ? std::string() : found->first;
    }

    void expectUsable(const std::string& what) const {
        ASSERT_EQ(exitStatusOf([&] {
                      alarm(60);
                      return use();
                  }),
                  0)
            << what;
    }

    static std::string contentOf(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    /// 0, or the number of the step that failed.
    int use() const {
        try {
            const auto store = std::make_shared<const PasteboardStore>(directory());
            StorePasteboard pasteboard(store, "name");
            if (pasteboard.changeCount() < 0)
                return 1;
            for (const std::string& type : pasteboard.types()) {
                static_cast<void>(pasteboard.string(type, ample));
                static_cast<void>(pasteboard.data(type, ample));
            }
            static_cast<void>(pasteboard.files(everyFile));
            static_cast<void>(StorePasteboard(store, std::nullopt).string(pasteboardType::string, ample));
            const PasteboardItem item{{std::string(someType), Bytes::copyOf("new")}};
            const auto count = pasteboard.replaceWithItems({&item, 1});
            if (!count || pasteboard.changeCount() != *count)
                return 2;
            const auto read = pasteboard.data(someType, ample);
            return read && read->view() == "new" ? 0 : 3;
        } catch (const Error&) {
            return 4;
        }
    }

    const TestDirectory scratch_;
    std::map<std::string, std::string> whole_;
};

TEST_F(DamagedStore, isUsedWithEachPageDamaged) {
    for (const auto& [name, content] : whole()) {
        for (std::size_t begin = 0; begin < content.size(); begin += pageBytes) {
            for (const char fill : {'\0', '\xFF'}) {
                std::string damaged = content;
                damaged.replace(begin, std::min(pageBytes, content.size() - begin), pageBytes, fill);
                damaged.resize(content.size());
                restore();
                write(name, damaged);
                expectUsable(name + " at " + std::to_string(begin));
            }
        }
    }
}

TEST_F(DamagedStore, isUsedWithEachFileCutShort) {
    for (const auto& [name, content] : whole()) {
        std::vector<std::size_t> lengths{0, 1, 23, 24, 25, 40, 100, 4095};
        for (std::size_t length = pageBytes; length < content.size(); length += pageBytes)
            lengths.push_back(length);
        for (const std::size_t length : lengths) {
            restore();
            write(name, content.substr(0, length));
            expectUsable(name + " of " + std::to_string(length));
        }
    }
}

// Goes on with other damages when the test is repeated: --gtest_repeat=50 makes 1,000 of them.
TEST_F(DamagedStore, isUsedAfterRandomDamages) {
    static unsigned seed = 0;
    for (int damage = 0; damage < 20; ++damage) {
        Random random(++seed);
        restore();
        auto file = std::next(whole().begin(), static_cast<std::ptrdiff_t>(random.below(whole().size())));
        std::string content = file->second;
        const std::size_t places = 1 + random.below(8);
        for (std::size_t place = 0; place < places && !content.empty(); ++place) {
            const std::size_t begin = random.below(content.size());
            const std::string bytes = random.bytes(1 + random.below(64));
            content.replace(begin, bytes.size(), bytes);
        }
        if (random.below(4) == 0)
            content.resize(random.below(2 * content.size() + 1), '\x01');
        write(file->first, content);
        expectUsable(file->first + ", seed " + std::to_string(seed));
    }
}

TEST_F(DamagedStore, isUsedWhateverStandsInPlaceOfAContent) {
    const std::vector<std::function<void(const fs::path&)>> others{
        [](const fs::path& path) { mkfifo(path.c_str(), 0600); },
        [](const fs::path& path) { fs::create_symlink("/dev/zero", path); },
        [](const fs::path& path) { fs::create_symlink(path, path); },
        [](const fs::path& path) { fs::create_directory(path); },
    };
    for (const auto& makeOther : others) {
        restore();
        const fs::path path = directory() / contentName();
        ASSERT_TRUE(fs::remove(path));
        makeOther(path);
        expectUsable("another kind of file");
    }
}

TEST_F(DamagedStore, losesOnlyTheDamagedContentAndCountsOn) {
    restore();
    write(contentName(), "secret, and no content");
    const auto store = std::make_shared<const PasteboardStore>(directory());
    StorePasteboard pasteboard(store, "name");
    EXPECT_EQ(pasteboard.changeCount(), 21);
    EXPECT_TRUE(pasteboard.types().empty());
    EXPECT_FALSE(fs::exists(directory() / contentName())) << "it may hold what was copied";
    EXPECT_EQ(StorePasteboard(store, std::nullopt).string(pasteboardType::string, ample)->view(), "text");
}

TEST_F(DamagedStore, takesNoCountThatLeavesNoRoomToCountOn) {
    restore();
    const std::string content = whole().at(contentName());
    const std::string key = contentName().substr(0, 65);
    for (const char* const count :
         {"9223372036854775807", "4611686018427387904", "99999999999999999999", "-1", "0", "1x", "", " 1"})
        write(key + count, content);
    {
        StorePasteboard pasteboard(std::make_shared<const PasteboardStore>(directory()), "name");
        EXPECT_EQ(pasteboard.changeCount(), 20);
    }
    write(key + "4611686018427387903", content);
    StorePasteboard pasteboard(std::make_shared<const PasteboardStore>(directory()), "name");
    EXPECT_EQ(pasteboard.changeCount(), 4611686018427387903);
    EXPECT_EQ(pasteboard.replaceWithItems({}), 4611686018427387904);
}

TEST_F(DamagedStore, isLeftInPeaceWhileAnotherProcessUsesIt) {
    restore();
    const PasteboardStore ours(directory());
    write("unfinished", "what another process is writing");
    EXPECT_EQ(exitStatusOf([&] {
                  const auto store = std::make_shared<const PasteboardStore>(directory());
                  return StorePasteboard(store, "name").changeCount() == 20 ? 0 : 1;
              }),
              0);
    EXPECT_TRUE(fs::exists(directory() / "unfinished"));
}

} // namespace

} // namespace tavel
