#include "Linux/X11/Keyboard/KeyboardConnection.h"

#include "Linux/X11/Keyboard/KeyModifiers.h"
#include "Linux/X11/Keyboard/XkbProtocol.h"
#include "Linux/X11/X11Reply.h"

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace tavel {

namespace {

constexpr xcb_xkb_device_spec_t theKeyboard = XCB_XKB_ID_USE_CORE_KBD;

std::optional<xcb_window_t> rootOf(xcb_connection_t* connection, int number) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (screens.rem > 1 && number-- > 0)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? std::optional(screens.data->root) : std::nullopt;
}

bool hasTestExtension(xcb_connection_t* connection) {
    const xcb_query_extension_reply_t* const extension = xcb_get_extension_data(connection, &xcb_test_id);
    return extension != nullptr && extension->present != 0;
}

/// Announces the version of XKB, which the extension demands before any other request. Then makes a held key
/// repeat without releases in between. Returns the number of the extension's events, nullopt on failure.
std::optional<std::uint8_t> prepareXkb(xcb_connection_t* connection) {
    const xcb_query_extension_reply_t* const extension = xcb_get_extension_data(connection, &xcb_xkb_id);
    if (extension == nullptr || extension->present == 0)
        return std::nullopt;
    const auto use = xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION);
    constexpr std::uint32_t repeat = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const auto flags = xcb_xkb_per_client_flags(connection, theKeyboard, repeat, repeat, 0, 0, 0);
    const auto used = awaitReply(connection, use, xcb_xkb_use_extension_reply);
    const auto set = awaitReply(connection, flags, xcb_xkb_per_client_flags_reply);
    if (used == nullptr || used->supported == 0 || set == nullptr || (set->value & repeat) == 0)
        return std::nullopt;
    return extension->first_event;
}

/// Announces the version of XInput, as that extension demands.
bool prepareInput(xcb_connection_t* connection) {
    const xcb_query_extension_reply_t* const extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension == nullptr || extension->present == 0)
        return false;
    const auto cookie = xcb_input_xi_query_version(connection, 2, 1);
    const auto version = awaitReply(connection, cookie, xcb_input_xi_query_version_reply);
    return version != nullptr && (version->major_version > 2 || version->minor_version >= 1);
}

/// The identifiers of all keyboards that belong to a master device, that of XTEST included.
std::vector<xcb_input_device_id_t> keyboards(xcb_connection_t* connection) {
    const auto cookie = xcb_input_xi_query_device(connection, XCB_INPUT_DEVICE_ALL);
    const auto reply = awaitReply(connection, cookie, xcb_input_xi_query_device_reply);
    std::vector<xcb_input_device_id_t> found;
    if (reply == nullptr)
        return found;
    for (auto device = xcb_input_xi_query_device_infos_iterator(reply.get()); device.rem > 0;
         xcb_input_xi_device_info_next(&device)) {
        if (device.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD)
            found.push_back(device.data->deviceid);
    }
    return found;
}

xcb_atom_t testDeviceProperty(xcb_connection_t* connection) {
    constexpr std::string_view name = "XTEST Device";
    const auto cookie = xcb_intern_atom(connection, 0, name.size(), name.data());
    const auto reply = awaitReply(connection, cookie, xcb_intern_atom_reply);
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// The keys that are down in the reply to QueryDeviceState.
KeySet keysOf(const xcb_input_query_device_state_reply_t& state) {
    KeySet keys;
    for (auto part = xcb_input_query_device_state_classes_iterator(&state); part.rem > 0;
         xcb_input_input_state_next(&part)) {
        if (part.data->class_id == XCB_INPUT_INPUT_CLASS_KEY)
            keys |= keySetOf(reinterpret_cast<const xcb_input_key_state_t*>(part.data)->keys);
    }
    return keys;
}

KeyboardMap::Key keyOf(std::uint8_t code, const xcb_xkb_key_sym_map_t& symbols) {
    KeyboardMap::Key key{code, {}, symbols.groupInfo};
    const xcb_keysym_t* const all = xcb_xkb_key_sym_map_syms(&symbols);
    const std::size_t groups = symbols.groupInfo & 0xf;
    for (std::size_t group = 0; group < groups && group * symbols.width < symbols.nSyms; ++group)
        key.symbols.push_back(all[group * symbols.width]);
    return key;
}

} // namespace

std::unique_ptr<KeyboardConnection> KeyboardConnection::open(const char* display, std::string& refusal) {
    int screenNumber = 0;
    xcb_connection_t* const connection = xcb_connect(display, &screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
        refusal = "the X server does not answer";
    } else if (!hasTestExtension(connection)) {
        refusal = "the X server lacks the extension XTEST";
    } else if (!prepareInput(connection)) {
        refusal = "the X server lacks the extension XInput 2.1";
    } else {
        const auto root = rootOf(connection, screenNumber);
        const auto xkbEvent = prepareXkb(connection);
        if (root && xkbEvent)
            return std::unique_ptr<KeyboardConnection>(new KeyboardConnection(connection, *root, *xkbEvent));
        refusal = "the X server lacks the extension XKB";
    }
    xcb_disconnect(connection);
    return nullptr;
}

KeyboardConnection::KeyboardConnection(xcb_connection_t* connection, xcb_window_t root, std::uint8_t xkbEvent)
    : connection_(connection), root_(root), xkbEvent_(xkbEvent) {}

KeyboardConnection::~KeyboardConnection() {
    xcb_disconnect(connection_);
}

void KeyboardConnection::selectChanges(bool on) {
    const std::uint32_t rootEvents = on ? XCB_EVENT_MASK_PROPERTY_CHANGE : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &rootEvents);
    constexpr std::uint16_t changes = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t parts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    const std::uint16_t cleared = on ? 0 : changes;
    const std::uint16_t selected = on ? changes : 0;
    const xcb_xkb_select_events_details_t noDetails{};
    xcb_xkb_select_events_aux(connection_, theKeyboard, changes, cleared, selected, parts, on ? parts : 0,
                              &noDetails);
    xcb_flush(connection_);
}

bool KeyboardConnection::isKeyboardChange(const xcb_generic_event_t& event) const {
    if (event.response_type == XCB_MAPPING_NOTIFY)
        return true;
    // All events of the extension have one number. Their second byte tells them apart.
    return event.response_type == xkbEvent_ &&
           (event.pad0 == XCB_XKB_NEW_KEYBOARD_NOTIFY || event.pad0 == XCB_XKB_MAP_NOTIFY);
}

void KeyboardConnection::selectReleases(bool on) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } const selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                      on ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE} : 0};
    xcb_input_xi_select_events(connection_, root_, 1, &selection.head);
}

bool KeyboardConnection::isReleaseOf(xcb_keycode_t key, const xcb_generic_event_t& event) const {
    if (event.response_type != XCB_GE_GENERIC)
        return false;
    const auto& release = reinterpret_cast<const xcb_input_raw_key_release_event_t&>(event);
    return release.extension == xcb_get_extension_data(connection_, &xcb_input_id)->major_opcode &&
           release.event_type == XCB_INPUT_RAW_KEY_RELEASE && release.detail == key;
}

KeyboardMap KeyboardConnection::readMap() {
    const auto cookie = xcb_xkb_get_map(connection_, theKeyboard, XCB_XKB_MAP_PART_KEY_SYMS, 0, 0, 0, 0, 0, 0,
                                        0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const auto reply = awaitReply(connection_, cookie, xcb_xkb_get_map_reply);
    KeyboardMap map;
    if (reply == nullptr || (reply->present & XCB_XKB_MAP_PART_KEY_SYMS) == 0)
        return map;
    xcb_xkb_get_map_map_t parts{};
    xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(reply.get()), reply->nTypes, reply->nKeySyms,
                               reply->nKeyActions, reply->totalActions, reply->totalKeyBehaviors,
                               reply->virtualMods, reply->totalKeyExplicit, reply->totalModMapKeys,
                               reply->totalVModMapKeys, reply->present, &parts);
    auto keys = xcb_xkb_get_map_map_syms_rtrn_iterator(reply.get(), &parts);
    for (std::uint8_t code = reply->firstKeySym; keys.rem > 0; ++code, xcb_xkb_key_sym_map_next(&keys))
        map.add(keyOf(code, *keys.data));
    return map;
}

std::uint8_t KeyboardConnection::readGroup() {
    const auto cookie = xcb_xkb_get_state(connection_, theKeyboard);
    const auto reply = awaitReply(connection_, cookie, xcb_xkb_get_state_reply);
    return reply != nullptr ? reply->group : 0;
}

KeySet KeyboardConnection::keysDown() {
    const auto reply = awaitReply(connection_, xcb_query_keymap(connection_), xcb_query_keymap_reply);
    return reply != nullptr ? keySetOf(reply->keys) : KeySet();
}

KeySet KeyboardConnection::modifierKeys(const KeyboardMap& map) {
    const std::vector<std::uint8_t> mapping = readModifierMapping();
    const unsigned int locks = XCB_MOD_MASK_LOCK | modifiersOf(map.codesOf({keySymbol::numLock}), mapping);
    return tavel::modifierKeys(mapping, static_cast<std::uint16_t>(locks));
}

HeldKeys KeyboardConnection::heldKeys() {
    struct Device {
        xcb_input_xi_get_property_cookie_t testProperty;
        xcb_input_query_device_state_cookie_t state;
    };
    const xcb_atom_t property = testDeviceProperty(connection_);
    std::vector<Device> devices;
    for (const xcb_input_device_id_t id : keyboards(connection_))
        devices.push_back(
            {xcb_input_xi_get_property(connection_, id, 0, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 1),
             xcb_input_query_device_state(connection_, static_cast<std::uint8_t>(id))});
    HeldKeys held;
    for (const Device& device : devices) {
        const auto test = awaitReply(connection_, device.testProperty, xcb_input_xi_get_property_reply);
        const auto state = awaitReply(connection_, device.state, xcb_input_query_device_state_reply);
        const bool isOfTest = test != nullptr && test->num_items > 0;
        if (state != nullptr)
            (isOfTest ? held.byTest : held.byUser) |= keysOf(*state);
    }
    return held;
}

std::vector<std::uint8_t> KeyboardConnection::readModifierMapping() {
    const auto cookie = xcb_get_modifier_mapping(connection_);
    const auto reply = awaitReply(connection_, cookie, xcb_get_modifier_mapping_reply);
    if (reply == nullptr)
        return {};
    const std::uint8_t* const first = xcb_get_modifier_mapping_keycodes(reply.get());
    return {first, first + xcb_get_modifier_mapping_keycodes_length(reply.get())};
}

KeyCombinations KeyboardConnection::pasteCombinations(const KeyboardMap& map) {
    const std::uint16_t numLock = modifiersOf(map.codesOf({keySymbol::numLock}), readModifierMapping());
    return {map.codesOf({keySymbol::v, keySymbol::capitalV}), controlWithLocks(numLock)};
}

} // namespace tavel
