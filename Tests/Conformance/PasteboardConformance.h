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

/// An implementation of Pasteboard under the conformance suite.
class PasteboardBackend {
public:
    virtual ~PasteboardBackend() = default;

    /// A new object for the pasteboard, in this program.
    virtual std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name) = 0;

    /// A new object for the same pasteboard, in another program.
    virtual std::shared_ptr<Pasteboard> openElsewhere(const std::optional<std::string>& name) = 0;

    /// Whether the name is one that the platform itself may list beside the types of a content.
    virtual bool isNameOfThePlatform(std::string_view) const { return false; }
};

/// Makes a new backend for each test, so that a backend may have a server or a store of its own.
struct PasteboardBackendMaker {
    const char* label; // letters and digits, as a part of the tests' names
    std::unique_ptr<PasteboardBackend> (*make)();
};

void PrintTo(const PasteboardBackendMaker& maker, std::ostream* out);

/// Names the instances of a suite after their backends.
std::string backendLabel(const testing::TestParamInfo<PasteboardBackendMaker>& info);

/// The contract of Pasteboard. A program that links TavelPasteboardConformance tests a backend with
/// INSTANTIATE_TEST_SUITE_P. Each test has an unused pasteboard, which two programs have opened.
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

    /// The types that the content has, without the names that the platform lists beside them.
    std::vector<std::string> typesOf(Pasteboard& pasteboard) const;

    /// The results of `data` and `string` in a form that compares and prints.
    static std::optional<std::string> dataOf(Pasteboard& pasteboard, std::string_view type);
    static std::optional<std::string> textOf(Pasteboard& pasteboard, std::string_view type);
    static std::optional<std::string> textOf(Pasteboard& pasteboard);

    /// Pseudo-random bytes, so that a page or a block in the wrong place shows.
    static Bytes patternOf(std::size_t size, std::uint32_t seed);

    std::unique_ptr<PasteboardBackend> backend;
    std::string name; // unique to this test
    std::shared_ptr<Pasteboard> ours;
    std::shared_ptr<Pasteboard> theirs; // the same pasteboard, another program's object
};

/// Only for backends whose platform shows other programs a replacement as one change.
class ReplacementIsolationConformance : public PasteboardConformance {};

/// Only for backends whose platform takes every name for a type, and tells names of another case apart.
class AnyNameConformance : public PasteboardConformance {};

/// Only for backends whose platform keeps the items of another program's content apart.
class ItemConformance : public PasteboardConformance {};

/// Only for backends whose platform does not cut zero bytes off the end of a text as terminators.
class TrailingZeroConformance : public PasteboardConformance {};

/// Only for backends whose general pasteboard, and the one with the empty name, belong to the test. Tests
/// must not touch the user's.
class GeneralPasteboardConformance : public PasteboardConformance {};

} // namespace tavel
