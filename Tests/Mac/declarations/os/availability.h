#pragma once

// The system versions that have a declaration: API_AVAILABLE(macos(14.0)), API_DEPRECATED("instead",
// macos(10.0, 14.0)).

#define TAVEL_SINCE_macos(since) macos, introduced = since
#define TAVEL_UNTIL_macos(since, until) macos, introduced = since, deprecated = until
#define API_AVAILABLE(platform) __attribute__((availability(TAVEL_SINCE_##platform)))
#define API_DEPRECATED(text, platform) __attribute__((availability(TAVEL_UNTIL_##platform, message = text)))
