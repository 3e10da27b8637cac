#include "Linux/X11/Keyboard/KeyboardMap.h"

#include <gmock/gmock.h>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr std::uint32_t latin = 0x61;
constexpr std::uint32_t cyrillic = 0x6d7;

std::vector<std::uint8_t> pasteKeys(const KeyboardMap& map) {
    return map.codesOf({keySymbol::v, keySymbol::capitalV});
}

std::optional<std::uint8_t> pasteKey(const KeyboardMap& map, std::uint8_t group) {
    return map.codeOf({keySymbol::v, keySymbol::capitalV}, group);
}

KeyboardMap mapOf(std::initializer_list<KeyboardMap::Key> keys) {
    KeyboardMap map;
    for (const KeyboardMap::Key& key : keys)
        map.add(key);
    return map;
}

TEST(KeyboardMap, findsTheKeysOfASymbolInAnyGroup) {
    const KeyboardMap map = mapOf({{38, {latin}},
                                   {55, {keySymbol::v, cyrillic}},
                                   {60, {latin, keySymbol::v}},
                                   {70, {}},
                                   {71, {keySymbol::capitalV}}});
    EXPECT_THAT(pasteKeys(map), ElementsAre(55, 60, 71));
    EXPECT_THAT(map.codesOf({cyrillic}), ElementsAre(55));
    EXPECT_THAT(map.codesOf({keySymbol::leftControl}), IsEmpty());
}

TEST(KeyboardMap, prefersTheKeyThatHasTheSymbolInTheGroup) {
    const KeyboardMap map = mapOf({{55, {keySymbol::v, latin}}, {60, {latin, keySymbol::v}}});
    EXPECT_THAT(pasteKey(map, 0), Optional(55));
    EXPECT_THAT(pasteKey(map, 1), Optional(60));
}

TEST(KeyboardMap, findsTheKeysOfASymbolInTheGroupOrElseInAny) {
    const KeyboardMap map = mapOf({{55, {keySymbol::v, cyrillic, cyrillic}},
                                   {60, {latin, keySymbol::v, cyrillic}},
                                   {71, {keySymbol::capitalV}}});
    EXPECT_THAT(map.codesOf({keySymbol::v}, 0), ElementsAre(55));
    EXPECT_THAT(map.codesOf({keySymbol::v, keySymbol::capitalV}, 1), ElementsAre(60, 71));
    EXPECT_THAT(map.codesOf({keySymbol::v}, 2), ElementsAre(55, 60));
    EXPECT_THAT(map.codesOf({keySymbol::leftControl}, 0), IsEmpty());
}

TEST(KeyboardMap, takesTheFirstKeyWhereTheGroupHasNone) {
    const KeyboardMap map = mapOf({{38, {latin, cyrillic}}, {55, {keySymbol::v, cyrillic}}});
    EXPECT_THAT(pasteKey(map, 1), Optional(55));
}

TEST(KeyboardMap, hasNoKeyForASymbolThatIsNowhere) {
    EXPECT_EQ(pasteKey(mapOf({{38, {latin}}, {39, {}}}), 0), std::nullopt);
    EXPECT_EQ(pasteKey(KeyboardMap(), 0), std::nullopt);
}

/// The key for Paste in a map in which key 61 gives V in every group. Key 60, which is tried first, has these
/// symbols and this group information.
std::optional<std::uint8_t> keyInGroup(std::uint8_t group, std::vector<std::uint32_t> symbols,
                                       std::uint8_t information) {
    KeyboardMap map;
    map.add({55, {latin, latin, latin, latin}});
    map.add({60, std::move(symbols), information});
    map.add({61, {keySymbol::v, keySymbol::v, keySymbol::v, keySymbol::v}});
    return pasteKey(map, group);
}

TEST(KeyboardMap, countsGroupsThatAKeyDoesNotHaveAround) {
    EXPECT_THAT(keyInGroup(2, {keySymbol::v, latin}, 0x02), Optional(60));
    EXPECT_THAT(keyInGroup(3, {keySymbol::v, latin}, 0x02), Optional(61));
}

TEST(KeyboardMap, takesTheLastGroupInsteadWhereTheKeySaysSo) {
    EXPECT_THAT(keyInGroup(2, {latin, keySymbol::v}, 0x42), Optional(60));
    EXPECT_THAT(keyInGroup(2, {keySymbol::v, latin}, 0x42), Optional(61));
}

TEST(KeyboardMap, takesTheGroupThatTheKeyNamesInstead) {
    EXPECT_THAT(keyInGroup(2, {latin, keySymbol::v}, 0x92), Optional(60));
    EXPECT_THAT(keyInGroup(2, {keySymbol::v, latin}, 0x92), Optional(61));
    EXPECT_THAT(keyInGroup(2, {keySymbol::v, latin}, 0xb2), Optional(60)); // names a group that it lacks
}

} // namespace

} // namespace tavel
