#pragma once

namespace tavel {

/// Gives the application the commands for editing that every text field is expected to have (undo, redo, cut,
/// copy, paste, select all), if it has no menu yet. An application finds the keys of such commands in its
/// main menu only; an accessory's is never shown. Main thread only.
void provideEditMenu();

} // namespace tavel
