#pragma once

// GoogleTest includes this header on a Mac. The tests need nothing from it.
