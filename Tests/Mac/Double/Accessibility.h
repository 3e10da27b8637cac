#pragma once

#include "Tests/Mac/Double/CoreValues.h"

#include <ApplicationServices/ApplicationServices.h>

#include <chrono>
#include <map>
#include <memory>
#include <variant>

/// A double of the accessibility interface to other programs.
namespace tavel::doubles {

inline constexpr auto noAnswerInTime = static_cast<AXError>(-25204);
inline constexpr auto noSuchAttribute = static_cast<AXError>(-25205);
inline constexpr auto noValue = static_cast<AXError>(-25212);

/// An accessible element of another program: the application, a window, a button.
struct Accessible {
    using Part = std::shared_ptr<const Accessible>;

    std::chrono::milliseconds delay{0};                                      // before every answer
    std::map<std::u16string, std::variant<Part, Value, AXError>> attributes; // by name
};

/// The running programs by process identifier.
std::map<pid_t, Accessible::Part>& programs();

} // namespace tavel::doubles
