#include "Tests/Conformance/PasteboardConformance.h"

#include "Platform/PasteboardTypes.h"
#include "Support/Uuid.h"
#include "Tests/Support/ReadingLimits.h"

#include <algorithm>
#include <random>

namespace tavel {

namespace {

std::optional<std::string> stringFrom(const std::optional<Bytes>& bytes) {
    return bytes ? std::optional<std::string>(bytes->view()) : std::nullopt;
}

} // namespace

void PrintTo(const PasteboardBackendMaker& maker, std::ostream* out) {
    *out << maker.label;
}

std::string backendLabel(const testing::TestParamInfo<PasteboardBackendMaker>& info) {
    return info.param.label;
}

PasteboardConformance::PasteboardConformance()
    : backend(GetParam().make()), name("net.example.test." + makeUuid()), ours(backend->open(name)),
      theirs(backend->openElsewhere(name)) {}

void PasteboardConformance::copyText(Pasteboard& pasteboard, std::string_view text) {
    ASSERT_TRUE(pasteboard.replaceWithValues(Values{textValue(pasteboardType::string, text)}));
}

void PasteboardConformance::copyData(Pasteboard& pasteboard, const Bytes& data, std::string_view type) {
    ASSERT_TRUE(pasteboard.replaceWithValues(Values{{std::string(type), PasteboardValue::Form::data, data}}));
}

void PasteboardConformance::copyItems(Pasteboard& pasteboard, const Items& items) {
    ASSERT_TRUE(pasteboard.replaceWithItems(items));
}

PasteboardValue PasteboardConformance::textValue(std::string_view type, std::string_view text) {
    return {std::string(type), PasteboardValue::Form::text, Bytes::copyOf(text)};
}

PasteboardValue PasteboardConformance::dataValue(std::string_view type, std::string_view data) {
    return {std::string(type), PasteboardValue::Form::data, Bytes::copyOf(data)};
}

Representation PasteboardConformance::representation(std::string_view type, std::string_view data) {
    return {std::string(type), Bytes::copyOf(data)};
}

PasteboardItem PasteboardConformance::textItem(std::string_view text) {
    return {representation(pasteboardType::string, text)};
}

PasteboardItem PasteboardConformance::fileUrlItem(std::string_view url) {
    return {representation(pasteboardType::fileUrl, url)};
}

std::vector<std::string> PasteboardConformance::typesOf(Pasteboard& pasteboard) const {
    auto types = pasteboard.types();
    std::erase_if(types, [&](const std::string& type) { return backend->isNameOfThePlatform(type); });
    return types;
}

std::optional<std::string> PasteboardConformance::dataOf(Pasteboard& pasteboard, std::string_view type) {
    return stringFrom(pasteboard.data(type, ample));
}

std::optional<std::string> PasteboardConformance::textOf(Pasteboard& pasteboard, std::string_view type) {
    return stringFrom(pasteboard.string(type, ample));
}

std::optional<std::string> PasteboardConformance::textOf(Pasteboard& pasteboard) {
    return textOf(pasteboard, pasteboardType::string);
}

Bytes PasteboardConformance::patternOf(std::size_t size, std::uint32_t seed) {
    std::minstd_rand random(seed);
    std::string pattern(size, '\0');
    std::ranges::generate(pattern, [&] { return static_cast<char>(random() >> 8); });
    return Bytes::adopt(std::move(pattern));
}

// These suites are optional for a backend.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AnyNameConformance);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ItemConformance);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TrailingZeroConformance);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ReplacementIsolationConformance);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(GeneralPasteboardConformance);

} // namespace tavel
