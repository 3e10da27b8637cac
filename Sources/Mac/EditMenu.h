#pragma once

namespace tavel {

/// Gives the application a main menu with the usual editing commands (undo, redo, cut, copy, paste, select
/// all), in place of any menu that AppKit may have given it. AppKit looks up the keys of commands in the main
/// menu only, so a text field would ignore them otherwise. An accessory application's menu is never shown.
/// Main thread only.
void provideEditMenu();

} // namespace tavel
