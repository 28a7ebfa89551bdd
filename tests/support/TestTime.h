#ifndef TESTS_SUPPORT_TESTTIME_H
#define TESTS_SUPPORT_TESTTIME_H

#include <QtGlobal>

namespace TestSupport {

// A time limit of a test, stretched by PKO_TEST_TIME_SCALE (a whole number,
// default 1). Sanitizer builds run several times slower; the suite sets the
// factor for them instead of failing on limits meant for a plain build.
inline int Scaled(int milliseconds)
{
    bool ok = false;
    const int factor = qEnvironmentVariableIntValue("PKO_TEST_TIME_SCALE", &ok);
    return ok && factor > 1 ? milliseconds * factor : milliseconds;
}

}  // namespace TestSupport

#endif
