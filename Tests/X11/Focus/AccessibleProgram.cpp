#include "Tests/X11/Focus/AccessibleProgram.h"

#include "Linux/X11/Focus/FilterHandover.h"

#include <memory>
#include <utility>

namespace tavel {

namespace {

FilterHandover handover;

/// 64 bits, the lower half first.
GVariant* statesOf(const AccessibleProgram::Element& element) {
    std::uint32_t bits = 0;
    for (const unsigned int state : element.states)
        bits |= 1U << state;
    GVariantBuilder halves;
    g_variant_builder_init(&halves, G_VARIANT_TYPE("au"));
    g_variant_builder_add(&halves, "u", bits);
    g_variant_builder_add(&halves, "u", 0U);
    return g_variant_builder_end(&halves);
}

} // namespace

AccessibleProgram::AccessibleProgram(const TestAccessibilityBus& bus)
    : connection_(bus.connect()), name_(g_dbus_connection_get_unique_name(connection_.get())) {
    handover.give();
    filter_ = g_dbus_connection_add_filter(connection_.get(), filter, this, nullptr);
}

void AccessibleProgram::set(const std::string& path, const Element& element) {
    const std::lock_guard lock(mutex_);
    elements_[path] = element;
}

void AccessibleProgram::announce(const std::string& path) {
    callOnBus(connection_.get(), "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root",
              "org.a11y.atspi.Socket", "Embed", g_variant_new("((so))", name_.c_str(), path.c_str()));
}

void AccessibleProgram::setMatches(const std::vector<std::string>& paths) {
    const std::lock_guard lock(mutex_);
    matches_ = paths;
    hasMatches_ = true;
}

void AccessibleProgram::setCached(const std::vector<std::string>& paths) {
    const std::lock_guard lock(mutex_);
    cached_ = paths;
}

void AccessibleProgram::beforeRole(std::function<bool(const std::string& path)> hook) {
    const std::lock_guard lock(mutex_);
    beforeRole_ = std::move(hook);
}

void AccessibleProgram::setSilent(bool silent) {
    const std::lock_guard lock(mutex_);
    isSilent_ = silent;
}

void AccessibleProgram::setBusy(bool busy) {
    std::vector<std::shared_ptr<GDBusMessage>> calls;
    {
        const std::lock_guard lock(mutex_);
        isBusy_ = busy;
        if (!busy)
            calls.swap(heldCalls_);
    }
    for (const auto& call : calls)
        answer(call.get());
}

int AccessibleProgram::roleQuestions() {
    const std::lock_guard lock(mutex_);
    return roleQuestions_;
}

void AccessibleProgram::tellFocus(const std::string& path, int hasFocus) {
    GVariantBuilder none;
    g_variant_builder_init(&none, G_VARIANT_TYPE("a{sv}"));
    tell(path, g_variant_new("(siiva{sv})", "focused", hasFocus, 0, g_variant_new_int32(0), &none));
}

void AccessibleProgram::tell(const std::string& path, GVariant* body) {
    emit(path, "org.a11y.atspi.Event.Object", "StateChanged", body);
}

void AccessibleProgram::activate(const std::string& path) {
    GVariantBuilder none;
    g_variant_builder_init(&none, G_VARIANT_TYPE("a{sv}"));
    emit(path, "org.a11y.atspi.Event.Window", "Activate",
         g_variant_new("(siiva{sv})", "", 0, 0, g_variant_new_string("window"), &none));
}

void AccessibleProgram::emit(const std::string& path, const char* interface, const char* member,
                             GVariant* body) {
    g_dbus_connection_emit_signal(connection_.get(), nullptr, path.c_str(), interface, member, body, nullptr);
}

void AccessibleProgram::vanish() {
    if (connection_ == nullptr)
        return;
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
    g_dbus_connection_remove_filter(connection_.get(), filter_);
    handover.take();
    connection_.reset();
}

GDBusMessage* AccessibleProgram::filter(GDBusConnection*, GDBusMessage* message, gboolean incoming,
                                        gpointer self) {
    const FilterHandover::Scope scope(handover);
    if (incoming != FALSE && g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL &&
        static_cast<AccessibleProgram*>(self)->takeOn(message)) {
        g_object_unref(message);
        return nullptr;
    }
    return message;
}

/// False if GDBus is to answer that there is no such method.
bool AccessibleProgram::takeOn(GDBusMessage* call) {
    {
        const std::lock_guard lock(mutex_);
        if (isBusy_) {
            heldCalls_.emplace_back(static_cast<GDBusMessage*>(g_object_ref(call)), g_object_unref);
            return true;
        }
    }
    return answer(call);
}

/// The same.
bool AccessibleProgram::answer(GDBusMessage* call) {
    const std::string method = g_dbus_message_get_member(call);
    const std::string path = g_dbus_message_get_path(call);
    std::function<bool(const std::string&)> hook;
    {
        const std::lock_guard lock(mutex_);
        if (isSilent_)
            return true;
        if (method == "GetRole") {
            ++roleQuestions_;
            hook = beforeRole_;
        }
    }
    if (hook && !hook(path))
        return true;
    GVariant* const body = answerTo(method, path);
    if (body == nullptr)
        return false;
    const auto reply = std::unique_ptr<GDBusMessage, void (*)(gpointer)>(
        g_dbus_message_new_method_reply(call), g_object_unref);
    g_dbus_message_set_body(reply.get(), body);
    g_dbus_connection_send_message(connection_.get(), reply.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
    return true;
}

GVariant* AccessibleProgram::answerTo(const std::string& method, const std::string& path) {
    const std::lock_guard lock(mutex_);
    if (method == "GetMatches")
        return hasMatches_ ? g_variant_new("(@a(so))", listOf(matches_)) : nullptr;
    if (method == "GetItems")
        return cached_.empty() ? nullptr : g_variant_new("(@a((so)(so)(so)iiassusau))", cachedItems());
    const auto found = elements_.find(path);
    if (found == elements_.end())
        return nullptr;
    const Element& element = found->second;
    if (method == "GetRole")
        return g_variant_new("(u)", element.role);
    if (method == "GetChildren")
        return g_variant_new("(@a(so))", listOf(element.children));
    if (method != "GetState")
        return nullptr;
    return g_variant_new("(@au)", statesOf(element));
}

/// As GTK 4 does: with what nobody here looks at left empty.
GVariant* AccessibleProgram::cachedItems() const {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a((so)(so)(so)iiassusau)"));
    for (const std::string& path : cached_) {
        const Element& element = elements_.at(path);
        g_variant_builder_add(&list, "((so)(so)(so)iiassus@au)", name_.c_str(), path.c_str(), name_.c_str(),
                              "/root", "", "/", 0, 0, nullptr, "", element.role, "", statesOf(element));
    }
    return g_variant_builder_end(&list);
}

GVariant* AccessibleProgram::listOf(const std::vector<std::string>& paths) const {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(so)"));
    for (const std::string& path : paths)
        g_variant_builder_add(&list, "(so)", name_.c_str(), path.c_str());
    return g_variant_builder_end(&list);
}

} // namespace tavel
