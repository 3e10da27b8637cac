#pragma once

#include "Linux/X11/Focus/FocusCache.h"
#include "Linux/X11/Focus/GioPointers.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

/// What programs say on the accessibility bus (AT-SPI 2), read within limits: a program may list elements
/// without end. Any thread.
namespace tavel {

/// No more elements are read of one reply: more than any file manager shows.
inline constexpr std::size_t mostElements = 4000;

/// Elements with a longer path are passed over. Toolkits make paths of some dozens of characters.
inline constexpr std::size_t longestElementPath = 4096;

/// AtspiStateType: bits of a mask.
inline constexpr unsigned int activeState = 1;
inline constexpr unsigned int focusedState = 12;

/// Cache.xml: of each element its address, its application's and its parent's, its index, its number of
/// children, interfaces, name, role, description and states.
inline constexpr const char* cachedItemsType = "(a((so)(so)(so)iiassusau))";

/// The elements of a reply of the type "(a(so))", in its order. None without a reply.
std::vector<AccessibleElement> elementsIn(GVariant* reply);

/// Whether the states that are the last child of that tuple, of the type "au", include this one.
bool endsWithState(GVariant* tuple, unsigned int state);

/// Of a reply of `cachedItemsType`, the element that is focused. nullopt if that is not exactly one, or once
/// `isOver` says so, which is asked before each element.
std::optional<AccessibleElement> onlyFocusedOf(GVariant* cachedItems, const std::function<bool()>& isOver);

/// A program's news that an element has gained or lost the focus.
struct FocusNews {
    AccessibleElement element;
    bool hasFocus;
};

/// nullopt for any other message.
std::optional<FocusNews> focusNewsIn(GDBusMessage* message);

/// Whether the message says that a window has become the active one.
bool tellsActivation(GDBusMessage* message);

} // namespace tavel
