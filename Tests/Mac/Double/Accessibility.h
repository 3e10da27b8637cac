#pragma once

#include "Tests/Mac/Double/CoreValues.h"

#include <ApplicationServices/ApplicationServices.h>

#include <chrono>
#include <map>
#include <memory>
#include <variant>

/// Stands in for the accessibility of other programs.
namespace tavel::doubles {

inline constexpr auto noAnswerInTime = static_cast<AXError>(-25204);
inline constexpr auto noSuchAttribute = static_cast<AXError>(-25205);
inline constexpr auto noValue = static_cast<AXError>(-25212);

/// Something of another program: the program itself, a window, a button.
struct Accessible {
    using Part = std::shared_ptr<const Accessible>;

    std::chrono::milliseconds delay{0};                                      // of every answer
    std::map<std::u16string, std::variant<Part, Value, AXError>> attributes; // by their names
};

/// The programs that run.
std::map<pid_t, Accessible::Part>& programs();

} // namespace tavel::doubles
