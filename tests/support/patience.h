#pragma once

#include <QTest>

/// How long a test waits for what has to come, in milliseconds. The toolkit's own five seconds are
/// too short on a machine that does many other things, and nobody waits that long when all is well.
inline constexpr int patience = 20000;

#undef QTRY_VERIFY
#undef QTRY_VERIFY2
#undef QTRY_COMPARE
#define QTRY_VERIFY(expression) QTRY_VERIFY_WITH_TIMEOUT(expression, patience)
#define QTRY_VERIFY2(expression, message) QTRY_VERIFY2_WITH_TIMEOUT(expression, message, patience)
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, patience)
