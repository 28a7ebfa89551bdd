// Forced into every translation unit of the thread-sanitizer build.
//
// GCC 12's libtsan does not intercept pthread_mutex_clocklock, which
// libstdc++ uses for std::timed_mutex::try_lock_for: TSan then sees every
// such lock as an unlock of an unlocked mutex. Without the macro libstdc++
// falls back to pthread_mutex_timedlock, which TSan does intercept. The
// configuration header defines it unconditionally, so it is read first and
// the macro taken back here.
#include <bits/c++config.h>
#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK
