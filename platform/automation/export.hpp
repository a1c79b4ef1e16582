// What users of the library see of it: everything else is hidden in the shared library.
#pragma once

#define ORVANE_EXPORT __attribute__((visibility("default")))
