#include "Fuzz/Fuzz.h"
#include "Linux/X11/Focus/AccessibleMessages.h"

#include <algorithm>

namespace tavel {
namespace {

struct Unref {
    void operator()(GDBusMessage* message) const { g_object_unref(message); }
};
using Message = std::unique_ptr<GDBusMessage, Unref>;

Message messageFrom(std::string_view bytes) {
    auto* const blob = reinterpret_cast<guchar*>(const_cast<char*>(bytes.data())); // only read
    return Message(g_dbus_message_new_from_blob(blob, bytes.size(), G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
}

void check(const AccessibleElement& element) {
    require(element.path.size() <= longestElementPath && element.path.starts_with('/'));
}

void readAsReply(GVariant* body) {
    if (g_variant_is_of_type(body, G_VARIANT_TYPE("(a(so))")) != FALSE) {
        const auto elements = elementsIn(body);
        require(elements.size() <= mostElements);
        std::ranges::for_each(elements, check);
    }
    if (g_variant_is_of_type(body, G_VARIANT_TYPE("(au)")) != FALSE)
        static_cast<void>(endsWithState(body, focusedState));
    if (g_variant_is_of_type(body, G_VARIANT_TYPE(cachedItemsType)) != FALSE) {
        if (const auto focused = onlyFocusedOf(body, [] { return false; }))
            check(*focused);
        require(!onlyFocusedOf(body, [] { return true; }));
    }
}

} // namespace
} // namespace tavel

/// The input is a message as it comes over the bus. GIO decodes it, as it does in the agent.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const Message message = messageFrom(inputText(data, size));
    if (message == nullptr)
        return 0;
    if (GVariant* const body = g_dbus_message_get_body(message.get()))
        readAsReply(body);
    if (const auto news = focusNewsIn(message.get())) {
        check(news->element);
        require(!tellsActivation(message.get()));
    }
    return 0;
}
