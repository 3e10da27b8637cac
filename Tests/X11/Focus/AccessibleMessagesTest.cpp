#include "Linux/X11/Focus/AccessibleMessages.h"

#include <gtest/gtest.h>

#include <string>

namespace tavel {

namespace {

struct Unref {
    void operator()(GDBusMessage* message) const { g_object_unref(message); }
};

GioPointer<GVariant> listOf(std::size_t count, const std::string& path = "/element") {
    GVariantBuilder elements;
    g_variant_builder_init(&elements, G_VARIANT_TYPE("a(so)"));
    for (std::size_t i = 0; i < count; ++i)
        g_variant_builder_add(&elements, "(so)", ":1.1", path.c_str());
    return GioPointer<GVariant>(g_variant_ref_sink(g_variant_new("(a(so))", &elements)));
}

std::string pathOf(std::size_t length) {
    return "/" + std::string(length - 1, 'p');
}

GVariant* cachedItem(const std::string& path, std::uint32_t states) {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("au"));
    g_variant_builder_add(&list, "u", states);
    return g_variant_new("((so)(so)(so)iiassusau)", ":1.1", path.c_str(), ":1.1", "/", ":1.1", "/", 0, 0,
                         nullptr, "", 0U, "", &list);
}

GioPointer<GVariant> cacheOf(std::initializer_list<GVariant*> items) {
    GVariant* const list =
        g_variant_new_array(G_VARIANT_TYPE("((so)(so)(so)iiassusau)"), std::data(items), items.size());
    return GioPointer<GVariant>(g_variant_ref_sink(g_variant_new_tuple(&list, 1)));
}

std::unique_ptr<GDBusMessage, Unref> focusGained(const std::string& path) {
    std::unique_ptr<GDBusMessage, Unref> message(
        g_dbus_message_new_signal(path.c_str(), "org.a11y.atspi.Event.Object", "StateChanged"));
    g_dbus_message_set_sender(message.get(), ":1.1");
    g_dbus_message_set_body(message.get(),
                            g_variant_new("(siiva{sv})", "focused", 1, 0, g_variant_new_int32(0), nullptr));
    return message;
}

constexpr std::uint32_t focusedMask = 1U << focusedState;
const auto never = [] { return false; };

TEST(AccessibleMessages, readsNoMoreElementsThanTheLimit) {
    EXPECT_EQ(elementsIn(listOf(mostElements).get()).size(), mostElements);
    EXPECT_EQ(elementsIn(listOf(mostElements + 1).get()).size(), mostElements);
    EXPECT_TRUE(elementsIn(nullptr).empty());
}

TEST(AccessibleMessages, passesOverElementsWithALongPath) {
    EXPECT_EQ(elementsIn(listOf(1, pathOf(longestElementPath)).get()).size(), 1U);
    EXPECT_TRUE(elementsIn(listOf(1, pathOf(longestElementPath + 1)).get()).empty());
    EXPECT_TRUE(onlyFocusedOf(cacheOf({cachedItem(pathOf(longestElementPath), focusedMask)}).get(), never));
    EXPECT_FALSE(
        onlyFocusedOf(cacheOf({cachedItem(pathOf(longestElementPath + 1), focusedMask)}).get(), never));
    EXPECT_TRUE(focusNewsIn(focusGained(pathOf(longestElementPath)).get()));
    EXPECT_FALSE(focusNewsIn(focusGained(pathOf(longestElementPath + 1)).get()));
}

TEST(AccessibleMessages, findsTheOnlyFocusedOfTheCachedElements) {
    const auto one =
        onlyFocusedOf(cacheOf({cachedItem("/a", 0), cachedItem("/b", focusedMask)}).get(), never);
    EXPECT_EQ(one, (AccessibleElement{":1.1", "/b"}));
    EXPECT_FALSE(
        onlyFocusedOf(cacheOf({cachedItem("/a", focusedMask), cachedItem("/b", focusedMask)}).get(), never));
    EXPECT_FALSE(onlyFocusedOf(cacheOf({cachedItem("/b", focusedMask)}).get(), [] { return true; }));
}

} // namespace

} // namespace tavel
