#pragma once

// GoogleTest includes this header on a Mac, and needs nothing of it for what the tests use.
