// What happens in the suite whose files are kept: three nights, each with rows that came in before it.
#pragma once

#include "tests/kept/kept_suite.hpp"

namespace orvane_test {

inline constexpr int kNights = 3;

// Settings, catalogue and directory, then everything that stands in the tables before the first night.
void BeginHistory(KeptSuite& suite);

// Night 1 to kNights: what is new before it, and its runs. All four jobs pass midnight in the first one; the
// second one's mails are plain texts; in the third one a process of the suite archives.
void LiveThrough(KeptSuite& suite, int night);

}  // namespace orvane_test
