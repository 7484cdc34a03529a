// A PNG library that lacks two of the functions a preview needs, or one whose pictures fail at
// their first bytes.

#include <stdexcept>

#include "platform/Export.h"

namespace {
int record = 0;
}

extern "C" {
PLATFORM_EXPORT void* png_create_write_struct() {
    return &record;
}
PLATFORM_EXPORT void* png_create_info_struct() {
    return &record;
}
PLATFORM_EXPORT void png_destroy_write_struct() {}
PLATFORM_EXPORT void png_init_io() {}
PLATFORM_EXPORT void png_set_write_status_fn() {}
PLATFORM_EXPORT void png_write_row() {}
PLATFORM_EXPORT void png_write_end() {}
#ifndef LACKS_FUNCTIONS
PLATFORM_EXPORT void png_set_IHDR() {}
PLATFORM_EXPORT void png_write_info() {
    throw std::runtime_error("no picture");
}
#endif
}
