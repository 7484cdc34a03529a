#include "host/WriterId.h"

#include <atomic>

WriterId WriterId::Next() {
    static std::atomic<uint32_t> last = 0;
    return WriterId(++last);
}
