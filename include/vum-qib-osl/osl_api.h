// The export macro of the library. The shared library is built with hidden visibility; only the
// declarations marked OSL_API are visible to its users.
#pragma once

#define OSL_API __attribute__((visibility("default")))
