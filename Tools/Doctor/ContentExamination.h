#pragma once

#include "Doctor/Report.h"
#include "Platform/Platform.h"

namespace tavel {

/// Reports who owns the general pasteboard's content and which types it offers, with sizes where nobody has
/// to be asked for them. Never shows a content.
void examineContent(Report& report, Platform& platform);

} // namespace tavel
