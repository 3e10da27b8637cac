#pragma once

#include "Platform/Pasteboard.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// One implementation of Pasteboard, as the conformance suite drives it.
class PasteboardBackend {
public:
    virtual ~PasteboardBackend() = default;

    /// The pasteboard as this program has it, a new object with each call.
    virtual std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name) = 0;

    /// The same pasteboard as another program has it.
    virtual std::shared_ptr<Pasteboard> openElsewhere(const std::optional<std::string>& name) = 0;
};

/// How the suite's parameter makes a backend: a new one for each test, so that a backend may bring a server
/// or a store of its own.
struct PasteboardBackendMaker {
    const char* label; // letters and digits: it becomes a part of the tests' names
    std::unique_ptr<PasteboardBackend> (*make)();
};

void PrintTo(const PasteboardBackendMaker& maker, std::ostream* out);

/// Names the instances of a suite after their backends.
std::string backendLabel(const testing::TestParamInfo<PasteboardBackendMaker>& info);

/// The contract of Pasteboard. A backend joins with INSTANTIATE_TEST_SUITE_P in a program that links
/// TavelPasteboardConformance. Each test has a pasteboard that nobody has used, in the hands of two programs.
class PasteboardConformance : public testing::TestWithParam<PasteboardBackendMaker> {
protected:
    using Items = std::vector<PasteboardItem>;
    using Values = std::vector<PasteboardValue>;

    static constexpr std::string_view someType = "net.example.some";
    static constexpr std::string_view otherType = "net.example.other";
    static constexpr std::string_view markerType = "net.example.marker";

    PasteboardConformance();

    /// Replaces the content, which has to succeed.
    static void copyText(Pasteboard& pasteboard, std::string_view text);
    static void copyData(Pasteboard& pasteboard, const Bytes& data, std::string_view type);
    static void copyItems(Pasteboard& pasteboard, const Items& items);

    static void clear(Pasteboard& pasteboard) { copyItems(pasteboard, {}); }

    static PasteboardValue textValue(std::string_view type, std::string_view text);
    static PasteboardValue dataValue(std::string_view type, std::string_view data);
    static Representation representation(std::string_view type, std::string_view data);
    static PasteboardItem textItem(std::string_view text);
    static PasteboardItem fileUrlItem(std::string_view url);

    /// What `data` and `string` give, in a form that compares and prints.
    static std::optional<std::string> dataOf(Pasteboard& pasteboard, std::string_view type);
    static std::optional<std::string> textOf(Pasteboard& pasteboard, std::string_view type);
    static std::optional<std::string> textOf(Pasteboard& pasteboard);

    /// Pseudo-random bytes, so that a page or a block in the wrong place shows.
    static Bytes patternOf(std::size_t size, std::uint32_t seed);

    std::unique_ptr<PasteboardBackend> backend;
    std::string name; // this test's own
    std::shared_ptr<Pasteboard> ours;
    std::shared_ptr<Pasteboard> theirs; // the same pasteboard, another program's object
};

/// Only for backends whose platform shows other programs a replacement as one change.
class ReplacementIsolationConformance : public PasteboardConformance {};

/// Only for backends whose platform keeps the items of another program's content apart.
class ItemConformance : public PasteboardConformance {};

/// Only for backends whose platform does not take zero bytes at the end of a text for its terminator.
class TrailingZeroConformance : public PasteboardConformance {};

/// Only for backends whose general pasteboard, and the one with the empty name, are the test's own. The
/// user's are nothing to test with.
class GeneralPasteboardConformance : public PasteboardConformance {};

} // namespace tavel
