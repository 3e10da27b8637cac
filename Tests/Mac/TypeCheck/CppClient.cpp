// The client library for parents is headers alone, which nothing else compiles for a Mac here.
#include "tavel/ClipboardAgent.h"

static_assert(!std::is_copy_constructible_v<tavel::client::ClipboardAgent>);
