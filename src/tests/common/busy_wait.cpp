#include "tests/common/busy_wait.h"

#include "platform/platform.h"

namespace vorn {

std::int64_t busyWait(std::int64_t milliseconds) {
    Clock& clock = platform().clock;
    const std::int64_t start = clock.processMilliseconds();
    std::int64_t now = clock.processMilliseconds();
    while (now < start + milliseconds) {
        now = clock.processMilliseconds();
    }
    return now - start;
}

}  // namespace vorn
